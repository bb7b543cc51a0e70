#include "log/InstrumentUserLog.h"

#include <mutex>

#include "foundation/DebugTrace.h"
#include "foundation/InstrumentTime.h"
#include "foundation/StringTokenizer.h"
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
    // The framework's splitter: blank lines and carriage returns inside the entry are kept, a
    // line feed at its very end makes no empty last line.
    const CStringTokenizer lines(entry, '\n');
    const std::vector<std::string>& parts = lines.GetTokens();
    if (parts.size() > 1) {
        writer.WriteLine(stamp + "\t--- Multi-line ---");
        for (const std::string& part : parts) writer.WriteLine(" -> " + part);
    } else {
        writer.WriteLine(stamp + "\t" + (parts.empty() ? std::string() : parts.front()));
    }
    writer.Close();
    return true;
}

void AddUserLogEntry(const char* text) { AddUserLogEntryToFile(GetUserLogFile(), text); }
