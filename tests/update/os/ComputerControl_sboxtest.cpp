// Runs inside the instrument sandbox: the instrument's tools record their arguments under
// $ROOT/record, and stand-ins for the system's tools come first on PATH.
#include "update/os/ComputerControl.h"

#include "tests/common/TestFiles.h"

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
        m_record = std::string(std::getenv("ROOT")) + "/record";
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

TEST_F(ComputerControlTools, ClockHostNameAndBeepReachTheirTools) {
    StandIn("date", "exit 1");
    StandIn("beep", "exit 4");  // its exit status does not matter
    ASSERT_TRUE(WriteFile(m_record + "/VtxHostname.log", ""));
    // The clock's fields are padded with blanks, not zeros; day of week and milliseconds unused.
    EXPECT_FALSE(SetComputerSystemClock(SInstrumentDateTime{2019, 3, 2, 5, 9, 4, 7, 999}));
    EXPECT_TRUE(SetComputerHostName("vet-lab-3"));
    ComputerBeep(440, 200);
    EXPECT_EQ(ReadFile(Args("date")), "[-s][2019- 3- 5  9: 4: 7]\n");
    EXPECT_EQ(ReadFile(m_record + "/VtxHostname.log"), "vet-lab-3\n");
    EXPECT_EQ(ReadFile(Args("beep")), "[-f][440][-l][200]\n");
}

TEST_F(ComputerControlTools, ShutdownFallsBackToThePrivilegedTool) {
    SetShutdownProgramForTesting("");
    EXPECT_EQ(GetShutdownProgram(), "/sbin/shutdown");
    SetShutdownProgramForTesting(m_bin / "shutdown");
    const std::string refusedOnce =
        "[ -e '" + (m_bin / "refused") + "' ] && exit 0; : > '" + (m_bin / "refused") + "'; exit 1";
    const struct {
        int mode;
        std::string script;
        bool result;
        std::string privileged, runs;
    } cases[] = {
        {0, "exit 1", false, m_bin / "shutdown -P now ''\n", "[-P][now][]\n[-P][now][]\n"},
        {2, refusedOnce, true, m_bin / "shutdown -r now ''\n", "[-r][now][]\n[-r][now][]\n"},
        {2, "exit 0", true, "", "[-r][now][]\n"},  // the privileged tool is not needed
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.script);
        ASSERT_TRUE(WriteFile(m_record + "/privileged.log", ""));
        ASSERT_TRUE(WriteFile(Args("shutdown"), ""));
        StandIn("shutdown", c.script);
        EXPECT_EQ(ShutDownComputer(c.mode), c.result);
        EXPECT_EQ(Privileged(), c.privileged);
        EXPECT_EQ(ReadFile(Args("shutdown")), c.runs);
    }
}

TEST_F(ComputerControlTools, NetworkShareIsAddedToTheFileSystemTableAndMounted) {
    const std::string fstab = m_record + "/append_fstab.log";
    ASSERT_TRUE(WriteFile(fstab, ""));
    StandIn("mount", "exit 32");
    CTestFolder mountPoint;
    // Blanks become \040; nothing else of the share path is changed, its leading "/" included.
    EXPECT_EQ(MountNetworkShare("/QC Data/2019 run", mountPoint.Path(), "service", "pw"), 32);
    EXPECT_EQ(ReadFile(fstab), "//192.168.1.10//QC\\040Data/2019\\040run " + mountPoint.Path() +
                                   " cifs username=service,password=pw,noauto,user,rw 0 0\n");
    EXPECT_EQ(ReadFile(Args("mount")), "[" + mountPoint.Path() + "]\n");

    // A mount point already mounted is left alone: /media is a mount of its own in the sandbox,
    // and / is the root of its file system.
    ASSERT_TRUE(WriteFile(fstab, ""));
    EXPECT_EQ(MountNetworkShare("qc", "/media", "service", "pw"), 0);
    EXPECT_EQ(MountNetworkShare("qc", "/", "service", "pw"), 0);
    EXPECT_EQ(ReadFile(fstab), "");
    EXPECT_EQ(ReadFile(Args("mount")), "[" + mountPoint.Path() + "]\n");
}
