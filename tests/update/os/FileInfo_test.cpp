#include "update/os/FileInfo.h"

#include "tests/common/TestFiles.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <set>
#include <string>

using vtxtest::CTestFolder;
using vtxtest::WriteFile;

namespace {

// folder/: a.log b.log c.txt x.log/ link.log -> ../outside dirlink -> sub
//          sub/d.log sub/deeper/e.log sub/deeper/f.txt
class FileScan : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_FALSE(m_root.Path().empty());
        m_folder = m_root / "folder";
        for (const char* sub : {"", "/x.log", "/sub", "/sub/deeper"})
            ASSERT_EQ(mkdir((m_folder + sub).c_str(), 0777), 0) << sub;
        for (const char* file :
             {"/a.log", "/b.log", "/c.txt", "/sub/d.log", "/sub/deeper/e.log", "/sub/deeper/f.txt"})
            ASSERT_TRUE(WriteFile(m_folder + file, "x")) << file;
        ASSERT_TRUE(WriteFile(m_root / "outside", "outside"));
        ASSERT_EQ(symlink("../outside", (m_folder + "/link.log").c_str()), 0);
        ASSERT_EQ(symlink("sub", (m_folder + "/dirlink").c_str()), 0);
    }

    static std::set<std::string> Paths(const CFileInfoArray& files) {
        std::set<std::string> paths;
        for (size_t i = 0; i < files.Count(); ++i) paths.insert(files.GetPath(i));
        return paths;
    }

    CTestFolder m_root;
    std::string m_folder;
};

}  // namespace

TEST_F(FileScan, WhatAPatternTakes) {
    const std::string f = m_folder;
    // One path (AddFile): the first match, when its own type has the regular-file bit; a link
    // has it too, whatever its target is.
    const struct {
        std::string pattern;
        std::string taken;  // empty: refused
    } single[] = {          // clang-format off
        {f + "/x.log", ""}, {f, ""}, {f + "/missing.log", ""}, {"", ""}, {f + "/b.log", f + "/b.log"},
        {f + "/link.log", f + "/link.log"}, {f + "/dirlink", f + "/dirlink"}, {f + "/?.log", f + "/a.log"}};
    // clang-format on
    CFileInfoArray files;
    for (const auto& c : single) {
        const int index = files.AddFile(c.pattern);
        EXPECT_EQ(index < 0 ? "" : files.GetPath(index), c.taken) << c.pattern;
    }
    // A folder (ScanFolder): regular files only, and with recursion every real subfolder; a link
    // to a folder is not followed. Nothing to match is no error.
    const struct {
        std::string folder, pattern;
        bool recursive;
        std::set<std::string> found;
    } scans[] = {// clang-format off
        {f + "/", "*.log", false, {f + "/a.log", f + "/b.log", f + "/link.log"}},
        {f + "/", "*.log", true, {f + "/a.log", f + "/b.log", f + "/link.log", f + "/sub/d.log", f + "/sub/deeper/e.log"}},
        {f + "/", "*.none", true, {}}, {f + "/", "", false, {}}, {m_root / "missing/", "*.log", false, {}}};
    // clang-format on
    for (const auto& c : scans) {
        CFileInfoArray scanned;
        EXPECT_EQ(scanned.ScanFolder(c.folder, c.pattern, c.recursive), static_cast<int>(c.found.size()));
        EXPECT_EQ(Paths(scanned), c.found) << c.folder << c.pattern << c.recursive;
        EXPECT_FALSE(scanned.HadScanError());
    }
}
