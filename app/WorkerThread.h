#pragma once
// The program's concurrency: a fire-and-forget thread running one plain function, a counting
// signal, a queue of numeric events served by a worker thread that also delivers an idle event
// whenever nothing arrives for a while, and a flag held set for the lifetime of a scope.

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>

// A detached thread running one function with one argument. Nobody joins or deletes it: the
// object deletes itself when the function has returned.
class CWorkerThread {
public:
    typedef unsigned long (*ThreadFunction)(void*);

    CWorkerThread(ThreadFunction function, void* argument);
    virtual ~CWorkerThread();
    CWorkerThread(const CWorkerThread&) = delete;
    CWorkerThread& operator=(const CWorkerThread&) = delete;

    // Priority classes 0..4 (lowest .. highest); 2 and any other value keep the default.
    void SetPriorityClass(int priorityClass) { m_priorityClass = priorityClass; }
    // Starts the system thread with the default stack size. On success the object belongs to the
    // thread from now on; on failure (the toolkit's thread error code, 0 = no error) it stays the
    // caller's.
    int Run();

    // The nice value that a class maps to, or false when the class keeps the default.
    static bool NiceValueOfClass(int priorityClass, int& nice);

protected:
    // Calls the function with the argument; the result is the thread's exit code.
    virtual unsigned long Entry();

private:
    static void ThreadMain(CWorkerThread* self);

    ThreadFunction m_function;
    void* m_argument;
    int m_priorityClass = 2;
};

// Creates a CWorkerThread on the heap, sets its priority class and runs it. The result is the
// toolkit's thread error code (0 = no error).
int StartWorkerThread(unsigned long (*function)(void*), void* argument, int priorityClass);

// Worker threads that were started and whose function has not yet returned.
int GetRunningWorkerThreadCount();
// Waits at most timeoutMs for every worker thread's function to return; true when none is left.
bool WaitForWorkerThreads(uint32_t timeoutMs);

// A counting signal: each Signal lets one Wait through.
class CEvent {
public:
    static constexpr uint32_t kInfinite = 0xFFFFFFFFu;

    CEvent() = default;
    virtual ~CEvent() = default;
    CEvent(const CEvent&) = delete;
    CEvent& operator=(const CEvent&) = delete;

    bool Signal();
    // True when signalled within the time-out (kInfinite waits without limit).
    bool Wait(uint32_t timeoutMs);
    // Takes every pending signal without waiting.
    bool Reset();

private:
    std::mutex m_mutex;
    std::condition_variable m_condition;
    uint64_t m_count = 0;
};

// A first-in-first-out queue of event values, with the idle value delivered when nothing arrives
// within the idle wait, and the stop value that ends the serving thread.
template <class T>
class CEnumEvent {
public:
    CEnumEvent(T idleValue, uint32_t idleWaitMs, T stopValue)
        : m_idleValue(idleValue), m_idleWaitMs(idleWaitMs), m_stopValue(stopValue) {}
    virtual ~CEnumEvent() = default;
    CEnumEvent(const CEnumEvent&) = delete;
    CEnumEvent& operator=(const CEnumEvent&) = delete;

    void PostEvent(T value) {
        std::lock_guard<std::mutex> lock(m_queueLock);
        m_events.push_back(value);
        m_queueSignal.Signal();
    }

    T GetIdleValue() const { return m_idleValue; }
    T GetStopValue() const { return m_stopValue; }
    uint32_t GetIdleWait() const { return m_idleWaitMs; }
    size_t GetQueuedCount() {
        std::lock_guard<std::mutex> lock(m_queueLock);
        return m_events.size();
    }

protected:
    // One step of the serving loop: the next event, or the idle value after the idle wait.
    T WaitForEvent() {
        for (;;) {
            if (!m_queueSignal.Wait(m_idleWaitMs)) return m_idleValue;
            std::lock_guard<std::mutex> lock(m_queueLock);
            if (m_events.empty()) continue;  // a spare signal; wait again
            const T value = m_events.front();
            m_events.pop_front();
            if (!m_events.empty()) m_queueSignal.Signal();
            return value;
        }
    }

    T m_idleValue;
    std::mutex m_queueLock;
    CEvent m_queueSignal;
    std::deque<T> m_events;
    uint32_t m_idleWaitMs;
    T m_stopValue;
    CEvent m_stoppedSignal;
};

// The queue together with its owner's handler, served by a worker thread (ServeEvents). The owner
// must stop the serving thread (StopServing) before it is destroyed.
template <class T>
class CEnumEventThreadHandler : public CEnumEvent<T> {
public:
    using CEnumEvent<T>::CEnumEvent;

    // Runs on the serving thread, never on the GUI thread.
    virtual void OnEvent(T value) = 0;

    // Starts the serving thread; the toolkit's thread error code (0 = no error).
    int StartServing(int priorityClass) { return StartWorkerThread(&Serve, this, priorityClass); }

    // Posts the stop value and waits at most timeoutMs for the serving thread to end; true when
    // it answered. Events queued before the stop value are served first.
    bool StopServing(uint32_t timeoutMs) {
        this->m_stoppedSignal.Reset();
        this->PostEvent(this->m_stopValue);
        return this->m_stoppedSignal.Wait(timeoutMs);
    }

    // The serving loop for a handler of any value type; 1 for a null handler, 0 when stopped.
    static unsigned long Serve(void* argument) {
        CEnumEventThreadHandler* handler = static_cast<CEnumEventThreadHandler*>(argument);
        if (!handler) return 1;
        for (;;) {
            const T event = handler->WaitForEvent();
            if (event == handler->m_stopValue) {
                // The owner may delete itself as soon as this is signalled: never touch it after.
                handler->m_stoppedSignal.Signal();
                return 0;
            }
            handler->OnEvent(event);
        }
    }
};

// The serving loop of a CEnumEventThreadHandler<unsigned long>, for StartWorkerThread. The argument
// must be that base pointer itself: convert a derived owner to it before it becomes a void*.
unsigned long ServeEvents(void* handler);

// Sets the flag for the lifetime of the scope, also when the scope is left by an exception.
class CSignalInScope {
public:
    explicit CSignalInScope(bool* flag);
    explicit CSignalInScope(std::atomic<bool>* flag);
    virtual ~CSignalInScope();
    CSignalInScope(const CSignalInScope&) = delete;
    CSignalInScope& operator=(const CSignalInScope&) = delete;

private:
    bool* m_flag = nullptr;
    std::atomic<bool>* m_atomicFlag = nullptr;
};
