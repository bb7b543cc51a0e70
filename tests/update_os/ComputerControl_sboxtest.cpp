// Runs inside the instrument sandbox: the instrument's tools record their arguments under
// $ROOT/record, and stand-ins for the system's tools come first on PATH.
#include "update/ComputerControl.h"

#include "tests/update_os/TestFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

using vtxtest::CTestFolder;
using vtxtest::ReadFile;
using vtxtest::WriteFile;
using vtxtest::WriteScript;

namespace {

class ComputerControlTools : public ::testing::Test {
protected:
    void SetUp() override {
        const char* root = std::getenv("ROOT");
        ASSERT_NE(root, nullptr) << "run inside tools/instrument-sandbox";
        m_record = std::string(root) + "/record";
        ASSERT_TRUE(WriteFile(m_record + "/privileged.log", ""));
        const char* path = std::getenv("PATH");
        m_savedPath = path != nullptr ? path : "";
        ASSERT_EQ(setenv("PATH", (m_bin.Path() + ":" + m_savedPath).c_str(), 1), 0);
        // Never the real one, whatever a test does.
        SetShutdownProgramForTesting(m_bin / "shutdown");
    }
    void TearDown() override {
        setenv("PATH", m_savedPath.c_str(), 1);
        SetShutdownProgramForTesting("");
    }

    // A stand-in that writes each argument on a line of <name>.args, once per run, then runs
    // the given shell lines.
    void StandIn(const std::string& name, const std::string& then = "exit 0") {
        ASSERT_TRUE(WriteScript(m_bin / name, "for a in \"$@\"; do printf '[%s]' \"$a\" >> '" + Args(name) +
                                                  "'; done\necho >> '" + Args(name) + "'\n" + then + "\n"));
    }
    std::string Args(const std::string& name) const { return m_bin / (name + ".args"); }
    std::string Privileged() const { return ReadFile(m_record + "/privileged.log"); }

    CTestFolder m_bin;
    std::string m_record;
    std::string m_savedPath;
};

}  // namespace

TEST_F(ComputerControlTools, ClockCommandIsBlankPadded) {
    StandIn("date");
    SInstrumentDateTime dateTime;
    dateTime.year = 2019;
    dateTime.month = 3;
    dateTime.dayOfWeek = 2;
    dateTime.day = 5;
    dateTime.hour = 9;
    dateTime.minute = 4;
    dateTime.second = 7;
    dateTime.millisecond = 999;
    EXPECT_TRUE(SetComputerSystemClock(dateTime));
    EXPECT_EQ(ReadFile(Args("date")), "[-s][2019- 3- 5  9: 4: 7]\n");

    StandIn("date", "exit 1");
    dateTime.month = 12;
    dateTime.day = 31;
    dateTime.hour = 23;
    EXPECT_FALSE(SetComputerSystemClock(dateTime));
    EXPECT_EQ(ReadFile(Args("date")), "[-s][2019- 3- 5  9: 4: 7]\n[-s][2019-12-31 23: 4: 7]\n");
}

TEST_F(ComputerControlTools, ShutdownFallsBackToThePrivilegedTool) {
    SetShutdownProgramForTesting("");
    EXPECT_EQ(GetShutdownProgram(), "/sbin/shutdown");
    SetShutdownProgramForTesting(m_bin / "shutdown");

    // Refused both times.
    StandIn("shutdown", "exit 1");
    EXPECT_FALSE(ShutDownComputer(2));
    EXPECT_EQ(Privileged(), m_bin / "shutdown -r now ''\n");
    EXPECT_EQ(ReadFile(Args("shutdown")), "[-r][now][]\n[-r][now][]\n");

    // Refused without rights, accepted through the privileged tool.
    ASSERT_TRUE(WriteFile(m_record + "/privileged.log", ""));
    ASSERT_TRUE(WriteFile(Args("shutdown"), ""));
    StandIn("shutdown", "[ -e '" + (m_bin / "refused") + "' ] && exit 0; : > '" + (m_bin / "refused") + "'; exit 1");
    EXPECT_TRUE(ShutDownComputer(0));
    EXPECT_EQ(Privileged(), m_bin / "shutdown -P now ''\n");
    EXPECT_EQ(ReadFile(Args("shutdown")), "[-P][now][]\n[-P][now][]\n");

    // Accepted at once: the privileged tool is not needed.
    ASSERT_TRUE(WriteFile(m_record + "/privileged.log", ""));
    ASSERT_TRUE(WriteFile(Args("shutdown"), ""));
    StandIn("shutdown");
    EXPECT_TRUE(ShutDownComputer(2));
    EXPECT_EQ(Privileged(), "");
    EXPECT_EQ(ReadFile(Args("shutdown")), "[-r][now][]\n");
}

TEST_F(ComputerControlTools, HostNameGoesThroughTheInstrumentsTool) {
    const std::string log = m_record + "/VtxHostname.log";
    ASSERT_TRUE(WriteFile(log, ""));
    EXPECT_TRUE(SetComputerHostName("vet-lab-3"));
    EXPECT_EQ(ReadFile(log), "vet-lab-3\n");
}

TEST_F(ComputerControlTools, BeepCommand) {
    StandIn("beep", "exit 4");
    ComputerBeep(440, 200);
    EXPECT_EQ(ReadFile(Args("beep")), "[-f][440][-l][200]\n");
}

TEST_F(ComputerControlTools, NetworkShareIsAddedToTheFileSystemTableAndMounted) {
    const std::string fstab = m_record + "/append_fstab.log";
    ASSERT_TRUE(WriteFile(fstab, ""));
    StandIn("mount");
    CTestFolder mountPoint;
    EXPECT_EQ(MountNetworkShare("QC Data/2019 run", mountPoint.Path(), "service", "s3cret"), 0);
    EXPECT_EQ(ReadFile(fstab), "//192.168.1.10/QC\\040Data/2019\\040run " + mountPoint.Path() +
                                   " cifs username=service,password=s3cret,noauto,user,rw 0 0\n");
    EXPECT_EQ(ReadFile(Args("mount")), "[" + mountPoint.Path() + "]\n");

    // A quote in the password stays inside the one argument.
    ASSERT_TRUE(WriteFile(fstab, ""));
    StandIn("mount", "exit 32");
    EXPECT_EQ(MountNetworkShare("/qc", mountPoint.Path(), "service", "it's"), 32);
    EXPECT_EQ(ReadFile(fstab), "//192.168.1.10/qc " + mountPoint.Path() +
                                   " cifs username=service,password=it's,noauto,user,rw 0 0\n");
}

TEST_F(ComputerControlTools, NetworkShareAlreadyMountedIsLeftAlone) {
    const std::string fstab = m_record + "/append_fstab.log";
    ASSERT_TRUE(WriteFile(fstab, ""));
    StandIn("mount", "exit 1");
    // /media is a mount of its own in the sandbox, and / is the root of its file system.
    EXPECT_EQ(MountNetworkShare("qc", "/media", "service", "pw"), 0);
    EXPECT_EQ(MountNetworkShare("qc", "/", "service", "pw"), 0);
    EXPECT_EQ(ReadFile(fstab), "");
    EXPECT_EQ(ReadFile(Args("mount")), "");
}
