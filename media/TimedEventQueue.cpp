#include "TimedEventQueue.h"

#include <algorithm>

namespace vocato::media {

bool TimedEventQueue::Push(const TimedEvent& event) noexcept {
    if (incoming_.TryPush(event)) {
        return true;
    }
    dropped_.fetch_add(1, std::memory_order_relaxed);
    return false;
}

void TimedEventQueue::Collect() noexcept {
    TimedEvent event;
    while (pendingCount_ < pending_.size() && incoming_.TryPop(event)) {
        // Insert after every event of the same time, so that equal times keep posting order.
        auto end = pending_.begin() + static_cast<ptrdiff_t>(pendingCount_);
        auto at = std::upper_bound(pending_.begin(), end, event.time,
                                   [](int64_t t, const TimedEvent& e) { return t < e.time; });
        std::move_backward(at, end, end + 1);
        *at = event;
        ++pendingCount_;
    }
}

bool TimedEventQueue::PopDue(int64_t now, TimedEvent& out) noexcept {
    Collect();
    if (pendingCount_ == 0 || pending_[0].time > now) {
        return false;
    }
    out = pending_[0];
    std::move(pending_.begin() + 1, pending_.begin() + static_cast<ptrdiff_t>(pendingCount_),
              pending_.begin());
    --pendingCount_;
    return true;
}

} // namespace vocato::media
