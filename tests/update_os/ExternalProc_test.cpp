#include "update/ExternalProc.h"

#include "tests/update_os/TestFolder.h"

#include <gtest/gtest.h>
#include <wx/log.h>

#include <dirent.h>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>

using vtxtest::CTestFolder;
using vtxtest::ReadFile;

extern char** environ;

namespace {

const char* const kProbeVariable = "VTX_EXTERNALPROC_PROBE";

// When started as the probe, this binary records what it was started with (argument list as the
// kernel passed it, and the variables A and B with how often each is set) and ends before any test
// runs. A shell script cannot do this: the kernel drops argv[0] for scripts.
const bool g_probeDone = [] {
    const char* record = std::getenv(kProbeVariable);
    if (record == nullptr) return false;
    std::ofstream out(record, std::ios::trunc);
    std::ifstream cmdline("/proc/self/cmdline", std::ios::binary);
    std::string argument;
    while (std::getline(cmdline, argument, '\0')) out << "arg:" << argument << "\n";
    for (const char* name : {"A=", "B="}) {
        int count = 0;
        for (char** entry = environ; *entry != nullptr; ++entry) {
            if (std::strncmp(*entry, name, 2) == 0) {
                ++count;
                out << "env:" << *entry << "\n";
            }
        }
        out << "count:" << name << count << "\n";
    }
    out.close();
    _exit(0);
}();

std::string SelfPath() {
    char path[4096];
    const ssize_t length = readlink("/proc/self/exe", path, sizeof path - 1);
    if (length <= 0) return std::string();
    return std::string(path, static_cast<size_t>(length));
}

// Polls until the process has ended, at most ten seconds.
bool EndsWithin(CExternalProc& proc) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (stillRunning(proc)) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

int OpenDescriptorCount() {
    int count = 0;
    if (DIR* dir = opendir("/proc/self/fd")) {
        while (readdir(dir) != nullptr) ++count;
        closedir(dir);
    }
    return count;
}

class ScopedLogLevel {
public:
    explicit ScopedLogLevel(wxLogLevel level) : m_saved(wxLog::GetLogLevel()) { wxLog::SetLogLevel(level); }
    ~ScopedLogLevel() { wxLog::SetLogLevel(m_saved); }

private:
    wxLogLevel m_saved;
};

}  // namespace

TEST(ExternalProc, LeadingAssignmentsGoToTheEnvironment) {
    ASSERT_FALSE(g_probeDone);
    CTestFolder folder;
    const std::string tool = folder / "tool";
    ASSERT_EQ(symlink(SelfPath().c_str(), tool.c_str()), 0);
    const std::string record = folder / "record";
    ASSERT_EQ(setenv(kProbeVariable, record.c_str(), 1), 0);
    unsetenv("A");
    ASSERT_EQ(setenv("B", "inherited", 1), 0);

    CExternalProc proc;
    proc.commandLine = "A=1   B=2 " + tool + " -x  y";
    startProc(proc);
    unsetenv(kProbeVariable);
    unsetenv("B");
    ASSERT_GT(proc.pid, 0);
    std::string out, err;
    EXPECT_TRUE(readProcOutput(proc, &out, &err));
    waitForCompletion(proc);
    closeProcPipes(proc);
    ASSERT_TRUE(proc.finished);
    EXPECT_TRUE(WIFEXITED(proc.status) && WEXITSTATUS(proc.status) == 0) << err;
    // An inherited variable is replaced, not duplicated.
    EXPECT_EQ(ReadFile(record),
              "arg:tool\narg:-x\narg:y\n"
              "env:A=1\ncount:A=1\n"
              "env:B=2\ncount:B=1\n");
}

TEST(ExternalProc, OutputAndErrorComeThroughThePipes) {
    CExternalProc proc;
    proc.commandLine = "  /bin/sh  -c  echo\tout;echo\terr>&2  ";
    // The tab is no separator: sh gets "-c" and one script word.
    startProc(proc);
    std::string out, err;
    EXPECT_TRUE(readProcOutput(proc, &out, &err));
    waitForCompletion(proc);
    closeProcPipes(proc);
    EXPECT_EQ(out, "out\n");
    EXPECT_EQ(err, "err\n");
    EXPECT_EQ(proc.outPipe[0], -1);
    EXPECT_EQ(proc.outPipe[1], -1);
    EXPECT_EQ(proc.errPipe[1], -1);
}

TEST(ExternalProc, MissingProgramEndsWith127) {
    ScopedLogLevel debug(wxLOG_Debug);
    CExternalProc proc;
    proc.commandLine = "/nonexistent/program arg";
    startProc(proc);
    ASSERT_GT(proc.pid, 0);
    ASSERT_TRUE(EndsWithin(proc));
    EXPECT_TRUE(proc.finished);
    EXPECT_FALSE(stillRunning(proc));
    ASSERT_TRUE(WIFEXITED(proc.status));
    EXPECT_EQ(WEXITSTATUS(proc.status), 127);
    std::string err;
    EXPECT_TRUE(readProcOutput(proc, nullptr, &err));
    closeProcPipes(proc);
    EXPECT_EQ(err, "/nonexistent/program command not found pid(" + std::to_string(proc.pid) + ") errno(2)\n");
}

TEST(ExternalProc, WaitingTwiceReturnsAtOnce) {
    CExternalProc proc;
    proc.commandLine = "/bin/sh -c exit\t7";
    startProc(proc);
    waitForCompletion(proc);
    ASSERT_TRUE(proc.finished);
    ASSERT_TRUE(WIFEXITED(proc.status));
    EXPECT_EQ(WEXITSTATUS(proc.status), 7);
    const auto start = std::chrono::steady_clock::now();
    waitForCompletion(proc);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(100));
    EXPECT_EQ(WEXITSTATUS(proc.status), 7);
    EXPECT_FALSE(stillRunning(proc));
    closeProcPipes(proc);
}

TEST(ExternalProc, StillRunningWhileTheProgramRuns) {
    CExternalProc proc;
    proc.commandLine = "/bin/sleep 0.3";
    startProc(proc);
    EXPECT_TRUE(stillRunning(proc));
    EXPECT_FALSE(proc.finished);
    EXPECT_TRUE(EndsWithin(proc));
    EXPECT_TRUE(WIFEXITED(proc.status) && WEXITSTATUS(proc.status) == 0);
    closeProcPipes(proc);
}

TEST(ExternalProc, NeverStartedRecordIsNotWaitedFor) {
    CExternalProc proc;
    waitForCompletion(proc);
    EXPECT_FALSE(proc.finished);
    EXPECT_FALSE(stillRunning(proc));
    proc.pid = -1;
    waitForCompletion(proc);
    EXPECT_FALSE(stillRunning(proc));
}

TEST(ExternalProc, MegabytesOnBothStreamsDoNotBlock) {
    CExternalProc proc;
    proc.commandLine = "/bin/dd if=/dev/zero bs=1048576 count=5";
    startProc(proc);
    std::string out, err;
    EXPECT_TRUE(readProcOutput(proc, &out, &err));
    waitForCompletion(proc);
    closeProcPipes(proc);
    EXPECT_EQ(out.size(), 5u * 1048576u);
    EXPECT_NE(err.find("5242880"), std::string::npos) << err;
    EXPECT_TRUE(WIFEXITED(proc.status) && WEXITSTATUS(proc.status) == 0);
}

TEST(ExternalProc, ChildInheritsNoOtherDescriptors) {
    // A descriptor without close-on-exec at a known number.
    const int stray = fcntl(0, F_DUPFD, 40);
    ASSERT_GE(stray, 40);
    CExternalProc proc;
    proc.commandLine = "/bin/ls /proc/self/fd";
    startProc(proc);
    std::string out;
    EXPECT_TRUE(readProcOutput(proc, &out, nullptr));
    waitForCompletion(proc);
    closeProcPipes(proc);
    close(stray);
    // ls itself holds one descriptor on the folder it lists.
    EXPECT_EQ(out, "0\n1\n2\n3\n");
}

TEST(ExternalProc, ConvenienceRunLeavesNoDescriptorsOpen) {
    const int before = OpenDescriptorCount();
    // The quotes stay part of the path, so this program cannot be found.
    RunExternalProgram(true, "/bin/true", "");
    RunExternalProgram(true, "/bin/echo", "a b");
    EXPECT_EQ(OpenDescriptorCount(), before);
    // Without waiting, the program is still drained and reaped in the background.
    RunExternalProgram(false, "/bin/true", "");
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (OpenDescriptorCount() != before && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    EXPECT_EQ(OpenDescriptorCount(), before);
}
