#include "app/WorkerThread.h"

#include <wx/thread.h>

#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <chrono>
#include <exception>
#include <thread>

// ---------------------------------------------------------------------------------------------
// CWorkerThread

namespace {
// The running threads, for a bounded wait at shutdown. Never destroyed: a detached thread may
// finish while the process runs its static destructors.
struct CRunningThreads {
    std::mutex mutex;
    std::condition_variable ended;
    int count = 0;
};
CRunningThreads& RunningThreads() {
    static CRunningThreads* running = new CRunningThreads;
    return *running;
}
void CountThread(int delta) {
    CRunningThreads& running = RunningThreads();
    std::lock_guard<std::mutex> lock(running.mutex);
    running.count += delta;
    if (running.count == 0) running.ended.notify_all();
}
}  // namespace

CWorkerThread::CWorkerThread(ThreadFunction function, void* argument)
    : m_function(function), m_argument(argument) {}

CWorkerThread::~CWorkerThread() = default;

bool CWorkerThread::NiceValueOfClass(int priorityClass, int& nice) {
    int priority = 0;  // the toolkit's scale, 0 .. 100
    switch (priorityClass) {
        case 0: priority = 0; break;
        case 1: priority = 25; break;
        case 3: priority = 75; break;
        case 4: priority = 100; break;
        default: return false;  // 2 and anything else: the default priority
    }
    // The toolkit's own mapping of 0 .. 100 onto the nice values 20 .. -20 (19 is the lowest).
    nice = 20 - (2 * priority) / 5;
    if (nice > 19) nice = 19;
    return true;
}

unsigned long CWorkerThread::Entry() { return m_function ? m_function(m_argument) : 0; }

void CWorkerThread::ThreadMain(CWorkerThread* self) {
    int nice = 0;
    if (NiceValueOfClass(self->m_priorityClass, nice)) {
        // Per thread on Linux. Raising the priority needs rights that the program may lack; the
        // thread then runs at the default priority, which is not worth a report.
        const pid_t tid = static_cast<pid_t>(syscall(SYS_gettid));
        (void)setpriority(PRIO_PROCESS, static_cast<id_t>(tid), nice);
    }
    self->Entry();
    delete self;
    CountThread(-1);
}

int CWorkerThread::Run() {
    CountThread(+1);
    try {
        std::thread thread(&CWorkerThread::ThreadMain, this);
        thread.detach();  // from here on the thread owns this object
    } catch (const std::exception&) {
        CountThread(-1);
        return wxTHREAD_NO_RESOURCE;
    }
    return wxTHREAD_NO_ERROR;
}

int StartWorkerThread(unsigned long (*function)(void*), void* argument, int priorityClass) {
    CWorkerThread* thread = new CWorkerThread(function, argument);
    thread->SetPriorityClass(priorityClass);
    const int error = thread->Run();
    if (error != wxTHREAD_NO_ERROR) delete thread;  // never started, so still ours
    return error;
}

int GetRunningWorkerThreadCount() {
    CRunningThreads& running = RunningThreads();
    std::lock_guard<std::mutex> lock(running.mutex);
    return running.count;
}

bool WaitForWorkerThreads(uint32_t timeoutMs) {
    CRunningThreads& running = RunningThreads();
    std::unique_lock<std::mutex> lock(running.mutex);
    return running.ended.wait_for(lock, std::chrono::milliseconds(timeoutMs),
                                  [&] { return running.count == 0; });
}

// ---------------------------------------------------------------------------------------------
// CEvent

bool CEvent::Signal() {
    // Notify under the lock: a waiter that wakes may destroy this object as soon as it has the
    // lock, so nothing here may touch it after the unlock.
    std::lock_guard<std::mutex> lock(m_mutex);
    ++m_count;
    m_condition.notify_one();
    return true;
}

bool CEvent::Wait(uint32_t timeoutMs) {
    std::unique_lock<std::mutex> lock(m_mutex);
    const auto signalled = [this] { return m_count > 0; };
    if (timeoutMs == kInfinite) {
        m_condition.wait(lock, signalled);
    } else if (!m_condition.wait_for(lock, std::chrono::milliseconds(timeoutMs), signalled)) {
        return false;
    }
    --m_count;
    return true;
}

bool CEvent::Reset() {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_count = 0;
    return true;
}

// ---------------------------------------------------------------------------------------------

unsigned long ServeEvents(void* handler) { return CEnumEventThreadHandler<unsigned long>::Serve(handler); }

// ---------------------------------------------------------------------------------------------
// CSignalInScope

CSignalInScope::CSignalInScope(bool* flag) : m_flag(flag) {
    if (m_flag) *m_flag = true;
}

CSignalInScope::CSignalInScope(std::atomic<bool>* flag) : m_atomicFlag(flag) {
    if (m_atomicFlag) m_atomicFlag->store(true);
}

CSignalInScope::~CSignalInScope() {
    if (m_flag) *m_flag = false;
    if (m_atomicFlag) m_atomicFlag->store(false);
}
