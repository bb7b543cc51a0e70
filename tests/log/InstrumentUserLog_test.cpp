#include "log/InstrumentUserLog.h"

#include "foundation/InstrumentTime.h"
#include "tests/common/TestFiles.h"

#include <gtest/gtest.h>
#include <wx/log.h>

#include <sstream>
#include <string>

namespace {

// The file's lines, each CR LF (which every line must have) as "\n", the entries' stamps as "S":
// each stamp must be before or after (a minute may turn over during the writes).
std::string Unstamped(const std::string& path, const std::string& before, const std::string& after) {
    std::istringstream in(vtxtest::ReadFile(path));
    std::string text;
    for (std::string line; std::getline(in, line);) {
        EXPECT_TRUE(!line.empty() && line.back() == '\r') << line;
        if (!line.empty()) line.pop_back();
        if (line.compare(0, 4, " -> ") != 0 && line.compare(0, 13, "01012019 0000") != 0) {
            EXPECT_TRUE(line.compare(0, 13, before) == 0 || line.compare(0, 13, after) == 0) << line;
            line.replace(0, 13, "S");
        }
        text += line + "\n";
    }
    return text;
}

// Without the debug copies of the entries on the console.
class UserLog : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_FALSE(m_folder.Path().empty());
        wxLog::SetLogLevel(wxLOG_Info);
    }
    void TearDown() override { wxLog::SetLogLevel(m_level); }
    vtxtest::CTestFolder m_folder;
    const wxLogLevel m_level = wxLog::GetLogLevel();
};

TEST_F(UserLog, EntriesAreAppendedWithStampAndCrLf) {
    const std::string path = m_folder / "UserLog.vtx";
    ASSERT_TRUE(vtxtest::WriteFile(path, "01012019 0000\told entry\r\n"));
    const std::string before = CInstrumentTime::Now().FormatSettings();
    for (const char* text :
         {"Update started", "a\nb", "one\n", "x\r\ny\n\nz", "", static_cast<const char*>(nullptr)})
        EXPECT_TRUE(AddUserLogEntryToFile(path, text));
    const std::string after = CInstrumentTime::Now().FormatSettings();
    EXPECT_FALSE(AddUserLogEntryToFile(m_folder / "missing/UserLog.vtx", "lost"));
    EXPECT_EQ(Unstamped(path, before, after),
              "01012019 0000\told entry\nS\tUpdate started\nS\t--- Multi-line ---\n -> a\n -> b\n"
              "S\t--- Multi-line ---\n -> one\n -> \n"
              "S\t--- Multi-line ---\n -> x\r\n -> y\n -> \n -> z\nS\t\nS\t\n");
}

}  // namespace
