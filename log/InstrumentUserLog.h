#pragma once
// The user log: an append-only text file of time-stamped entries recording what the user and the
// update procedure did. Safe to call from any thread; one entry is never interleaved with another.

#include <string>

// Appends one entry to the user log (GetUserLogFile). A text with line feeds becomes a "--- Multi-line ---" entry
// with one " -> " line per part. An entry that cannot be written is lost without a report.
void AddUserLogEntry(const char* text);

// The same with another file (the same process-wide lock); false when the file could not be opened or
// the entry was not written whole (a full disk).
bool AddUserLogEntryToFile(const std::string& path, const char* text);
