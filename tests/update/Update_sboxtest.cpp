// What a whole run of the program cannot reach, against the simulated instrument of the sandbox:
// step logic of the procedure, and the update view's life (without a window, the real procedure).
#include <gtest/gtest.h>
#include <unistd.h>
#include <utime.h>

#include <cstdlib>
#include <fstream>
#include <vector>

#include "app/WorkerThread.h"
#include "tests/common/TestFiles.h"
#include "tests/update/RecordingScreen.h"
#include "update/Update.h"
#include "update/locations/InstrumentLocations.h"
#include "update/UpdateView.h"

using vtxtest::ReadFile;

namespace {

void WriteFile(const std::string& path, const std::string& content, time_t mtime) {
    std::ofstream(path, std::ios::binary) << content;
    const struct utimbuf times { mtime, mtime };
    utime(path.c_str(), &times);
}

class UpdateSteps : public ::testing::Test {
protected:
    // Each case starts from the same instrument (one log, current runtime link).
    void SetUp() override {
        ASSERT_EQ(
            std::system("rm -rf /home/vtx/Code/*.log /home/vtx/Code/zip /media/usb/*.log /home/vtx/Code/Old"
                        " && mkdir -p /media/usb/update && echo aux > /media/usb/update/zip"),
            0);
        WriteFile("/home/vtx/Code/instrument.log", "old\r\n", 1000000000);
        unlink(GetRuntimeLibraryLink().c_str());
        ASSERT_EQ(symlink(GetRuntimeLibraryTarget().c_str(), GetRuntimeLibraryLink().c_str()), 0);
    }
    CRecordingScreen screen;
};

TEST_F(UpdateSteps, NewestLogWinsAndEqualTimesKeepTheFirstListed) {
    WriteFile("/home/vtx/Code/b.log", "", 1500000000);
    WriteFile("/home/vtx/Code/a.log", "", 1500000000);
    CUpdateProcedure procedure(&screen);
    ASSERT_TRUE(procedure.OpenUpdateLog());
    EXPECT_EQ(procedure.GetLogPath(), "/home/vtx/Code/a.log");
}

// One test, because the start flag lives for the whole program run. Without an installed
// application the procedure fails at the backup after its first log lines, which a second start
// would write again. (The full bar of a failure is every failing end-to-end run's.)
TEST(UpdateView, ActivationStartsOneProcedurePerRun) {
    ASSERT_EQ(std::system("rm -rf /home/vtx/Code/*.log /home/vtx/Code/Application /media/usb/update"), 0);
    std::ofstream("/home/vtx/Code/instrument.log", std::ios::binary) << "instrument log\r\n";
    CInstrumentViewUpdate view{CInstrumentViewCreatorNeeds{}};
    view.GetProcedure().SetPauseMilliseconds(0);
    EXPECT_FALSE(CInstrumentViewUpdate::HasStartedProcedure());
    view.Activate();
    view.Activate();
    CInstrumentViewUpdate again{CInstrumentViewCreatorNeeds{}};  // the registry recreating it
    again.Activate();
    EXPECT_TRUE(CInstrumentViewUpdate::HasStartedProcedure());
    ASSERT_TRUE(WaitForWorkerThreads(60000));
    const std::string after = ReadFile("/home/vtx/Code/instrument.log");
    const std::string::size_type check = after.find("*** Performing systems check ***");
    EXPECT_NE(check, std::string::npos);
    EXPECT_EQ(after.find("*** Performing systems check ***", check + 1), std::string::npos) << after;
}

}  // namespace
