#include "foundation/DebugTrace.h"

#include "foundation/ByteText.h"

#include <wx/log.h>

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <vector>

bool VtxDebugTraceEnabled() {
    // On its first log question a thread gets the toolkit's per-thread log state, and the very
    // first such thread builds the lock that guards them all, behind a guard compiled into the
    // toolkit. Those first questions are taken one at a time, so every later thread finds that
    // lock fully built (and ThreadSanitizer sees why).
    thread_local bool threadKnown = false;
    if (!threadKnown) {
        static std::mutex firstQuestion;
        const std::lock_guard<std::mutex> lock(firstQuestion);
        wxLog::IsEnabled();
        wxLog::GetComponentLevel(wxASCII_STR(wxLOG_COMPONENT));
        threadKnown = true;
    }
    return wxLog::IsEnabled() && wxLog::IsLevelEnabled(wxLOG_Debug, wxASCII_STR(wxLOG_COMPONENT));
}

// printf-style, as the trace macros call it with the caller's format.
// NOLINTNEXTLINE(cert-dcl50-cpp)
void VtxDebugTrace(const char* module, const char* function, const char* format, ...) {
    if (!VtxDebugTraceEnabled()) return;
    va_list args;
    va_start(args, format);
    va_list copy;
    va_copy(copy, args);
    const int length = std::vsnprintf(nullptr, 0, format, copy);
    va_end(copy);
    std::vector<char> text(length > 0 ? static_cast<size_t>(length) + 1 : 1, '\0');
    if (length > 0) std::vsnprintf(text.data(), text.size(), format, args);
    va_end(args);
    // Traces often show malformed input: bytes that are not UTF-8 are shown one by one rather
    // than losing the whole line.
    const wxString message = TextFromBytes(text.data(), std::strlen(text.data()));
    // The record keeps these pointers (a worker thread's records are flushed later), so they
    // must outlive the call: the component is the toolkit's own, module and function are literals.
    wxLogger(wxLOG_Debug, module, 0, function, wxLOG_COMPONENT).Log("%s", message);
}
