#include "foundation/DebugTrace.h"

#include <wx/log.h>

#include <cstdarg>
#include <cstdio>
#include <vector>

bool VtxDebugTraceEnabled() {
    return wxLog::IsEnabled() && wxLog::IsLevelEnabled(wxLOG_Debug, wxString());
}

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
    wxLogger(wxLOG_Debug, module, 0, function, wxString()).Log("%s", wxString::FromUTF8(text.data()));
}
