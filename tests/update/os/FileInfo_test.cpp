#include "update/os/FileInfo.h"

#include "tests/foundation/TestFiles.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <set>
#include <string>

using vtxtest::CTestFolder;
using vtxtest::WriteFile;

namespace {

// folder/
//   a.log b.log (mtime 1551776400 and 1551780000), c.txt, x.log/ (a folder),
//   link.log -> ../outside (a link to a file elsewhere), dirlink -> sub,
//   sub/d.log, sub/deeper/e.log, sub/deeper/f.txt
class FileScan : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_FALSE(m_root.Path().empty());
        m_folder = m_root / "folder";
        for (const char* sub : {"", "/x.log", "/sub", "/sub/deeper"})
            ASSERT_EQ(mkdir((m_folder + sub).c_str(), 0777), 0) << sub;
        for (const char* file : {"/a.log", "/b.log", "/c.txt", "/sub/d.log", "/sub/deeper/e.log", "/sub/deeper/f.txt"})
            ASSERT_TRUE(WriteFile(m_folder + file, file[1] == 'b' ? "bravo-bravo" : "x")) << file;
        ASSERT_TRUE(WriteFile(m_root / "outside", "outside"));
        ASSERT_EQ(symlink("../outside", (m_folder + "/link.log").c_str()), 0);
        ASSERT_EQ(symlink("sub", (m_folder + "/dirlink").c_str()), 0);
        SetModificationTime(m_folder + "/a.log", 1551776400);
        SetModificationTime(m_folder + "/b.log", 1551780000);
    }

    static void SetModificationTime(const std::string& path, time_t seconds) {
        timespec times[2] = {{seconds, 0}, {seconds, 0}};
        ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
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

TEST_F(FileScan, AddFileTakesRegularFilesAndLinksOnly) {
    CFileInfoArray files;
    EXPECT_EQ(files.AddFile(m_folder + "/x.log"), -1);
    EXPECT_EQ(files.AddFile(m_folder), -1);
    EXPECT_EQ(files.AddFile(m_folder + "/missing.log"), -1);
    EXPECT_EQ(files.AddFile(""), -1);
    EXPECT_EQ(files.Count(), 0u);

    EXPECT_EQ(files.AddFile(m_folder + "/b.log"), 0);
    // A link is judged by its own type, whatever its target is.
    EXPECT_EQ(files.AddFile(m_folder + "/link.log"), 1);
    EXPECT_EQ(files.AddFile(m_folder + "/dirlink"), 2);
    // A pattern takes its first match only.
    EXPECT_EQ(files.AddFile(m_folder + "/?.log"), 3);
    EXPECT_EQ(files.GetPath(3), m_folder + "/a.log");
    EXPECT_EQ(files.Count(), 4u);
}

TEST_F(FileScan, RecordHoldsTheWriteTimeInMillisecondsAndTheSize) {
    CFileInfoArray files;
    ASSERT_EQ(files.AddFile(m_folder + "/b.log"), 0);
    const CFileInfo* info = files.Get(0);
    ASSERT_NE(info, nullptr);
    EXPECT_EQ(info->GetPath(), m_folder + "/b.log");
    EXPECT_EQ(info->GetSize(), 11u);
    EXPECT_EQ(info->GetLastWriteTime().GetValue(), wxLongLong(1551780000LL * 1000));
    // The link's own size (its target text), not the target file's.
    ASSERT_EQ(files.AddFile(m_folder + "/link.log"), 1);
    EXPECT_EQ(files.Get(1)->GetSize(), std::string("../outside").size());
}

TEST_F(FileScan, FlatScanListsOnlyDirectLogFiles) {
    CFileInfoArray files;
    EXPECT_EQ(files.ScanFolder(m_folder + "/", "*.log", false), 3);
    EXPECT_EQ(Paths(files), (std::set<std::string>{m_folder + "/a.log", m_folder + "/b.log", m_folder + "/link.log"}));
}

TEST_F(FileScan, NothingToMatchIsNoError) {
    CFileInfoArray files;
    EXPECT_EQ(files.ScanFolder(m_folder + "/", "*.none", true), 0);
    EXPECT_EQ(files.ScanFolder(m_folder + "/", "", false), 0);
    EXPECT_EQ(files.ScanFolder(m_root / "missing/", "*.log", false), 0);
    EXPECT_EQ(files.Count(), 0u);
}

TEST_F(FileScan, OutOfRangeIndexGivesTheSharedInvalidTimeAndClearRestarts) {
    CFileInfoArray files;
    ASSERT_EQ(files.ScanFolder(m_folder + "/", "*.log", false), 3);
    const wxDateTime& invalid = files.GetLastWriteTime(5);
    EXPECT_FALSE(invalid.IsValid());
    CFileInfoArray other;
    EXPECT_EQ(&other.GetLastWriteTime(0), &invalid);
    EXPECT_EQ(files.GetPath(3), "");
    EXPECT_EQ(files.Get(3), nullptr);
    files.Clear();
    EXPECT_EQ(files.Count(), 0u);
    EXPECT_EQ(files.Get(0), nullptr);
    EXPECT_EQ(files.AddFile(m_folder + "/a.log"), 0);
}
