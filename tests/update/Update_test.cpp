// Pure parts of the update procedure: the texts service engineers read and the progress bar.
#include "update/Update.h"

#include <gtest/gtest.h>

#include <ctime>
#include <vector>

namespace {

TEST(UpdateTexts, BackupStampAndThePlaceOfTheLogOnTheStick) {
    // Local time; the last two near the ends of a 32-bit time_t, a day off in any time zone.
    for (const char* stamp : {"05032019_1412", "18012038_1412", "15121901_1412"}) {
        struct tm t = {};
        strptime(stamp, "%d%m%Y_%H%M", &t);
        t.tm_isdst = -1;
        EXPECT_EQ(FormatBackupTimeStamp(mktime(&t)), stamp);
    }
    // Split at the last "\" even when a "/" follows it; without any separator there is no place.
    EXPECT_EQ(StickPathOfLog("C:\\logs/run.log"), "/media/usb\\logs/run.log");
    EXPECT_EQ(StickPathOfLog("/home/vtx/Code/instrument.log"), "/media/usb/instrument.log");
    EXPECT_EQ(StickPathOfLog("nolog"), "");
    EXPECT_EQ(UpdateThreadMain(nullptr), 1ul);
}

struct CRecordingScreen : CUpdateScreen {
    std::vector<std::pair<int, int>> progress;
    void ShowStatusText(const std::string&) override {}
    void ShowProgress(int v, int m) override { progress.emplace_back(v, m); }
};

TEST(UpdateProgress, StepRaisesMaximumAndPositionTogetherAndFillEndsFull) {
    CRecordingScreen screen;
    CUpdateProcedure procedure(&screen);
    procedure.ProgressStep();
    procedure.ProgressStep();
    procedure.FillProgress();
    procedure.ProgressStep();  // a full bar stays as it is
    EXPECT_EQ(screen.progress, (std::vector<std::pair<int, int>>{{1, 101}, {2, 102}, {102, 102}}));

    CRecordingScreen detached;
    CUpdateProcedure gone(&detached);
    gone.DetachScreen();
    gone.ProgressStep();
    gone.FillProgress();
    EXPECT_TRUE(detached.progress.empty());
}

}  // namespace
