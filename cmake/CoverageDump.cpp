// Coverage builds only: the program does not handle SIGTERM, so its coverage counters would be
// lost with every end-to-end run, which ends it that way. This writes them out first and then
// lets the signal do what it always does.
#include <csignal>

extern "C" void __gcov_dump();

namespace {
void DumpAndEnd(int signal) {
    __gcov_dump();
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

const bool g_installed = [] {
    std::signal(SIGTERM, DumpAndEnd);
    return true;
}();
}  // namespace
