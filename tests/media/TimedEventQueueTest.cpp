#include "TimedEventQueue.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

using vocato::media::TimedEvent;
using vocato::media::TimedEventQueue;

namespace {

TimedEvent At(int64_t time, int32_t id) {
    TimedEvent e;
    e.time = time;
    e.id = id;
    return e;
}

} // namespace

TEST(TimedEventQueue, DeliversDueEventsInTimeOrderAndEqualTimesInPostingOrder) {
    TimedEventQueue queue;
    queue.Push(At(300, 1));
    queue.Push(At(100, 2));
    queue.Push(At(200, 3));
    queue.Push(At(100, 4));
    TimedEvent e;
    std::vector<int32_t> ids;
    while (queue.PopDue(250, e)) {
        ids.push_back(e.id);
    }
    EXPECT_EQ(ids, (std::vector<int32_t>{2, 4, 3}));
    ASSERT_TRUE(queue.PopDue(300, e));
    EXPECT_EQ(e.id, 1);
    EXPECT_FALSE(queue.PopDue(1'000'000, e));
}

TEST(TimedEventQueue, AFullQueueRefusesWithoutBlockingAndCountsTheDrop) {
    TimedEventQueue queue;
    size_t accepted = 0;
    for (size_t i = 0; i < 2 * TimedEventQueue::kCapacity + 10; ++i) {
        accepted += queue.Push(At(static_cast<int64_t>(i), 0)) ? 1 : 0;
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
                while (!queue.Push(At(i, t * kPerThread + i))) {
                    std::this_thread::yield();
                }
            }
        });
    }
    std::vector<int> seen(kThreads * kPerThread, 0);
    int64_t lastTime = -1;
    int received = 0;
    TimedEvent e;
    for (auto& p : posters) {
        p.join();
    }
    while (queue.PopDue(kPerThread, e)) {
        ++seen[static_cast<size_t>(e.id)];
        EXPECT_GE(e.time, lastTime);
        lastTime = e.time;
        ++received;
    }
    EXPECT_EQ(received, kThreads * kPerThread);
    for (int count : seen) {
        EXPECT_EQ(count, 1);
    }
}
