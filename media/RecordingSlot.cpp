#include "RecordingSlot.h"

#include <thread>

namespace vocato::media {

void RecordingSlot::Replace(std::unique_ptr<MidiStore> store) {
    // Sequentially consistent on both sides: either the node's load of the pointer sees null,
    // or its `writing_` flag was raised before we look at it.
    store_.store(nullptr, std::memory_order_seq_cst);
    while (writing_.load(std::memory_order_seq_cst)) {
        std::this_thread::yield();
    }
    owned_ = std::move(store);
    store_.store(owned_.get(), std::memory_order_seq_cst);
}

void RecordingSlot::Record(uint32_t stampMs, const MidiMessage& message) noexcept {
    if (!recording_.load(std::memory_order_relaxed)) {
        return;
    }
    writing_.store(true, std::memory_order_seq_cst);
    if (MidiStore* store = store_.load(std::memory_order_seq_cst)) {
        store->Add(stampMs, message);
    }
    writing_.store(false, std::memory_order_release);
}

} // namespace vocato::media
