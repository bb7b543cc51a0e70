// Each builder's line run by /bin/sh as the program runs it, with stand-ins in place of the programs
// and of the instrument's tools.
#include "update/os/ShellCommands.h"

#include "tests/common/TestFiles.h"
#include "update/locations/InstrumentLocations.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>

using namespace NS_ShellCommand;
using vtxtest::CTestFolder;

TEST(ShellCommands, EveryWordReachesItsProgramExactly) {
    CTestFolder bin, folder;
    const std::string record = folder / "record", w = "a b\"c'd\\e`f$g", f = folder / w,
                      tools = GetUserHomeFolder() + "/bin/";
    // Each stand-in writes its name and [argument]s as a line; the privileged one then runs its argument.
    const std::string standIn = "{ printf %s \"${0##*/}\"; for a; do printf '[%s]' \"$a\"; done; echo; } >> '" +
                                record +
                                "'\n[ \"${0##*/}\" != VtxSecret ] || [ \"$1\" = reboot ] || exec sh -c \"$1\"\n";
    ASSERT_TRUE(vtxtest::WriteScript(bin / "show", standIn));
    for (const std::string& name : std::initializer_list<std::string>{
             "cp", "ln", "mount", "ldd", "tar", "VtxSecret", "VtxHostname", "append_fstab", w})
        ASSERT_EQ(symlink("show", (bin / name).c_str()), 0);
    ASSERT_TRUE(std::filesystem::create_directory(f));
    const std::string fstab = "//" + w + "/a\\040b\"c'd\\e`f$g " + f + " cifs username=" + w + ",password=" + w +
                              ",noauto,user,rw 0 0";
    const struct {
        std::string line, received;
    } rows[] = {
        {Copy(w, f), "cp[" + w + "][" + f + "]"},
        {Privileged(CopyPlain(w, f)), "VtxSecret[" + CopyPlain(w, f) + "]\ncp[" + w + "][" + f + "]"},
        {Privileged(Shutdown(bin / w, 2)), "VtxSecret[" + Shutdown(bin / w, 2) + "]\n" + w + "[-r][now][]"},
        {PrivilegedReboot(), "VtxSecret[reboot]"},
        {RemountWritable(f), "mount[-o][remount,rw][" + f + "]"},
        {LinkSymbolic(w, f), "ln[-sf][" + w + "][" + f + "]"},
        {SetHostName(w), "VtxHostname[" + w + "]"},
        {AppendShareToFileSystemTable(w, w, f, w, w), "append_fstab[" + fstab + "]"},
        {Mount(f), "mount[" + f + "]"},
        {LibraryCheck(f), "ldd[" + f + "]"},
        {UnpackFontPackage(f, w), "tar[xzf][" + w + "]"},  // only after cd succeeded: set -e
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.line);
        ASSERT_TRUE(vtxtest::WriteFile(record, ""));
        std::string line = row.line;
        if (line.rfind(tools, 0) == 0) line.replace(0, tools.size(), bin.Path() + "/");
        ASSERT_NE(std::system(("set -e; PATH=" + bin.Path() + ":$PATH; exec 2>/dev/null; " + line).c_str()), -1);
        EXPECT_EQ(vtxtest::ReadFile(record), row.received + "\n");
    }
}

TEST(ShellCommands, OrdinaryWordsGiveTheLinesTheToolsHaveAlwaysHad) {
    const std::string lib = "/usr/lib/i386-linux-gnu/libstdc++.so.6", image = "/mnt/root-ro";
    const struct {
        std::string line, expected;
    } rows[] = {
        {Copy("/media/usb/update/zip", "/home/vtx/Code/zip"),
         R"(cp "/media/usb/update/zip" "/home/vtx/Code/zip")"},
        {Privileged(RemountWritable(image)), R"(/home/vtx/bin/VtxSecret "mount -o remount,rw /mnt/root-ro")"},
        {Privileged(Shutdown("/sbin/shutdown", 0)), R"(/home/vtx/bin/VtxSecret "/sbin/shutdown -P now ''")"},
        {PrivilegedReboot(), "/home/vtx/bin/VtxSecret reboot"},
        {CopyPlain("/media/usb/update/libstdc++.so.6.0.22", image + lib + ".0.22"),
         "cp /media/usb/update/libstdc++.so.6.0.22 /mnt/root-ro" + lib + ".0.22"},
        {LinkSymbolic(lib + ".0.22", image + lib), "ln -sf " + lib + ".0.22 /mnt/root-ro" + lib},
        {SetHostName("vet-lab-3"), "/home/vtx/bin/VtxHostname vet-lab-3"},
        {AppendShareToFileSystemTable("192.168.1.10", "/QC Data/2019 run", "/mnt/qc", "service", "pw"),
         R"(/home/vtx/bin/append_fstab '//192.168.1.10//QC\040Data/2019\040run /mnt/qc cifs username=service,password=pw,noauto,user,rw 0 0')"},
        {Mount("/mnt/qc"), "mount /mnt/qc"},
        {Shutdown("/sbin/shutdown", 2), "/sbin/shutdown -r now ''"},
        {SetSystemClock(2019, 3, 5, 9, 4, 7), R"(date -s "2019- 3- 5  9: 4: 7")"},
        {Beep(440, 200), "beep -f 440 -l 200"},
        {LibraryCheck("/home/vtx/Code/NEW/Application"),
         "[[ $(ldd /home/vtx/Code/NEW/Application | grep not | wc -l) -eq 0 ]]"},
        {UnpackFontPackage("/home/vtx", "jfonts.tgz"), "cd /home/vtx; tar xzf jfonts.tgz"},
    };
    for (const auto& row : rows) EXPECT_EQ(row.line, row.expected);
}
