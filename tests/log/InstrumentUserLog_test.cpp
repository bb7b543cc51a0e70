#include "log/InstrumentUserLog.h"

#include "foundation/InstrumentTime.h"
#include "tests/common/TestFiles.h"

#include <gtest/gtest.h>
#include <wx/log.h>

#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

// The file's lines, each CR LF (which every line must have) as "\n", the entries' stamps as "S":
// unless empty, each stamp must be before or after (a minute may turn over during the writes).
std::string Unstamped(const std::string& path, const std::string& before, const std::string& after) {
    std::istringstream in(vtxtest::ReadFile(path));
    std::string text;
    for (std::string line; std::getline(in, line);) {
        EXPECT_TRUE(!line.empty() && line.back() == '\r') << line;
        if (!line.empty()) line.pop_back();
        if (line.compare(0, 4, " -> ") != 0 && line.compare(0, 13, "01012019 0000") != 0) {
            EXPECT_TRUE(before.empty() || line.compare(0, 13, before) == 0 || line.compare(0, 13, after) == 0)
                << line;
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

TEST_F(UserLog, EntriesOfManyThreadsNeverInterleave) {
    const std::string path = m_folder / "UserLog.vtx";
    const auto tag = [](int t, int i) { return "T" + std::to_string(t) + "E" + std::to_string(i); };
    std::vector<std::thread> workers;
    for (int t = 0; t < 8; ++t) {
        workers.emplace_back([t, &path, &tag] {
            for (int i = 0; i < 60; ++i) {
                const std::string x = tag(t, i);
                AddUserLogEntryToFile(
                    path, (i % 2 ? x + " single" : x + " first\n" + x + " second\n" + x + " third").c_str());
            }
        });
    }
    for (auto& w : workers) w.join();

    // Every entry is there whole; together they are the whole file.
    const std::string text = Unstamped(path, "", "");
    size_t total = 0;
    for (int t = 0; t < 8; ++t) {
        for (int i = 0; i < 60; ++i) {
            const std::string x = tag(t, i);
            const std::string entry = i % 2 ? "S\t" + x + " single\n"
                                            : "S\t--- Multi-line ---\n -> " + x + " first\n -> " + x +
                                                  " second\n -> " + x + " third\n";
            EXPECT_NE(text.find(entry), std::string::npos) << entry;
            total += entry.size();
        }
    }
    EXPECT_EQ(text.size(), total);
}

}  // namespace
