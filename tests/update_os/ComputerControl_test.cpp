#include "update/ComputerControl.h"

#include "tests/update_os/TestFolder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <thread>

using vtxtest::CTestFolder;
using vtxtest::ReadFile;
using vtxtest::WriteFile;

namespace {

bool IsFolder(const std::string& path) {
    struct stat status {};
    return lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool Exists(const std::string& path) {
    struct stat status {};
    return lstat(path.c_str(), &status) == 0;
}

}  // namespace

TEST(ComputerControlCopy, CopiesPathsWithBlanks) {
    CTestFolder folder;
    ASSERT_EQ(mkdir((folder / "my folder").c_str(), 0777), 0);
    ASSERT_TRUE(WriteFile(folder / "my folder/a b.log", "log text"));
    EXPECT_TRUE(CopyFile(folder / "my folder/a b.log", folder / "copy of a b.log"));
    EXPECT_EQ(ReadFile(folder / "copy of a b.log"), "log text");
    EXPECT_FALSE(CopyFile(folder / "missing", folder / "never"));
    EXPECT_FALSE(Exists(folder / "never"));
}

TEST(ComputerControlCopy, ShellCharactersInNamesAreJustCharacters) {
    CTestFolder folder;
    const std::string marker = folder / "pwned-marker";
    const std::string names[] = {
        "a$(touch " + marker + ").log",
        "b`touch " + marker + "`.log",
        "c\".log",
        "d\"; touch " + marker + "; echo \".log",
        "e\\.log",
        "f\\\".log",
        "g$HOME.log",
        "h'quote'.log",
        "i\\$(touch " + marker + ").log",
    };
    for (const std::string& name : names) {
        // The marker's slashes make folders of the name's first part.
        const std::string from = folder / name;
        std::error_code ignored;
        std::filesystem::create_directories(std::filesystem::path(from).parent_path(), ignored);
        ASSERT_TRUE(WriteFile(from, name)) << name;
        EXPECT_TRUE(CopyFile(from, from + ".copy")) << name;
        EXPECT_EQ(ReadFile(from + ".copy"), name) << name;
    }
    EXPECT_FALSE(Exists(marker));
}

TEST(ComputerControlFiles, FileExistsMatchesPatterns) {
    CTestFolder folder;
    ASSERT_TRUE(WriteFile(folder / "one.log", ""));
    EXPECT_TRUE(FileExists(folder / "one.log"));
    EXPECT_TRUE(FileExists(folder / "*.log"));
    EXPECT_TRUE(FileExists(folder.Path()));
    EXPECT_FALSE(FileExists(folder / "*.txt"));
    EXPECT_FALSE(FileExists(""));
}

TEST(ComputerControlFiles, CreateFolderAcceptsAnExistingFolderOnly) {
    CTestFolder folder;
    EXPECT_TRUE(CreateFolder(folder / "Old"));
    EXPECT_TRUE(IsFolder(folder / "Old"));
    EXPECT_TRUE(CreateFolder(folder / "Old"));
    ASSERT_TRUE(WriteFile(folder / "plain", ""));
    EXPECT_FALSE(CreateFolder(folder / "plain"));
    EXPECT_FALSE(CreateFolder(folder / "no/such/parent"));
}

TEST(ComputerControlFiles, RemoveFolderTreeRemovesLinksWithoutFollowingThem) {
    CTestFolder folder;
    const std::string outside = folder / "outside";
    ASSERT_EQ(mkdir(outside.c_str(), 0777), 0);
    ASSERT_TRUE(WriteFile(outside + "/keep.txt", "keep"));
    const std::string tree = folder / "NEW";
    ASSERT_EQ(mkdir(tree.c_str(), 0777), 0);
    ASSERT_EQ(mkdir((tree + "/sub").c_str(), 0777), 0);
    ASSERT_EQ(mkdir((tree + "/sub/empty").c_str(), 0777), 0);
    ASSERT_TRUE(WriteFile(tree + "/Application", "elf"));
    ASSERT_TRUE(WriteFile(tree + "/.hidden", "dot"));
    ASSERT_TRUE(WriteFile(tree + "/sub/[x]*.txt", "glob characters"));
    ASSERT_EQ(symlink(outside.c_str(), (tree + "/sub/to-outside").c_str()), 0);
    ASSERT_EQ(symlink((outside + "/keep.txt").c_str(), (tree + "/file-link").c_str()), 0);
    ASSERT_EQ(symlink("/nonexistent/target", (tree + "/dangling").c_str()), 0);

    EXPECT_TRUE(RemoveFolderTree(tree));
    EXPECT_FALSE(Exists(tree));
    EXPECT_TRUE(IsFolder(outside));
    EXPECT_EQ(ReadFile(outside + "/keep.txt"), "keep");

    EXPECT_FALSE(RemoveFolderTree(tree));
}

TEST(ComputerControlFiles, RemoveFolderTreeRefusesALinkInPlaceOfTheFolder) {
    CTestFolder folder;
    const std::string target = folder / "target";
    ASSERT_EQ(mkdir(target.c_str(), 0777), 0);
    ASSERT_TRUE(WriteFile(target + "/keep.txt", "keep"));
    ASSERT_EQ(symlink(target.c_str(), (folder / "link").c_str()), 0);
    EXPECT_FALSE(RemoveFolderTree(folder / "link"));
    EXPECT_EQ(ReadFile(target + "/keep.txt"), "keep");
    ASSERT_TRUE(WriteFile(folder / "file", ""));
    EXPECT_FALSE(RemoveFolderTree(folder / "file"));
    EXPECT_TRUE(Exists(folder / "file"));
}

TEST(ComputerControlCommands, CommandOutputCollectsEverything) {
    bool ok = false;
    EXPECT_EQ(RunCommandOutput("true", ok), "");
    EXPECT_TRUE(ok);
    EXPECT_EQ(RunCommandOutput("printf 'line 1\\nline 2'", ok), "line 1\nline 2");
    EXPECT_TRUE(ok);
    // Pieces of 128 bytes: one byte more, and embedded NULs, must come through whole.
    const std::string piece = RunCommandOutput("head -c 129 /dev/zero", ok);
    EXPECT_EQ(piece, std::string(129, '\0'));
    // Only standard output is collected, and the exit status does not matter.
    EXPECT_EQ(RunCommandOutput("echo visible; echo hidden >&2; exit 3", ok), "visible\n");
    EXPECT_TRUE(ok);
}

TEST(ComputerControlCommands, CommandOutputOfMegabytes) {
    bool ok = false;
    const std::string output = RunCommandOutput("head -c 6000000 /dev/zero | tr '\\0' x", ok);
    EXPECT_TRUE(ok);
    ASSERT_EQ(output.size(), 6000000u);
    EXPECT_EQ(output.find_first_not_of('x'), std::string::npos);
}

TEST(ComputerControlCommands, ShellCommandGivesTheExitStatus) {
    EXPECT_EQ(RunShellCommand("true"), 0);
    EXPECT_EQ(RunShellCommand("exit 3"), 3);
    EXPECT_EQ(RunShellCommand("exit 255"), 255);
    EXPECT_EQ(RunShellCommand("/nonexistent/program 2>/dev/null"), 127);
    EXPECT_EQ(RunShellCommand("kill -KILL $$"), -1);
}

TEST(ComputerControlSystem, MillisecondsCountFromTheFirstCall) {
    const uint32_t first = GetMillisecondsSinceFirstCall();
    std::this_thread::sleep_for(std::chrono::milliseconds(60));
    const uint32_t later = GetMillisecondsSinceFirstCall();
    EXPECT_GE(later - first, 50u);
    EXPECT_LT(later - first, 5000u);
}

TEST(ComputerControlSystem, DiskSpaceOfTheProgramsFileSystem) {
    uint64_t total = 0, free = 0, blockSize = 0;
    double scale = 0;
    ASSERT_TRUE(GetComputerDiskSpace(total, free, blockSize, scale));
    EXPECT_GT(total, 0u);
    EXPECT_LE(free, total);
    EXPECT_GT(blockSize, 0u);
    EXPECT_EQ(scale, 1.0);
}
