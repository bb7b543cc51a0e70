#include "log/InstrumentUserLog.h"

#include <gtest/gtest.h>
#include <wx/log.h>

#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "foundation/InstrumentTime.h"

namespace {

class TempFolder {
public:
    TempFolder() {
        std::string pattern = std::string(std::getenv("TMPDIR") ? std::getenv("TMPDIR") : "/tmp") + "/vtxulog.XXXXXX";
        m_path = mkdtemp(&pattern[0]) ? pattern : std::string();
    }
    ~TempFolder() {
        if (!m_path.empty()) std::system(("rm -rf '" + m_path + "'").c_str());
    }
    std::string File(const std::string& name) const { return m_path + "/" + name; }

private:
    std::string m_path;
};

std::string ReadBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// The entry as written at one of the two moments around the call (a minute may turn over).
void ExpectEntry(const std::string& actual, const std::string& before, const std::string& after,
                 const std::string& bodyAfterStamp) {
    if (actual == before + bodyAfterStamp) return;
    EXPECT_EQ(actual, after + bodyAfterStamp);
}

class CCaptureLog : public wxLog {
public:
    std::vector<std::string> messages, files, functions;

protected:
    void DoLogRecord(wxLogLevel level, const wxString& msg, const wxLogRecordInfo& info) override {
        if (level != wxLOG_Debug) return;
        messages.push_back(msg.utf8_string());
        files.push_back(info.filename ? info.filename : "");
        functions.push_back(info.func ? info.func : "");
    }
};

// The debug copies of the entries go to a capture instead of the console.
class UserLog : public ::testing::Test {
protected:
    void SetUp() override {
        m_capture = new CCaptureLog;
        m_previous = wxLog::SetActiveTarget(m_capture);
    }
    void TearDown() override {
        wxLog::FlushActive();  // entries logged by other threads wait for the main thread
        wxLog::SetActiveTarget(m_previous);
        delete m_capture;
    }
    CCaptureLog* m_capture = nullptr;
    wxLog* m_previous = nullptr;
};

TEST_F(UserLog, EntriesAreAppendedWithStampAndCrLf) {
    TempFolder folder;
    const std::string path = folder.File("UserLog.vtx");
    const std::string before = CInstrumentTime::Now().FormatSettings();
    ASSERT_TRUE(AddUserLogEntryToFile(path, "Update started"));
    std::string after = CInstrumentTime::Now().FormatSettings();
    ASSERT_EQ(before.size(), 13u);
    ExpectEntry(ReadBytes(path), before, after, "\tUpdate started\r\n");

    const std::string first = ReadBytes(path);
    const std::string before2 = CInstrumentTime::Now().FormatSettings();
    ASSERT_TRUE(AddUserLogEntryToFile(path, "a\nb"));
    after = CInstrumentTime::Now().FormatSettings();
    const std::string all = ReadBytes(path);
    ASSERT_EQ(all.compare(0, first.size(), first), 0);
    ExpectEntry(all.substr(first.size()), before2, after, "\t--- Multi-line ---\r\n -> a\r\n -> b\r\n");
}

TEST_F(UserLog, LineBreakVariants) {
    TempFolder folder;
    const std::string path = folder.File("u.vtx");
    AddUserLogEntryToFile(path, "one\n");
    AddUserLogEntryToFile(path, "x\r\ny\n\nz");
    AddUserLogEntryToFile(path, "");
    AddUserLogEntryToFile(path, nullptr);
    std::istringstream in(ReadBytes(path));
    std::vector<std::string> tails;
    std::string line;
    while (std::getline(in, line)) {
        ASSERT_FALSE(line.empty());
        ASSERT_EQ(line.back(), '\r');
        line.pop_back();
        const std::string::size_type tab = line.find('\t');
        tails.push_back(tab == std::string::npos ? line : line.substr(tab));
    }
    EXPECT_EQ(tails, (std::vector<std::string>{"\tone", "\t--- Multi-line ---", " -> x", " -> y", " -> z", "\t",
                                               "\t"}));
}

TEST_F(UserLog, UnwritableFileLosesTheEntryQuietly) {
    TempFolder folder;
    EXPECT_FALSE(AddUserLogEntryToFile(folder.File("missing/UserLog.vtx"), "lost"));
    EXPECT_EQ(GetUserLogFilePath(), "/home/vtx/Code/UserLog.vtx");
}

TEST_F(UserLog, EntryAlsoGoesToTheDebugLog) {
    TempFolder folder;
    const wxLogLevel level = wxLog::GetLogLevel();
    wxLog::SetLogLevel(wxLOG_Max);
    AddUserLogEntryToFile(folder.File("u.vtx"), "Upgrade successful");
    wxLog::SetLogLevel(wxLOG_Info);
    AddUserLogEntryToFile(folder.File("u.vtx"), "not traced");
    wxLog::SetLogLevel(level);
    ASSERT_EQ(m_capture->messages.size(), 1u);
    EXPECT_NE(m_capture->messages[0].find("Upgrade successful"), std::string::npos);
    EXPECT_EQ(m_capture->files[0], "InstrumentUserLog");
    EXPECT_EQ(m_capture->functions[0], "AddUserLogEntry");
}

TEST_F(UserLog, EntriesOfManyThreadsNeverInterleave) {
    TempFolder folder;
    const std::string path = folder.File("UserLog.vtx");
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

    std::istringstream in(ReadBytes(path));
    std::vector<std::string> lines;
    std::string line;
    while (std::getline(in, line)) {
        ASSERT_FALSE(line.empty());
        ASSERT_EQ(line.back(), '\r');
        line.pop_back();
        lines.push_back(line);
    }
    std::map<std::string, int> entries;
    for (size_t i = 0; i < lines.size(); ++i) {
        const std::string::size_type tab = lines[i].find('\t');
        ASSERT_EQ(tab, 13u) << lines[i];
        const std::string body = lines[i].substr(tab + 1);
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
