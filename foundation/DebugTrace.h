#pragma once
// Debug traces of the framework go to the toolkit's log at debug level, tagged with the source
// module and the function. They are written only when debug messages are enabled and, from a
// thread other than the main thread, only when thread logging is enabled.

#include <string>

bool VtxDebugTraceEnabled();

// printf-style; the text is formatted only when the trace is enabled. module and function must
// be string literals: the toolkit may keep the pointers until it flushes a worker thread's log.
void VtxDebugTrace(const char* module, const char* function, const char* format, ...)
#if defined(__GNUC__)
    __attribute__((format(printf, 3, 4)))
#endif
    ;
