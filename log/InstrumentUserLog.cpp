#include "log/InstrumentUserLog.h"

#include <mutex>
#include <string>
#include <vector>

#include "foundation/DebugTrace.h"
#include "foundation/InstrumentTime.h"
#include "foundation/TextFile.h"
#include "update/locations/InstrumentLocations.h"

namespace {
std::mutex& UserLogMutex() {
    static std::mutex mutex;
    return mutex;
}
}  // namespace

bool AddUserLogEntryToFile(const std::string& path, const char* text) {
    const std::string entry = text ? text : "";
    VtxDebugTrace("InstrumentUserLog", "AddUserLogEntry", "%s", entry.c_str());

    std::lock_guard<std::mutex> lock(UserLogMutex());
    CTextFileWriter writer;
    if (!writer.Open(path, true) && !writer.Open(path, false)) return false;
    const std::string stamp = CInstrumentTime::Now().FormatSettings();
    // Split at every line feed: blank lines and carriage returns inside the entry are kept, and
    // a line feed at its very end leaves an empty last line, so any line feed makes the entry a
    // multi-line one.
    std::vector<std::string> parts;
    for (std::string::size_type start = 0;;) {
        const std::string::size_type end = entry.find('\n', start);
        parts.push_back(entry.substr(start, end == std::string::npos ? std::string::npos : end - start));
        if (end == std::string::npos) break;
        start = end + 1;
    }
    // A full disk loses the entry: the caller hears of it.
    bool written = true;
    if (parts.size() > 1) {
        written = writer.WriteLine(stamp + "\t--- Multi-line ---");
        for (const std::string& part : parts) written = writer.WriteLine(" -> " + part) && written;
    } else {
        written = writer.WriteLine(stamp + "\t" + entry);
    }
    return writer.Close() && written;
}

void AddUserLogEntry(const char* text) { AddUserLogEntryToFile(GetUserLogFile(), text); }
