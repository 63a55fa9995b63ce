#include "MidiStore.h"

#include <algorithm>
#include <array>

namespace vocato::media {

MidiStore::MidiStore(size_t capacity)
    : events_(std::make_unique<StoredEvent[]>(capacity)), capacity_(capacity) {}

bool MidiStore::Add(uint32_t stampMs, const MidiMessage& message) noexcept {
    const size_t n = count_.load(std::memory_order_relaxed);
    if (n >= capacity_) {
        dropped_.fetch_add(1, std::memory_order_relaxed);
        return false;
    }
    events_[n] = {stampMs, message};
    count_.store(n + 1, std::memory_order_release);
    return true;
}

void MidiStore::EnsureRoom(size_t room) {
    const size_t n = CountEvents();
    if (capacity_ - n >= room) {
        return;
    }
    const size_t capacity = std::max(2 * capacity_, n + room);
    auto larger = std::make_unique<StoredEvent[]>(capacity);
    std::copy(events_.get(), events_.get() + n, larger.get());
    events_ = std::move(larger);
    capacity_ = capacity;
}

std::vector<StoredEvent> MidiStore::SortedEvents() const {
    std::vector<StoredEvent> sorted(events_.get(), events_.get() + CountEvents());
    std::stable_sort(sorted.begin(), sorted.end(), [](const StoredEvent& a, const StoredEvent& b) {
        return a.stampMs < b.stampMs;
    });
    return sorted;
}

void MidiStore::CloseSoundingNotes(uint32_t stampMs) noexcept {
    std::array<int, 16 * 128> sounding{};
    const size_t n = CountEvents();
    for (size_t i = 0; i < n; ++i) {
        const MidiMessage& m = events_[i].message;
        const size_t key = static_cast<size_t>(m.bytes[0] & 0x0F) * 128 + m.bytes[1];
        const bool on = m.Status() == midi::kNoteOn && m.bytes[2] != 0;
        const bool off =
            m.Status() == midi::kNoteOff || (m.Status() == midi::kNoteOn && m.bytes[2] == 0);
        if (on) {
            ++sounding[key];
        } else if (off && sounding[key] > 0) {
            --sounding[key];
        }
    }
    for (size_t key = 0; key < sounding.size(); ++key) {
        for (int k = 0; k < sounding[key]; ++k) {
            Add(stampMs,
                midi::NoteOff(static_cast<int>(key / 128) + 1, static_cast<uint8_t>(key % 128), 0));
        }
    }
}

} // namespace vocato::media
