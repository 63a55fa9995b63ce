#include "MidiRecording.h"

#include "Diagnostics.h"
#include "Truncate.h"

#include <new>

namespace vocato {

bool ConnectMidiStore(VocatoNode& node, media::DisplaySink& window, size_t capacity) {
    window.recording.Replace(nullptr);
    std::unique_ptr<media::MidiStore> store;
    try {
        store = std::make_unique<media::MidiStore>(capacity);
    } catch (const std::bad_alloc&) {
        return false;
    }
    media::Diagnostic("new midiStore Ok %p\n", static_cast<void*>(store.get()));
    node.SetMidiStoreBaseTime(node.Clock().NowMicros() / 1000);

    // Written before the store is published, so that the node is its only writer from then on.
    namespace midi = media::midi;
    const int c = node.Channel();
    const auto range = static_cast<uint8_t>(TruncToward0<int32_t>(node.BendRange()) & 0x7F);
    store->Add(0, midi::ProgramChange(c, static_cast<uint8_t>(node.Program())));
    store->Add(0, midi::ControlChange(c, 101, 0));
    store->Add(0, midi::ControlChange(c, 100, 0));
    store->Add(0, midi::ControlChange(c, 6, range));
    store->Add(0, midi::ControlChange(c, 38, 0));
    store->Add(0, midi::ControlChange(c, midi::kExpression, 127));
    window.recording.Replace(std::move(store));
    window.recording.SetRecording(true);
    return true;
}

} // namespace vocato
