#include "log/InstrumentUserLog.h"

#include <mutex>
#include <vector>

#include "foundation/DebugTrace.h"
#include "foundation/InstrumentSettings.h"
#include "foundation/InstrumentTime.h"
#include "foundation/TextFile.h"

namespace {
std::mutex& UserLogMutex() {
    static std::mutex mutex;
    return mutex;
}

// The parts between line feeds; empty parts (a trailing line feed, blank lines) are dropped and
// a CR before a line feed goes with it.
std::vector<std::string> SplitLines(const std::string& text) {
    std::vector<std::string> parts;
    std::string::size_type start = 0;
    while (start <= text.size()) {
        std::string::size_type end = text.find('\n', start);
        if (end == std::string::npos) end = text.size();
        std::string part = text.substr(start, end - start);
        if (!part.empty() && part.back() == '\r') part.pop_back();
        if (!part.empty()) parts.push_back(part);
        start = end + 1;
    }
    return parts;
}
}  // namespace

std::string GetUserLogFilePath() { return GetSettingsCodeFolder() + "/UserLog.vtx"; }

bool AddUserLogEntryToFile(const std::string& path, const char* text) {
    const std::string entry = text ? text : "";
    VtxDebugTrace("InstrumentUserLog", "AddUserLogEntry", "%s", entry.c_str());

    std::lock_guard<std::mutex> lock(UserLogMutex());
    CTextFileWriter writer;
    if (!writer.Open(path, true) && !writer.Open(path, false)) return false;
    const std::string stamp = CInstrumentTime::Now().FormatSettings();
    const std::vector<std::string> parts = SplitLines(entry);
    if (parts.size() > 1) {
        writer.WriteLine(stamp + "\t--- Multi-line ---");
        for (const std::string& part : parts) writer.WriteLine(" -> " + part);
    } else {
        writer.WriteLine(stamp + "\t" + (parts.empty() ? std::string() : parts.front()));
    }
    writer.Close();
    return true;
}

void AddUserLogEntry(const char* text) { AddUserLogEntryToFile(GetUserLogFilePath(), text); }
