#include "app/WorkerThread.h"

#include <gtest/gtest.h>

#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

long ElapsedMs(Clock::time_point since) {
    return static_cast<long>(std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - since).count());
}

TEST(Event, CountsSignalsAndTimesOut) {
    CEvent event;
    EXPECT_FALSE(event.Wait(0));
    EXPECT_TRUE(event.Signal());
    EXPECT_TRUE(event.Signal());
    EXPECT_TRUE(event.Wait(0));
    EXPECT_TRUE(event.Wait(CEvent::kInfinite));
    const auto start = Clock::now();
    EXPECT_FALSE(event.Wait(60));
    EXPECT_GE(ElapsedMs(start), 55);
}

TEST(Event, ResetDropsEveryPendingSignal) {
    CEvent event;
    for (int i = 0; i < 3; ++i) event.Signal();
    EXPECT_TRUE(event.Reset());
    EXPECT_FALSE(event.Wait(0));
    EXPECT_TRUE(event.Reset());  // also when there is nothing to take
    event.Signal();
    EXPECT_TRUE(event.Wait(10));
}

TEST(Event, InfiniteWaitEndsWhenAnotherThreadSignals) {
    CEvent event;
    std::atomic<bool> through{false};
    std::thread waiter([&] {
        through = event.Wait(CEvent::kInfinite);
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    EXPECT_FALSE(through.load());
    event.Signal();
    waiter.join();
    EXPECT_TRUE(through.load());
}

// Records every delivered event; optionally signals after a number of idle events.
class CRecorder : public CEnumEventThreadHandler<unsigned long> {
public:
    CRecorder(unsigned long idle, uint32_t idleWaitMs, unsigned long stop)
        : CEnumEventThreadHandler<unsigned long>(idle, idleWaitMs, stop) {}

    void OnEvent(unsigned long value) override {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_events.push_back(value);
        if (value == GetIdleValue() && ++m_idle == m_idleTarget) m_idleReached.Signal();
    }
    std::vector<unsigned long> Events() {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_events;
    }
    bool WaitStopped(uint32_t ms) { return m_stoppedSignal.Wait(ms); }

    int m_idleTarget = -1;
    CEvent m_idleReached;

private:
    std::mutex m_mutex;
    std::vector<unsigned long> m_events;
    int m_idle = 0;
};

const uint32_t kNoIdle = CEvent::kInfinite;

TEST(EventQueue, DeliversPostedEventsInOrderThenStops) {
    CRecorder recorder(0, kNoIdle, 1);
    recorder.PostEvent(2);
    recorder.PostEvent(3);
    recorder.PostEvent(1);
    ASSERT_EQ(StartWorkerThread(&ServeEvents, static_cast<CEnumEventThreadHandler<unsigned long>*>(&recorder), 2), 0);
    ASSERT_TRUE(recorder.WaitStopped(10000));
    EXPECT_EQ(recorder.Events(), (std::vector<unsigned long>{2, 3}));
    EXPECT_EQ(recorder.GetQueuedCount(), 0u);
}

TEST(EventQueue, EventsAfterTheFirstStopStayQueued) {
    CRecorder recorder(0, kNoIdle, 1);
    for (unsigned long v : {2ul, 1ul, 5ul, 1ul}) recorder.PostEvent(v);
    ASSERT_EQ(recorder.StartServing(2), 0);
    ASSERT_TRUE(recorder.WaitStopped(10000));
    EXPECT_EQ(recorder.Events(), std::vector<unsigned long>{2});
    EXPECT_EQ(recorder.GetQueuedCount(), 2u);
    // Nobody serves any more: a second stop is not answered.
    EXPECT_FALSE(recorder.StopServing(50));
}

TEST(EventQueue, IdleValueArrivesWhileNothingIsPosted) {
    CRecorder recorder(0, 100, 1);
    recorder.m_idleTarget = 5;
    const auto start = Clock::now();
    ASSERT_EQ(recorder.StartServing(2), 0);
    ASSERT_TRUE(recorder.m_idleReached.Wait(20000));
    EXPECT_GE(ElapsedMs(start), 450);  // five waits of 100 ms
    recorder.PostEvent(9);
    ASSERT_TRUE(recorder.StopServing(10000));
    size_t posted = 0, idle = 0;
    for (unsigned long e : recorder.Events()) (e == 9 ? posted : idle) += e == 9 || e == 0;
    EXPECT_EQ(posted, 1u);
    EXPECT_GE(idle, 5u);
    EXPECT_EQ(recorder.Events().size(), posted + idle);
}

TEST(EventQueue, IdleValueEqualToStopEndsAtTheFirstIdleWait) {
    CRecorder recorder(4, 20, 4);
    ASSERT_EQ(recorder.StartServing(2), 0);
    ASSERT_TRUE(recorder.WaitStopped(10000));
    EXPECT_TRUE(recorder.Events().empty());
}

TEST(EventQueue, NullHandlerEndsAtOnce) { EXPECT_EQ(ServeEvents(nullptr), 1ul); }

TEST(EventQueue, ConcurrentProducersKeepTheirOwnOrder) {
    CRecorder recorder(0, kNoIdle, 1);
    ASSERT_EQ(recorder.StartServing(2), 0);
    std::vector<std::thread> producers;
    for (unsigned long p = 0; p < 4; ++p)
        producers.emplace_back([&recorder, p] {
            for (unsigned long i = 0; i < 300; ++i) recorder.PostEvent(1000 * (p + 1) + i);
        });
    for (auto& producer : producers) producer.join();
    ASSERT_TRUE(recorder.StopServing(10000));
    const std::vector<unsigned long> events = recorder.Events();
    ASSERT_EQ(events.size(), 1200u);
    std::vector<unsigned long> next = {1000, 2000, 3000, 4000};
    for (unsigned long e : events) {
        const size_t p = e / 1000 - 1;
        ASSERT_LT(p, next.size());
        EXPECT_EQ(e, next[p]++);
    }
}

// An owner that deletes itself right after its serving thread answered the stop, as the main
// controller does; the sanitizers see any touch of the handler after that.
TEST(EventQueue, OwnerMayDieRightAfterTheStopIsAnswered) {
    for (int round = 0; round < 100; ++round) {
        CRecorder* owner = new CRecorder(0, round % 2 ? 1 : kNoIdle, 1);
        ASSERT_EQ(owner->StartServing(2), 0);
        owner->PostEvent(7);
        ASSERT_TRUE(owner->StopServing(10000));
        delete owner;
    }
}

TEST(WorkerThread, RunsTheFunctionWithItsArgument) {
    struct CJob {
        CEvent done;
        int seen = 0;
        static unsigned long Run(void* argument) {
            CJob* job = static_cast<CJob*>(argument);
            job->seen = 42;
            job->done.Signal();
            return 0;
        }
    } job;
    ASSERT_EQ(StartWorkerThread(&CJob::Run, &job, 2), 0);
    ASSERT_TRUE(job.done.Wait(10000));
    EXPECT_EQ(job.seen, 42);
}

// A detached thread object deletes itself once its function has returned.
class CProbeThread : public CWorkerThread {
public:
    CProbeThread(ThreadFunction f, void* argument, CEvent* died) : CWorkerThread(f, argument), m_died(died) {}
    ~CProbeThread() override { m_died->Signal(); }

private:
    CEvent* m_died;
};

TEST(WorkerThread, DeletesItselfWhenTheFunctionReturns) {
    CEvent ran, died;
    CProbeThread* thread = new CProbeThread(
        [](void* argument) -> unsigned long {
            static_cast<CEvent*>(argument)->Signal();
            return 3;
        },
        &ran, &died);
    ASSERT_EQ(thread->Run(), 0);
    EXPECT_TRUE(ran.Wait(10000));
    EXPECT_TRUE(died.Wait(10000));
}

int NiceOfThreadStartedWith(int priorityClass) {
    struct CProbe {
        CEvent done;
        int nice = 0;
    } probe;
    EXPECT_EQ(StartWorkerThread(
                  [](void* argument) -> unsigned long {
                      CProbe* p = static_cast<CProbe*>(argument);
                      errno = 0;
                      p->nice = getpriority(PRIO_PROCESS, static_cast<id_t>(syscall(SYS_gettid)));
                      p->done.Signal();
                      return 0;
                  },
                  &probe, priorityClass),
              0);
    EXPECT_TRUE(probe.done.Wait(10000));
    return probe.nice;
}

TEST(WorkerThread, PriorityClassesMapOntoNiceValues) {
    int nice = 0;
    EXPECT_FALSE(CWorkerThread::NiceValueOfClass(2, nice));
    EXPECT_FALSE(CWorkerThread::NiceValueOfClass(7, nice));
    EXPECT_FALSE(CWorkerThread::NiceValueOfClass(-1, nice));
    const std::vector<std::pair<int, int>> mapped = {{0, 19}, {1, 10}, {3, -10}, {4, -20}};
    for (const auto& m : mapped) {
        ASSERT_TRUE(CWorkerThread::NiceValueOfClass(m.first, nice));
        EXPECT_EQ(nice, m.second) << m.first;
    }

    const int inherited = getpriority(PRIO_PROCESS, static_cast<id_t>(syscall(SYS_gettid)));
    EXPECT_EQ(NiceOfThreadStartedWith(2), inherited);
    EXPECT_EQ(NiceOfThreadStartedWith(7), inherited);
    EXPECT_EQ(NiceOfThreadStartedWith(0), 19);  // lowering is always allowed
    // Raising needs rights; without them the thread still runs at its inherited priority.
    const int raised = NiceOfThreadStartedWith(4);
    EXPECT_TRUE(raised == -20 || raised == inherited) << raised;
}

TEST(SignalInScope, FlagIsSetForTheScopeAndClearedByAnException) {
    bool flag = false;
    std::atomic<bool> shared{false};
    try {
        CSignalInScope guard(&flag);
        CSignalInScope sharedGuard(&shared);
        EXPECT_TRUE(flag);
        EXPECT_TRUE(shared.load());
        throw std::runtime_error("leave");
    } catch (const std::runtime_error&) {
    }
    EXPECT_FALSE(flag);
    EXPECT_FALSE(shared.load());
    { CSignalInScope nothing(static_cast<bool*>(nullptr)); }
}

}  // namespace
