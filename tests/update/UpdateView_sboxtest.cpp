// The update view's life against the simulated instrument: activation starts the procedure once
// per program run, and the command line's special command reaches it. The view is built without
// a window (no display needed); the procedure behind it is the real one.
#include "update/UpdateView.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <thread>

#include "app/WorkerThread.h"

namespace {

std::string ReadFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

// Polls until done() holds; false after timeoutMs.
template <class Done>
bool WaitFor(Done done, int timeoutMs = 10000) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    while (!done()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return true;
}

size_t Count(const std::string& text, const std::string& what) {
    size_t n = 0;
    for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) ++n;
    return n;
}

TEST(UpdateView, SpecialCommandReachesTheProcedureThroughTheReceiver) {
    CInstrumentViewUpdate view{CInstrumentViewCreatorNeeds{}};
    EXPECT_EQ(g_updateSpecialCommandReceiver, &view);
    EXPECT_EQ(view.GetProcedure().GetSpecialCommand(), 0u);
    g_updateSpecialCommandReceiver->ReceiveParam(1);
    EXPECT_TRUE(view.GetProcedure().IsReducedUpdate());
    EXPECT_EQ(view.GetProcedure().GetProgressMaximum(), 100);
    EXPECT_EQ(view.GetProcedure().GetProgressPosition(), 0);
}

// One test, because the start flag lives for the whole program run.
TEST(UpdateView, ActivationStartsOneProcedurePerRunAndAFailureFillsTheBar) {
    // Without an installed application the procedure fails at the backup (code 01), after it has
    // written its first lines: a second run would write them twice.
    ASSERT_EQ(std::system("rm -f /home/vtx/Code/*.log /home/vtx/Code/Application"), 0);
    const std::string before = "instrument log\r\n";
    std::ofstream("/home/vtx/Code/instrument.log", std::ios::binary) << before;

    CInstrumentViewUpdate view{CInstrumentViewCreatorNeeds{}};
    view.GetProcedure().SetPauseMilliseconds(0);
    EXPECT_FALSE(CInstrumentViewUpdate::HasStartedProcedure());
    view.Activate();
    view.Activate();
    EXPECT_TRUE(CInstrumentViewUpdate::HasStartedProcedure());
    ASSERT_TRUE(WaitFor([] { return GetRunningWorkerThreadCount() == 0; }));

    const CUpdateProcedure& procedure = view.GetProcedure();
    EXPECT_EQ(procedure.GetProgressPosition(), procedure.GetProgressMaximum());
    const std::string after = ReadFile("/home/vtx/Code/instrument.log");
    ASSERT_EQ(after.compare(0, before.size(), before), 0) << "the log was not only appended to";
    EXPECT_EQ(Count(after, "*** Performing systems check ***"), 1u);
    EXPECT_EQ(Count(after, " no zip file on USB\r\n"), 1u);

    // A view built later in the same run (the registry recreating it) starts nothing either.
    CInstrumentViewUpdate again{CInstrumentViewCreatorNeeds{}};
    again.Activate();
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    EXPECT_EQ(GetRunningWorkerThreadCount(), 0);
    EXPECT_EQ(ReadFile("/home/vtx/Code/instrument.log"), after);
}

}  // namespace
