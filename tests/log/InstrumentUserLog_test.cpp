#include "log/InstrumentUserLog.h"

#include "foundation/InstrumentTime.h"
#include "tests/foundation/TestFiles.h"
#include "tests/foundation/TraceCapture.h"

#include <gtest/gtest.h>

#include <map>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

// The lines of the file without their CR LF; every line must have one.
std::vector<std::string> Lines(const std::string& path) {
    std::istringstream in(vtxtest::ReadFile(path));
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);) {
        EXPECT_TRUE(!line.empty() && line.back() == '\r') << line;
        if (!line.empty()) line.pop_back();
        lines.push_back(line);
    }
    return lines;
}

// The debug copies of the entries go to a capture instead of the console.
class UserLog : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_FALSE(m_folder.Path().empty()); }
    void TearDown() override { wxLog::FlushActive(); }  // entries of other threads wait for this one
    vtxtest::CTestFolder m_folder;
    vtxtest::CTraceCapture m_capture;
};

TEST_F(UserLog, EntriesAreAppendedWithStampAndCrLf) {
    const std::string path = m_folder / "UserLog.vtx";
    ASSERT_TRUE(vtxtest::WriteFile(path, "01012019 0000\told entry\r\n"));
    const std::string before = CInstrumentTime::Now().FormatSettings();
    for (const char* text : {"Update started", "a\nb", "one\n", "x\r\ny\n\nz", "", static_cast<const char*>(nullptr)})
        EXPECT_TRUE(AddUserLogEntryToFile(path, text));
    const std::string after = CInstrumentTime::Now().FormatSettings();

    // Stamps are those of one of the two moments around the calls (a minute may turn over).
    std::string text;
    for (std::string line : Lines(path)) {
        if (line.compare(0, 4, " -> ") != 0 && line.compare(0, 13, "01012019 0000") != 0) {
            EXPECT_TRUE(line.compare(0, 13, before) == 0 || line.compare(0, 13, after) == 0) << line;
            line.replace(0, 13, "S");
        }
        text += line + "\n";
    }
    EXPECT_EQ(text,
              "01012019 0000\told entry\nS\tUpdate started\nS\t--- Multi-line ---\n -> a\n -> b\nS\tone\n"
              "S\t--- Multi-line ---\n -> x\r\n -> y\n -> \n -> z\nS\t\nS\t\n");
}

TEST_F(UserLog, EntryAlsoGoesToTheDebugLogAndIsLostQuietlyWhenUnwritable) {
    EXPECT_FALSE(AddUserLogEntryToFile(m_folder / "missing/UserLog.vtx", "lost"));
    AddUserLogEntryToFile(m_folder / "u.vtx", "Upgrade successful");
    wxLog::SetLogLevel(wxLOG_Info);
    AddUserLogEntryToFile(m_folder / "u.vtx", "not traced");
    wxLog::SetLogLevel(wxLOG_Max);
    ASSERT_EQ(m_capture.Records().size(), 2u);
    const auto& record = m_capture.Records()[1];
    EXPECT_NE(record.text.find("Upgrade successful"), std::string::npos);
    EXPECT_EQ(record.level, wxLOG_Debug);
    EXPECT_EQ(record.module, "InstrumentUserLog");
    EXPECT_EQ(record.function, "AddUserLogEntry");
}

TEST_F(UserLog, EntriesOfManyThreadsNeverInterleave) {
    const std::string path = m_folder / "UserLog.vtx";
    const int threads = 8, perThread = 60;
    std::vector<std::thread> workers;
    for (int t = 0; t < threads; ++t) {
        workers.emplace_back([t, &path] {
            for (int i = 0; i < perThread; ++i) {
                const std::string tag = "T" + std::to_string(t) + "E" + std::to_string(i);
                const std::string text =
                    (i % 2) ? tag + " single" : tag + " first\n" + tag + " second\n" + tag + " third";
                AddUserLogEntryToFile(path, text.c_str());
            }
        });
    }
    for (auto& w : workers) w.join();

    const std::vector<std::string> lines = Lines(path);
    std::map<std::string, int> entries;
    for (size_t i = 0; i < lines.size(); ++i) {
        ASSERT_EQ(lines[i].find('\t'), 13u) << lines[i];
        const std::string body = lines[i].substr(14);
        if (body == "--- Multi-line ---") {
            ASSERT_LT(i + 3, lines.size());
            const std::string tag = lines[i + 1].substr(4, lines[i + 1].find(' ', 4) - 4);
            EXPECT_EQ(lines[i + 1], " -> " + tag + " first");
            EXPECT_EQ(lines[i + 2], " -> " + tag + " second");
            EXPECT_EQ(lines[i + 3], " -> " + tag + " third");
            ++entries[tag];
            i += 3;
        } else {
            ASSERT_EQ(body.substr(body.size() - 7), " single") << body;
            ++entries[body.substr(0, body.size() - 7)];
        }
    }
    EXPECT_EQ(entries.size(), static_cast<size_t>(threads * perThread));
    for (const auto& entry : entries) EXPECT_EQ(entry.second, 1) << entry.first;
}

}  // namespace
