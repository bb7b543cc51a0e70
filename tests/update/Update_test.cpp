// Pure parts of the update procedure: the texts service engineers read and the progress bar.
#include "update/Update.h"

#include "tests/update/RecordingScreen.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

// The backup's time stamp and the plain log path on the stick are in every end-to-end run.
TEST(UpdateTexts, ThePlaceOfTheLogOnTheStick) {
    // Split at the last "\" even when a "/" follows it; without any separator there is no place.
    EXPECT_EQ(StickPathOfLog("C:\\logs/run.log"), "/media/usb\\logs/run.log");
    EXPECT_EQ(StickPathOfLog("nolog"), "");
    EXPECT_EQ(UpdateThreadMain(nullptr), 1ul);
}

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
