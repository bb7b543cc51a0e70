#include "update/os/ComputerControl.h"

#include "tests/common/TestFiles.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>

using vtxtest::CTestFolder;
using vtxtest::ReadFile;
using vtxtest::WriteFile;

bool Exists(const std::string& path) { return std::filesystem::exists(std::filesystem::symlink_status(path)); }

TEST(ComputerControlFiles, CopyTakesShellCharactersInNamesAsJustCharacters) {
    CTestFolder folder;
    const std::string marker = folder / "pwned-marker";
    const std::string names[] = {"my folder/a b.log",
                                 "a$(touch " + marker + ").log",
                                 "b`touch " + marker + "`.log",
                                 "c\"; touch " + marker + "; echo \".log",
                                 "e\\.log",
                                 "f\\\".log",
                                 "i\\$(touch " + marker + ").log",
                                 "h'quote'.log",
                                 "x\".log",
                                 "first\ntouch " + marker + "\n.log",
                                 std::string(246, 'L') + ".log"};  // 255 with ".copy"
    for (const std::string& name : names) {
        SCOPED_TRACE(name);
        // Slashes in a name make folders of its first part.
        const std::string from = folder / name;
        std::error_code ignored;
        std::filesystem::create_directories(std::filesystem::path(from).parent_path(), ignored);
        ASSERT_TRUE(WriteFile(from, name));
        EXPECT_TRUE(CopyFile(from, from + ".copy"));
        EXPECT_EQ(ReadFile(from + ".copy"), name);
    }
    EXPECT_FALSE(Exists(marker));
    EXPECT_FALSE(CopyFile(folder / "missing", folder / "never"));
    EXPECT_FALSE(Exists(folder / "never"));
}

// What the end-to-end runs never lay out: a link or a folder in the destination's place.
TEST(ComputerControlFiles, CopyGoesThroughALinkIntoAFolderAndFailsWithoutATrace) {
    CTestFolder folder;
    ASSERT_TRUE(WriteFile(folder / "new", "new") && WriteFile(folder / "target", "old"));
    ASSERT_EQ(symlink("target", (folder / "link").c_str()), 0);
    ASSERT_EQ(mkdir((folder / "into").c_str(), 0777), 0);
    EXPECT_TRUE(CopyFile(folder / "new", folder / "link"));  // through the link, as cp writes
    EXPECT_EQ(ReadFile(folder / "target"), "new");
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "link"));
    EXPECT_TRUE(CopyFile(folder / "new", folder / "into"));  // a folder takes the source's name
    EXPECT_EQ(ReadFile(folder / "into/new"), "new");
    EXPECT_FALSE(CopyFile(folder / "into", folder / "target"));
    EXPECT_FALSE(CopyFile(folder / "missing", folder / "target"));
    EXPECT_EQ(ReadFile(folder / "target"), "new");
    // Where cp fails or never ends: a FIFO to read, a link to nowhere to write, the same file.
    ASSERT_EQ(mkfifo((folder / "fifo").c_str(), 0600), 0);
    ASSERT_EQ(symlink("nowhere/x", (folder / "dangling").c_str()), 0);
    EXPECT_FALSE(CopyFile(folder / "fifo", folder / "from-fifo"));
    EXPECT_FALSE(CopyFile(folder / "new", folder / "dangling"));
    EXPECT_FALSE(CopyFile(folder / "target", folder / "link"));
    EXPECT_FALSE(Exists(folder / "from-fifo") || Exists(folder / "nowhere"));
    // A stick that answers a second read otherwise: the copy that differs never takes the name.
    const SFileContent checked = DigestBytes("checked");
    std::string cause;
    EXPECT_FALSE(CopyFile(folder / "new", folder / "target", &cause,
                          SCopyOptions{eCopyDestination::FollowLinks, &checked}));
    EXPECT_EQ(cause.rfind(kCopyContentDiffers, 0), 0u);
    EXPECT_EQ(ReadFile(folder / "target"), "new");
    // The stick's way: the link itself gives way to the copy.
    EXPECT_TRUE(CopyFile(folder / "new", folder / "dangling", nullptr,
                         SCopyOptions{eCopyDestination::ReplaceLink, nullptr}));
    EXPECT_EQ(ReadFile(folder / "dangling"), "new");
    EXPECT_FALSE(Exists(folder / kPartialCopyName));
}

TEST(ComputerControlFiles, RemoveFolderTreeRemovesWhatItMatchesAndFollowsNoLink) {
    CTestFolder folder;
    const std::string outside = folder / "outside", tree = folder / "NEW";
    // A folder named [l]ink read as a pattern would match the link beside it and empty "outside".
    for (const std::string& path : {outside, tree, tree + "/sub", tree + "/sub/empty", tree + "/[l]ink"})
        ASSERT_EQ(mkdir(path.c_str(), 0777), 0) << path;
    for (const std::string& path : {outside + "/keep.txt", tree + "/Application", tree + "/sub/[x]*.txt"})
        ASSERT_TRUE(WriteFile(path, "keep"));
    ASSERT_EQ(symlink(outside.c_str(), (tree + "/sub/to-outside").c_str()), 0);
    ASSERT_EQ(symlink(outside.c_str(), (tree + "/link").c_str()), 0);
    ASSERT_EQ(symlink((outside + "/keep.txt").c_str(), (tree + "/file-link").c_str()), 0);
    ASSERT_EQ(symlink("/nonexistent/target", (tree + "/dangling").c_str()), 0);
    ASSERT_EQ(symlink(outside.c_str(), (folder / "link").c_str()), 0);

    EXPECT_FALSE(RemoveFolderTree(folder / "link"));  // a link in place of the folder is refused
    EXPECT_FALSE(RemoveFolderTree(outside + "/keep.txt"));
    EXPECT_TRUE(RemoveFolderTree(tree));
    EXPECT_FALSE(Exists(tree));
    EXPECT_EQ(ReadFile(outside + "/keep.txt"), "keep");
    // A hidden name stays, as "folder/*" leaves it, and so does the folder holding it.
    ASSERT_TRUE(mkdir(tree.c_str(), 0777) == 0 && WriteFile(tree + "/.hidden", "left") &&
                WriteFile(tree + "/b", "x"));
    EXPECT_FALSE(RemoveFolderTree(tree));
    EXPECT_EQ(ReadFile(tree + "/.hidden"), "left");
    EXPECT_FALSE(Exists(tree + "/b"));
}

TEST(ComputerControlCommands, CommandOutputAndExitStatus) {
    // Pieces of 128 bytes: one byte more, and embedded NULs, come through whole; only standard
    // output is collected, whatever the exit status.
    bool ok = false;
    EXPECT_EQ(RunCommandOutput("head -c 129 /dev/zero; echo hidden >&2; exit 3", ok), std::string(129, '\0'));
    EXPECT_TRUE(ok);
    EXPECT_EQ(RunShellCommand("kill -KILL $$"), -1);  // ended by a signal
}
