#include "app/WorkerThread.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

// Records every delivered event; signals once idleTarget idle events have arrived.
class CRecorder : public CEnumEventThreadHandler<unsigned long> {
public:
    CRecorder(unsigned long idle, uint32_t idleWaitMs, unsigned long stop, int idleTarget = -1)
        : CEnumEventThreadHandler<unsigned long>(idle, idleWaitMs, stop), m_idleTarget(idleTarget) {}
    void OnEvent(unsigned long value) override {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_events.push_back(value);
        if (value == GetIdleValue() && --m_idleTarget == 0) idleReached.Signal();
    }
    std::vector<unsigned long> Events() {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_events;
    }
    bool WaitStopped(uint32_t ms) { return m_stoppedSignal.Wait(ms); }
    CEvent idleReached;

private:
    std::mutex m_mutex;
    std::vector<unsigned long> m_events;
    int m_idleTarget;
};

TEST(EventQueue, DeliversInOrderUpToTheFirstStop) {
    CRecorder recorder(0, CEvent::kInfinite, 1);
    for (unsigned long v : {2ul, 3ul, 1ul, 5ul, 1ul}) recorder.PostEvent(v);
    ASSERT_EQ(
        StartWorkerThread(&ServeEvents, static_cast<CEnumEventThreadHandler<unsigned long>*>(&recorder), 2), 0);
    ASSERT_TRUE(recorder.WaitStopped(10000));
    EXPECT_EQ(recorder.Events(), (std::vector<unsigned long>{2, 3}));
    EXPECT_EQ(recorder.GetQueuedCount(), 2u);  // what follows the stop stays queued
    EXPECT_FALSE(recorder.StopServing(50));    // nobody serves any more
    EXPECT_EQ(ServeEvents(nullptr), 1ul);

    // Four producers at once: each one's events arrive in its own order.
    CRecorder shared(0, CEvent::kInfinite, 1);
    ASSERT_EQ(shared.StartServing(2), 0);
    std::vector<std::thread> producers;
    for (unsigned long p = 1; p <= 4; ++p)
        producers.emplace_back([&shared, p] {
            for (unsigned long i = 0; i < 300; ++i) shared.PostEvent(1000 * p + i);
        });
    for (auto& producer : producers) producer.join();
    ASSERT_TRUE(shared.StopServing(10000));
    const std::vector<unsigned long> events = shared.Events();
    ASSERT_EQ(events.size(), 1200u);
    std::vector<unsigned long> next = {1000, 2000, 3000, 4000};
    for (unsigned long e : events) EXPECT_EQ(e, next.at(e / 1000 - 1)++);
}

TEST(EventQueue, IdleValueArrivesWhileNothingIsPostedAndMayEndTheServing) {
    CRecorder recorder(0, 100, 1, 5);
    const auto start = Clock::now();
    ASSERT_EQ(recorder.StartServing(2), 0);
    ASSERT_TRUE(recorder.idleReached.Wait(20000));
    EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(450));  // five waits of 100 ms
    recorder.PostEvent(9);
    ASSERT_TRUE(recorder.StopServing(10000));
    const std::vector<unsigned long> events = recorder.Events();
    EXPECT_EQ(std::count(events.begin(), events.end(), 9ul), 1);
    EXPECT_EQ(std::count(events.begin(), events.end(), 0ul) + 1, static_cast<long>(events.size()));

    CRecorder idleStops(4, 20, 4);
    ASSERT_EQ(idleStops.StartServing(2), 0);
    ASSERT_TRUE(idleStops.WaitStopped(10000));
    EXPECT_TRUE(idleStops.Events().empty());
}

// An owner that deletes itself right after its serving thread answered the stop, as the main
// controller does; the sanitizers see any touch of the handler after that.
TEST(EventQueue, OwnerMayDieRightAfterTheStopIsAnswered) {
    for (int round = 0; round < 100; ++round) {
        CRecorder* owner = new CRecorder(0, round % 2 ? 1 : CEvent::kInfinite, 1);
        ASSERT_EQ(owner->StartServing(2), 0);
        owner->PostEvent(7);
        ASSERT_TRUE(owner->StopServing(10000));
        delete owner;
    }
}

}  // namespace
