#pragma once
// Shared set-up of the fuzz targets. The toolkit's base library is started once; its log stays
// enabled at debug level, so that the debug traces of the code under test are formatted as on the
// instrument, but the records go nowhere. Every toolkit assertion and every failed check is a
// crash that the fuzzer reports with the input that caused it.

#include <wx/init.h>
#include <wx/log.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#define VTX_FUZZ_CHECK(condition) \
    ((condition) ? (void)0 : ::vtxfuzz::Fail(__FILE__, __LINE__, #condition))

namespace vtxfuzz {

[[noreturn]] inline void Fail(const char* file, int line, const char* what) {
    std::fprintf(stderr, "%s:%d: check failed: %s\n", file, line, what);
    std::fflush(stderr);
    std::abort();
}

class CDiscardLog : public wxLog {
protected:
    void DoLogRecord(wxLogLevel, const wxString&, const wxLogRecordInfo&) override {}
};

inline void AbortOnAssert(const wxString& file, int line, const wxString& function, const wxString& condition,
                          const wxString& message) {
    std::fprintf(stderr, "%s:%d: %s: toolkit assertion \"%s\" failed: %s\n", file.utf8_str().data(), line,
                 function.utf8_str().data(), condition.utf8_str().data(), message.utf8_str().data());
    std::fflush(stderr);
    std::abort();
}

inline void StartToolkit() {
    static const bool started = [] {
        wxInitialize();
        delete wxLog::SetActiveTarget(new CDiscardLog);
        wxLog::SetLogLevel(wxLOG_Max);
        wxSetAssertHandler(AbortOnAssert);
        return true;
    }();
    (void)started;
}

// A private folder for the files under test, below $TMPDIR (tools/run-fuzz points that at the
// build folder and removes it afterwards), removed at a normal exit.
inline const std::filesystem::path& TempFolder() {
    // Never destroyed, so that the clean-up at exit still finds it.
    static const std::filesystem::path* const folder = [] {
        const char* base = std::getenv("TMPDIR");
        std::string pattern = std::string(base && *base ? base : "/tmp") + "/vtx-fuzz-XXXXXX";
        if (!mkdtemp(&pattern[0])) Fail(__FILE__, __LINE__, "mkdtemp");
        std::atexit([] {
            std::error_code ignored;
            std::filesystem::remove_all(TempFolder(), ignored);
        });
        return new std::filesystem::path(pattern);
    }();
    return *folder;
}

// Writes the bytes to a file of the private folder and returns its path.
inline std::string PutFile(const char* name, const std::string& bytes) {
    const std::string path = (TempFolder() / name).string();
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    out.close();
    if (!out) Fail(__FILE__, __LINE__, "writing the input file");
    return path;
}

}  // namespace vtxfuzz
