// The procedure's steps against the simulated instrument of the sandbox (fixed paths).
#include "update/Update.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utime.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <vector>

namespace {

struct CRecordingScreen : CUpdateScreen {
    std::vector<std::string> texts;
    void ShowStatusText(const std::string& t) override { texts.push_back(t); }
    void ShowProgress(int, int) override {}
};

std::string ReadFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

void WriteFile(const std::string& path, const std::string& content, time_t mtime = 0) {
    std::ofstream(path, std::ios::binary) << content;
    if (mtime) {
        struct utimbuf times {mtime, mtime};
        utime(path.c_str(), &times);
    }
}

void Relink(const std::string& target) {
    unlink(kSystemLibraryLink);
    if (!target.empty()) {
        ASSERT_EQ(symlink(target.c_str(), kSystemLibraryLink), 0);
    }
}

class UpdateSteps : public ::testing::Test {
protected:
    void SetUp() override {
        // Each case starts from the same instrument: one log, the current runtime link.
        std::system("rm -rf /home/vtx/Code/*.log /home/vtx/Code/zip /media/usb/update /home/vtx/Code/Old");
        WriteFile("/home/vtx/Code/instrument.log", "old\r\n", 1000000000);
        Relink(kSystemLibraryTarget);
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

TEST_F(UpdateSteps, ReducedUpdateSkipsTheLogAndWritesNothing) {
    CUpdateProcedure procedure(&screen);
    procedure.SetSpecialCommand(1);
    EXPECT_TRUE(procedure.OpenUpdateLog());
    EXPECT_TRUE(procedure.CopyAuxiliaryFiles());
    EXPECT_TRUE(procedure.InstallFontPackage());
    EXPECT_TRUE(procedure.FinishUpdateLog());
    EXPECT_EQ(procedure.GetLogPath(), "");
    EXPECT_EQ(ReadFile("/home/vtx/Code/instrument.log"), "old\r\n");
    EXPECT_TRUE(screen.texts.empty());
}

TEST_F(UpdateSteps, SpecialCommandSetAfterTheStartStillCounts) {
    CUpdateProcedure procedure(&screen);
    ASSERT_TRUE(procedure.OpenUpdateLog());
    procedure.SetSpecialCommand(1);
    // The step reads the command when it runs: no line is written.
    EXPECT_TRUE(procedure.CopyAuxiliaryFiles());
    EXPECT_EQ(ReadFile("/home/vtx/Code/instrument.log"), "old\r\n");
}

TEST_F(UpdateSteps, AuxiliaryFileIsCopiedOnceAndLoggedWithThePrefix) {
    mkdir("/media/usb/update", 0777);
    WriteFile("/media/usb/update/zip", "aux");
    CUpdateProcedure procedure(&screen);
    ASSERT_TRUE(procedure.OpenUpdateLog());
    EXPECT_TRUE(procedure.CopyAuxiliaryFiles());
    EXPECT_TRUE(procedure.CopyAuxiliaryFiles());
    EXPECT_EQ(ReadFile("/home/vtx/Code/zip"), "aux");
    const std::string p = procedure.GetLogPrefix();
    EXPECT_FALSE(p.empty());
    EXPECT_EQ(ReadFile("/home/vtx/Code/instrument.log"),
              "old\r\n" + p + " auxillary files copied\r\n" + p + " zip already copied\r\n");
}

TEST_F(UpdateSteps, LinkCheckIsByteExactAndRelativeTargetsAreWrong) {
    CUpdateProcedure procedure(&screen);
    EXPECT_TRUE(procedure.IsSystemLibraryCurrent());
    Relink("libstdc++.so.6.0.22");
    EXPECT_FALSE(procedure.IsSystemLibraryCurrent());
    Relink(std::string(kSystemLibraryTarget) + "/");
    EXPECT_FALSE(procedure.IsSystemLibraryCurrent());
    EXPECT_EQ(screen.texts.back(), "Disk error... (17)");
    Relink("");
    EXPECT_FALSE(procedure.CheckSystemLibraryLink());
    EXPECT_EQ(screen.texts.back(), "Disk error... (16)");
}

TEST_F(UpdateSteps, TwoBackupsOfTheSameBuildShareOneName) {
    WriteFile("/home/vtx/Code/Application", "build A", 1551795120);
    CUpdateProcedure first(&screen);
    ASSERT_TRUE(first.BackUpOldVersion());
    WriteFile("/home/vtx/Code/Application", "build B", 1551795120);
    CUpdateProcedure second(&screen);
    ASSERT_TRUE(second.BackUpOldVersion());
    const std::string backup = "/home/vtx/Code/Old/Application_" + FormatBackupTimeStamp(1551795120);
    EXPECT_EQ(ReadFile(backup), "build B");
}

TEST_F(UpdateSteps, LogWithABackslashIsCopiedToTheStickUnderTheNameAfterIt) {
    WriteFile("/home/vtx/Code/we\\ird.log", "x\r\n", 1600000000);
    CUpdateProcedure procedure(&screen);
    ASSERT_TRUE(procedure.OpenUpdateLog());
    ASSERT_EQ(procedure.GetLogPath(), "/home/vtx/Code/we\\ird.log");
    ASSERT_TRUE(procedure.FinishUpdateLog());
    EXPECT_EQ(ReadFile("/media/usb\\ird.log"), ReadFile("/home/vtx/Code/we\\ird.log"));
    unlink("/media/usb\\ird.log");
}

}  // namespace
