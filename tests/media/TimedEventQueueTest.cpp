#include "TimedEventQueue.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <thread>
#include <vector>

using vocato::media::TimedEvent;
using vocato::media::TimedEventQueue;

namespace {

std::vector<int32_t> PopAllDue(TimedEventQueue& queue, int64_t now) {
    std::vector<int32_t> ids;
    for (TimedEvent e; queue.PopDue(now, e);) {
        ids.push_back(e.id);
    }
    return ids;
}

} // namespace

TEST(TimedEventQueue, DeliversDueEventsInTimeOrderAndEqualTimesInPostingOrder) {
    TimedEventQueue queue;
    for (const auto& [time, id] : {std::pair{300, 1}, {100, 2}, {200, 3}, {100, 4}}) {
        queue.Push({.time = time, .id = id});
    }
    EXPECT_EQ(PopAllDue(queue, 250), (std::vector<int32_t>{2, 4, 3}));
    EXPECT_EQ(PopAllDue(queue, 300), std::vector<int32_t>{1});
    EXPECT_EQ(PopAllDue(queue, 1'000'000), std::vector<int32_t>{});
}

TEST(TimedEventQueue, AFullQueueRefusesWithoutBlockingAndCountsTheDrop) {
    TimedEventQueue queue;
    size_t accepted = 0;
    for (size_t i = 0; i < 2 * TimedEventQueue::kCapacity + 10; ++i) {
        accepted += queue.Push({.time = static_cast<int64_t>(i)}) ? 1 : 0;
    }
    // The ring holds one capacity and the node's sorted list another, once collected.
    EXPECT_EQ(accepted, TimedEventQueue::kCapacity);
    EXPECT_EQ(queue.Dropped(), TimedEventQueue::kCapacity + 10);
}

TEST(TimedEventQueue, EventsPostedFromManyThreadsEachArriveOnce) {
    TimedEventQueue queue;
    constexpr int kThreads = 4;
    constexpr int kPerThread = 50;
    std::vector<std::thread> posters;
    for (int t = 0; t < kThreads; ++t) {
        posters.emplace_back([&queue, t] {
            for (int i = 0; i < kPerThread; ++i) {
                while (!queue.Push({.time = i, .id = t * kPerThread + i})) {
                    std::this_thread::yield();
                }
            }
        });
    }
    for (auto& p : posters) {
        p.join();
    }
    std::vector<int32_t> ids = PopAllDue(queue, kPerThread);
    std::sort(ids.begin(), ids.end());
    std::vector<int32_t> each(kThreads * kPerThread);
    std::iota(each.begin(), each.end(), 0);
    EXPECT_EQ(ids, each);
}
