// Pure parts of the update procedure: the texts service engineers read and the progress bar.
#include "update/Update.h"

#include <gtest/gtest.h>

#include <ctime>
#include <vector>

namespace {

struct CRecordingScreen : CUpdateScreen {
    std::vector<std::string> texts;
    std::vector<std::pair<int, int>> progress;
    void ShowStatusText(const std::string& t) override { texts.push_back(t); }
    void ShowProgress(int v, int m) override { progress.emplace_back(v, m); }
};

TEST(UpdateTexts, StepCodesAreTwoDigitsBehindTheDiskErrorText) {
    EXPECT_EQ(FormatStepCode(4), "Disk error... (04)");
    EXPECT_EQ(FormatStepCode(18), "Disk error... (18)");
}

TEST(UpdateTexts, BackupStampIsDayMonthYearUnderscoreHourMinuteInLocalTime) {
    struct tm t {};
    t.tm_year = 2019 - 1900;
    t.tm_mon = 2;
    t.tm_mday = 5;
    t.tm_hour = 14;
    t.tm_min = 12;
    t.tm_isdst = -1;
    EXPECT_EQ(FormatBackupTimeStamp(mktime(&t)), "05032019_1412");
}

TEST(UpdateTexts, LogGoesToTheStickUnderItsOwnNameSplitAtTheLastBackslashFirst) {
    EXPECT_EQ(StickPathOfLog("/home/vtx/Code/instrument.log"), "/media/usb/instrument.log");
    // A "\" wins even when a "/" follows it.
    EXPECT_EQ(StickPathOfLog("C:\\logs/run.log"), "/media/usb\\logs/run.log");
    EXPECT_EQ(StickPathOfLog("/home/vtx/Code/we\\ird.log"), "/media/usb\\ird.log");
    EXPECT_EQ(StickPathOfLog("nolog"), "");
    EXPECT_EQ(StickPathOfLog(""), "");
}

TEST(UpdateProgress, StepRaisesMaximumAndPositionTogetherAndFillEndsFull) {
    CRecordingScreen screen;
    CUpdateProcedure procedure(&screen);
    procedure.ProgressStep();
    procedure.ProgressStep();
    ASSERT_EQ(screen.progress.size(), 2u);
    EXPECT_EQ(screen.progress[0], std::make_pair(1, 101));
    EXPECT_EQ(screen.progress[1], std::make_pair(2, 102));
    procedure.FillProgress();
    EXPECT_EQ(screen.progress.back(), std::make_pair(102, 102));
    // A full bar stays as it is.
    procedure.ProgressStep();
    EXPECT_EQ(screen.progress.size(), 3u);
}

TEST(UpdateProgress, DetachedScreenIsNoLongerCalled) {
    CRecordingScreen screen;
    CUpdateProcedure procedure(&screen);
    procedure.DetachScreen();
    procedure.ProgressStep();
    procedure.FillProgress();
    EXPECT_TRUE(screen.progress.empty());
}

TEST(UpdateThread, NullArgumentEndsAtOnceWithOne) { EXPECT_EQ(UpdateThreadMain(nullptr), 1ul); }

}  // namespace
