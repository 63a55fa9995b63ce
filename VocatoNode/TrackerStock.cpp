#include "TrackerStock.h"

namespace vocato {

TrackerStock::TrackerStock(TrackerFactory factory) : factory_(std::move(factory)) {}

TrackerStock::~TrackerStock() {
    for (auto& slot : spares_) {
        delete slot.exchange(nullptr);
    }
    for (auto& slot : retired_) {
        delete slot.exchange(nullptr);
    }
}

void TrackerStock::Maintain() {
    std::lock_guard<std::mutex> guard(maintaining_);
    for (auto& slot : retired_) {
        delete slot.exchange(nullptr, std::memory_order_acq_rel);
    }
    if (!factory_) {
        return;
    }
    // Only this function fills a spare slot, and it runs under the mutex, so a slot seen
    // empty stays empty until it is filled here.
    for (auto& slot : spares_) {
        if (slot.load(std::memory_order_acquire) == nullptr) {
            slot.store(factory_().release(), std::memory_order_release);
        }
    }
}

PitchTracker* TrackerStock::Take() noexcept {
    for (auto& slot : spares_) {
        if (PitchTracker* tracker = slot.exchange(nullptr, std::memory_order_acq_rel)) {
            return tracker;
        }
    }
    return nullptr;
}

void TrackerStock::Retire(PitchTracker* tracker) noexcept {
    if (tracker == nullptr) {
        return;
    }
    for (auto& slot : retired_) {
        PitchTracker* expected = nullptr;
        if (slot.compare_exchange_strong(expected, tracker, std::memory_order_acq_rel)) {
            return;
        }
    }
    delete tracker; // unreachable while every retire follows a take (see retired_)
}

TrackerFactory TrackerFactoryFor(TrackerKind kind) {
    switch (kind) {
    case TrackerKind::Classic:
        return [] { return MakeClassicTracker(); };
    case TrackerKind::Precise:
        return [] { return MakePreciseTracker(); };
    }
    return {};
}

} // namespace vocato
