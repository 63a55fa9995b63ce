#include "NodeRequests.h"

#include "NodeParameters.h"
#include "Presets.h"
#include "VocatoNode.h"

#include <string>

namespace vocato::app {

void AddNodeRequestOptions(CLI::App& command, NodeRequests& requests) {
    command.add_option("--preset", requests.preset, "Input preset, 1 (Default) to 20 (Alto recorder)")
        ->check(CLI::Range(1, kPresetCount));
    command.add_option("--program", requests.program, "General MIDI program, 0 to 127")
        ->check(CLI::Range(0, 127));
    command.add_option("--transpose", requests.transpose, "Semitones added to every note")
        ->check(CLI::Range(-48.0f, 48.0f));
    command.add_option("--bend-range", requests.bendRange, "Pitch-bend range in semitones")
        ->check(CLI::Range(1.0f, 35.0f));
    command
        .add_option_function<std::string>(
            "--tracker",
            [&requests](const std::string& text) { ParseTrackerKind(text, requests.tracker); },
            "Pitch tracker: precise (more notes, found sooner) or classic")
        ->transform(CLI::IsMember({"classic", "precise"}, CLI::ignore_case))
        ->default_str(std::string(TrackerName(requests.tracker)));
}

void ApplyNodeRequests(VocatoNode& node, const NodeRequests& requests) {
    const int64_t now = node.Clock().NowMicros();
    // The preset goes first: it rewrites the bend range.
    if (requests.preset) {
        node.SetParameterValue(PARAM_PRESET, now, &*requests.preset, 4);
    }
    if (requests.bendRange) {
        node.SetParameterValue(PARAM_BEND_RANGE, now, &*requests.bendRange, 4);
    }
    if (requests.transpose) {
        node.SetParameterValue(PARAM_TRANSPOSE, now, &*requests.transpose, 4);
    }
    if (requests.program) {
        node.SetParameterValue(PARAM_PROGRAM, now, &*requests.program, 4);
    }
    node.RunEvents();
    node.Maintain();
}

} // namespace vocato::app
