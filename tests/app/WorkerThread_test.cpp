#include "app/WorkerThread.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

long MsSince(Clock::time_point since) {
    return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - since).count();
}

TEST(Event, CountsSignalsTimesOutAndResets) {
    CEvent event;
    EXPECT_FALSE(event.Wait(0));
    EXPECT_TRUE(event.Signal() && event.Signal());
    EXPECT_TRUE(event.Wait(0) && event.Wait(CEvent::kInfinite));
    const auto start = Clock::now();
    EXPECT_FALSE(event.Wait(60));
    EXPECT_GE(MsSince(start), 55);
    for (int i = 0; i < 3; ++i) event.Signal();
    EXPECT_TRUE(event.Reset());
    EXPECT_FALSE(event.Wait(0));
    EXPECT_TRUE(event.Reset());  // also when there is nothing to take

    std::atomic<bool> through{false};
    std::thread waiter([&] { through = event.Wait(CEvent::kInfinite); });
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    EXPECT_FALSE(through);
    event.Signal();
    waiter.join();
    EXPECT_TRUE(through);
}

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

TEST(EventQueue, DeliversInOrderUpToTheFirstStopAndLeavesTheRestQueued) {
    CRecorder recorder(0, CEvent::kInfinite, 1);
    for (unsigned long v : {2ul, 3ul, 1ul, 5ul, 1ul}) recorder.PostEvent(v);
    ASSERT_EQ(
        StartWorkerThread(&ServeEvents, static_cast<CEnumEventThreadHandler<unsigned long>*>(&recorder), 2),
        0);
    ASSERT_TRUE(recorder.WaitStopped(10000));
    EXPECT_EQ(recorder.Events(), (std::vector<unsigned long>{2, 3}));
    EXPECT_EQ(recorder.GetQueuedCount(), 2u);
    EXPECT_FALSE(recorder.StopServing(50));  // nobody serves any more
    EXPECT_EQ(ServeEvents(nullptr), 1ul);
}

TEST(EventQueue, IdleValueArrivesWhileNothingIsPostedAndMayEndTheServing) {
    CRecorder recorder(0, 100, 1, 5);
    const auto start = Clock::now();
    ASSERT_EQ(recorder.StartServing(2), 0);
    ASSERT_TRUE(recorder.idleReached.Wait(20000));
    EXPECT_GE(MsSince(start), 450);  // five waits of 100 ms
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

TEST(EventQueue, ConcurrentProducersKeepTheirOwnOrder) {
    CRecorder recorder(0, CEvent::kInfinite, 1);
    ASSERT_EQ(recorder.StartServing(2), 0);
    std::vector<std::thread> producers;
    for (unsigned long p = 1; p <= 4; ++p)
        producers.emplace_back([&recorder, p] {
            for (unsigned long i = 0; i < 300; ++i) recorder.PostEvent(1000 * p + i);
        });
    for (auto& producer : producers) producer.join();
    ASSERT_TRUE(recorder.StopServing(10000));
    const std::vector<unsigned long> events = recorder.Events();
    ASSERT_EQ(events.size(), 1200u);
    std::vector<unsigned long> next = {1000, 2000, 3000, 4000};
    for (unsigned long e : events) EXPECT_EQ(e, next.at(e / 1000 - 1)++);
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
