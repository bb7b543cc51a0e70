// In the sandbox, whose stand-ins of the instrument's tools record their arguments in $ROOT/record.
#include "update/os/ComputerControl.h"

#include "tests/common/TestFiles.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <string>

using vtxtest::CTestFolder;
using vtxtest::ReadFile;
using vtxtest::WriteFile;

TEST(ComputerControlTools, EachOperationReachesItsToolWithItsArguments) {
    const std::string record = std::string(std::getenv("ROOT")) + "/record/", path = std::getenv("PATH");
    CTestFolder bin, mountPoint;
    ASSERT_EQ(setenv("PATH", (bin.Path() + ":" + path).c_str(), 1), 0);
    SetShutdownProgramForTesting(bin / "shutdown");  // never the real one, whatever a case does
    const std::string refusedOnce =
        "[ -e '" + (bin / "refused") + "' ] && exit 0; : > '" + (bin / "refused") + "'; exit 1";
    const std::string fstab = "//192.168.1.10//QC\\040Data/2019\\040run " + mountPoint.Path() +
                              " cifs username=service,password=pw,noauto,user,rw 0 0\n";
    const struct {
        std::function<int()> call;
        std::string tool, script;  // with a script, a stand-in on PATH writing [argument]s a line per run
        int result;
        std::string args, privileged, fstab;
    } cases[] = {
        // The clock's fields are padded with blanks, not zeros; day of week and milliseconds unused.
        {[] {
             return int(SetComputerSystemClock({2019, 3, 2, 5, 9, 4, 7, 999}));
         },
         "date", "exit 1", 0, "[-s][2019- 3- 5  9: 4: 7]\n", "", ""},
        {[] { return ComputerBeep(440, 200), 0; }, "beep", "exit 4", 0, "[-f][440][-l][200]\n", "", ""},
        {[] { return int(SetComputerHostName("vet-lab-3")); }, "VtxHostname", "", 1, "vet-lab-3\n", "", ""},
        // A refused shutdown runs again through the privileged tool, which is not needed otherwise.
        {[] { return int(ShutDownComputer(0)); }, "shutdown", "exit 1", 0, "[-P][now][]\n[-P][now][]\n",
         bin / "shutdown -P now ''\n", ""},
        {[] { return int(ShutDownComputer(2)); }, "shutdown", refusedOnce, 1, "[-r][now][]\n[-r][now][]\n",
         bin / "shutdown -r now ''\n", ""},
        {[] { return int(ShutDownComputer(2)); }, "shutdown", "exit 0", 1, "[-r][now][]\n", "", ""},
        // Blanks of the share path become \040, nothing else of it changes, its leading "/" included.
        {[&] { return MountNetworkShare("/QC Data/2019 run", mountPoint.Path(), "service", "pw"); }, "mount",
         "exit 32", 32, "[" + mountPoint.Path() + "]\n", "", fstab},
        // Already mount points: /media is a mount of its own in the sandbox, / the root of its file system.
        {[] { return MountNetworkShare("qc", "/media", "s", "p") + MountNetworkShare("qc", "/", "s", "p"); },
         "mount", "exit 32", 0, "", "", ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.tool + " " + c.script);
        const std::string args = c.script.empty() ? record + c.tool + ".log" : bin / (c.tool + ".args");
        for (const std::string& file : {args, record + "privileged.log", record + "append_fstab.log"})
            ASSERT_TRUE(WriteFile(file, ""));
        const std::string standIn = "for a in \"$@\"; do printf '[%s]' \"$a\" >> '" + args +
                                    "'; done\necho >> '" + args + "'\n" + c.script;
        ASSERT_TRUE(c.script.empty() || vtxtest::WriteScript(bin / c.tool, standIn));
        EXPECT_EQ(c.call(), c.result);
        EXPECT_EQ(ReadFile(args), c.args);
        EXPECT_EQ(ReadFile(record + "privileged.log"), c.privileged);
        EXPECT_EQ(ReadFile(record + "append_fstab.log"), c.fstab);
    }
    setenv("PATH", path.c_str(), 1);
    SetShutdownProgramForTesting("");
}
