#include "TrackerOption.h"

#include <map>
#include <string>

namespace vocato::app {

void AddTrackerOption(CLI::App& command, TrackerKind& kind) {
    const std::map<std::string, TrackerKind> kinds = {{"classic", TrackerKind::Classic},
                                                      {"precise", TrackerKind::Precise}};
    command
        .add_option("--tracker", kind,
                    "Pitch tracker: precise (default; more notes, found sooner) or classic")
        ->transform(CLI::CheckedTransformer(kinds, CLI::ignore_case))
        ->default_str(std::string(TrackerName(kind)));
}

} // namespace vocato::app
