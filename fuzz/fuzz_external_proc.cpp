// The process runner's command line, through startProc and RunExternalProgram as they are. This
// binary has its own execve, so nothing is ever executed: the child compares the path, the
// argument list and the environment it was handed with what the command line asks for, and fails
// the way a missing program fails when they agree. When they do not, it says what differs on its
// error pipe and ends with kDiffered; where nobody reads its status (RunExternalProgram) it takes
// the fuzzer down with it, so that the input is kept.
//
// Input: one mode byte. Bit 0 clear: the rest up to the first NUL is the command line. Bit 0 set:
// program path and argument text for RunExternalProgram, separated by a NUL.

#include "fuzz/FuzzSupport.h"
#include "update/os/ExternalProc.h"

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

extern char** environ;

namespace {

const int kNotFound = 127;  // what the runner's child ends with when the program cannot be executed
const int kDiffered = 99;

// What the child must be handed; written before the fork, only read in the child.
struct CExpected {
    std::string program;
    std::vector<std::string> arguments;
    std::vector<std::string> inherited;     // the environment of this process
    std::vector<std::string> assignments;   // the last one of each name
    size_t environmentSize = 0;
    bool statusUnread = false;
} g_expected;

// Everything below up to execve runs in the child after fork: no allocation, no locks.
bool Same(const char* actual, const std::string& expected) {
    size_t i = 0;
    for (; i < expected.size(); ++i)
        if (actual[i] != expected[i]) return false;
    return actual[i] == '\0';
}

bool Contains(const std::vector<std::string>& texts, const char* entry) {
    for (const std::string& text : texts)
        if (Same(entry, text)) return true;
    return false;
}

void Report(const char* what) {
    size_t length = 0;
    while (what[length] != '\0') ++length;
    const ssize_t ignored = write(2, what, length);
    (void)ignored;
}

const char* Difference(const char* path, char* const argv[], char* const envp[]) {
    if (!Same(path, g_expected.program)) return "program path\n";
    size_t count = 0;
    for (; argv[count] != nullptr; ++count) {
        if (count >= g_expected.arguments.size() || !Same(argv[count], g_expected.arguments[count]))
            return "argument list\n";
    }
    if (count != g_expected.arguments.size()) return "argument count\n";
    size_t size = 0;
    for (; envp[size] != nullptr; ++size) {
        if (!Contains(g_expected.inherited, envp[size]) && !Contains(g_expected.assignments, envp[size]))
            return "environment entry from nowhere\n";
    }
    if (size != g_expected.environmentSize) return "environment size\n";
    for (const std::string& assignment : g_expected.assignments) {
        bool present = false;
        for (size_t i = 0; i < size && !present; ++i) present = Same(envp[i], assignment);
        if (!present) return "assignment missing\n";
    }
    return nullptr;
}

std::string NameOf(const std::string& assignment) { return assignment.substr(0, assignment.find('=') + 1); }

// The command line read as the runner documents it: blank-separated tokens, leading assignments
// into the environment (a later one of a name replacing an earlier or inherited one), then the
// program path, argument 0 its last component.
void Expect(const std::string& commandLine) {
    g_expected = CExpected();
    for (char** entry = environ; *entry != nullptr; ++entry) g_expected.inherited.emplace_back(*entry);
    std::vector<std::string> tokens;
    for (size_t from = 0; from < commandLine.size();) {
        size_t end = commandLine.find(' ', from);
        if (end == std::string::npos) end = commandLine.size();
        if (end > from) tokens.push_back(commandLine.substr(from, end - from));
        from = end + 1;
    }
    size_t first = 0;
    std::vector<std::string> names;
    for (; first < tokens.size() && tokens[first].find('=') != std::string::npos; ++first) {
        const std::string name = NameOf(tokens[first]);
        bool seen = false;
        for (size_t i = 0; i < names.size() && !seen; ++i) {
            if (names[i] == name) {
                g_expected.assignments[i] = tokens[first];
                seen = true;
            }
        }
        if (!seen) {
            names.push_back(name);
            g_expected.assignments.push_back(tokens[first]);
        }
    }
    size_t fresh = 0;
    for (const std::string& name : names) {
        bool inherited = false;
        for (const std::string& entry : g_expected.inherited) inherited = inherited || entry.compare(0, name.size(), name) == 0;
        if (!inherited) ++fresh;
    }
    g_expected.environmentSize = g_expected.inherited.size() + fresh;
    if (first == tokens.size()) return;
    g_expected.program = tokens[first];
    const size_t slash = tokens[first].rfind('/');
    g_expected.arguments.push_back(slash == std::string::npos ? tokens[first] : tokens[first].substr(slash + 1));
    g_expected.arguments.insert(g_expected.arguments.end(), tokens.begin() + static_cast<std::ptrdiff_t>(first) + 1,
                                tokens.end());
}

void CheckChild(CExternalProc& proc) {
    VTX_FUZZ_CHECK(proc.pid > 0);
    std::string out;
    std::string err;
    VTX_FUZZ_CHECK(readProcOutput(proc, &out, &err));
    waitForCompletion(proc);
    closeProcPipes(proc);
    VTX_FUZZ_CHECK(proc.finished && !stillRunning(proc));
    if (!WIFEXITED(proc.status) || WEXITSTATUS(proc.status) != kNotFound) {
        std::fprintf(stderr, "child status %d, said: %s", proc.status, err.c_str());
        VTX_FUZZ_CHECK(WIFEXITED(proc.status) && WEXITSTATUS(proc.status) == kNotFound);
    }
    VTX_FUZZ_CHECK(out.empty());
    // The child's own trace of the failed start, formatted without allocating.
    const std::string start = g_expected.program + " command not found pid(" + std::to_string(proc.pid) + ") errno(";
    VTX_FUZZ_CHECK(err == start + std::to_string(ENOENT) + ")\n");
}

}  // namespace

// Replaces the C library's for the whole binary: nothing the fuzzer finds is ever run.
extern "C" int execve(const char* path, char* const argv[], char* const envp[]) {
    if (const char* difference = Difference(path, argv, envp)) {
        Report(difference);
        if (g_expected.statusUnread) kill(getppid(), SIGABRT);
        _exit(kDiffered);
    }
    errno = ENOENT;
    return -1;
}

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    vtxfuzz::StartToolkit();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    const std::string rest(reinterpret_cast<const char*>(data) + 1, size - 1);
    const size_t nul = rest.find('\0');
    if ((data[0] & 1) == 0) {
        CExternalProc proc;
        proc.commandLine = rest.substr(0, nul);
        Expect(proc.commandLine);
        startProc(proc);
        CheckChild(proc);
        return 0;
    }
    const std::string program = rest.substr(0, nul);
    std::string arguments = nul == std::string::npos ? std::string() : rest.substr(nul + 1);
    arguments = arguments.substr(0, arguments.find('\0'));
    Expect("\"" + program + "\"" + (arguments.empty() ? "" : " " + arguments));
    g_expected.statusUnread = true;
    RunExternalProgram(true, program, arguments);
    return 0;
}
