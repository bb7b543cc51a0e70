#pragma once
// Shared set-up of the fuzz targets. Every failed check and every toolkit assertion is a crash
// that the fuzzer reports with the input that caused it.

#include <unistd.h>
#include <wx/init.h>
#include <wx/log.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#define VTX_FUZZ_CHECK(condition) ((condition) ? (void)0 : ::vtxfuzz::Fail(__FILE__, __LINE__, #condition))

namespace vtxfuzz {

[[noreturn]] inline void Fail(const char* file, int line, const char* what) {
    std::fprintf(stderr, "%s:%d: check failed: %s\n", file, line, what);
    std::abort();
}

// Every target starts the toolkit's base library, with its log at debug level so that the traces
// of the code under test are formatted as on the instrument, and then dropped.
struct CDiscardLog : wxLog {
    void DoLogRecord(wxLogLevel, const wxString&, const wxLogRecordInfo&) override {}
};
inline const bool g_toolkitStarted = [] {
    wxInitialize();
    delete wxLog::SetActiveTarget(new CDiscardLog);
    wxLog::SetLogLevel(wxLOG_Max);
    wxSetAssertHandler([](const wxString& file, int line, const wxString&, const wxString& what,
                          const wxString&) { Fail(file.utf8_str().data(), line, what.utf8_str().data()); });
    return true;
}();

// A file of this process under $TMPDIR (tools/run-fuzz gives each round a folder of its own).
inline std::string FilePath(const char* name) {
    const char* base = std::getenv("TMPDIR");
    return std::string(base && *base ? base : "/tmp") + "/vtx-fuzz-" + std::to_string(getpid()) + "-" + name;
}
inline std::string PutFile(const char* name, const std::string& bytes) {
    std::ofstream out(FilePath(name), std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    out.close();
    VTX_FUZZ_CHECK(out.good());
    return FilePath(name);
}

}  // namespace vtxfuzz
