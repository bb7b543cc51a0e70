#include "update/os/ExternalProc.h"

#include "tests/foundation/TestFiles.h"

#include <gtest/gtest.h>
#include <wx/log.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <string>
#include <thread>

namespace {

// Starts the command, collects both streams, waits and closes the pipes; the exit code, or -1
// when the program did not exit normally.
int RunToEnd(const std::string& commandLine, std::string* out, std::string* err,
             CExternalProc* record = nullptr) {
    CExternalProc local;
    CExternalProc& proc = record != nullptr ? *record : local;
    proc.commandLine = commandLine;
    startProc(proc);
    EXPECT_TRUE(readProcOutput(proc, out, err));
    waitForCompletion(proc);
    closeProcPipes(proc);
    EXPECT_TRUE(proc.finished);
    return WIFEXITED(proc.status) ? WEXITSTATUS(proc.status) : -1;
}

// Polls until the process has ended, at most a minute.
bool EndsWithin(CExternalProc& proc) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (stillRunning(proc)) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

}  // namespace

TEST(ExternalProc, LeadingAssignmentsGoToTheEnvironment) {
    // The shell under another name records the argument list and the environment exactly as the
    // kernel passed them.
    vtxtest::CTestFolder folder;
    ASSERT_EQ(symlink("/bin/sh", (folder / "tool").c_str()), 0);
    const std::string record = folder / "record";
    ASSERT_TRUE(vtxtest::WriteScript(
        folder / "probe", "tr '\\0' '\\n' < /proc/$$/cmdline > '" + record +
                              "'\ntr '\\0' '\\n' < /proc/$$/environ | grep -E '^(A|B)=' >> '" + record +
                              "'\n"));
    unsetenv("A");
    ASSERT_EQ(setenv("B", "inherited", 1), 0);
    std::string err;
    const int code =
        RunToEnd("A=1   B=2 " + (folder / "tool") + " " + (folder / "probe") + " -x  y", nullptr, &err);
    unsetenv("B");
    EXPECT_EQ(code, 0) << err;
    // Appended after the inherited environment; an inherited variable of the same name stays.
    EXPECT_EQ(vtxtest::ReadFile(record), "tool\n" + (folder / "probe") + "\n-x\ny\nB=inherited\nA=1\nB=2\n");
}

TEST(ExternalProc, OutputAndErrorComeThroughThePipes) {
    CExternalProc proc;
    std::string out, err;
    // The tab is no separator: sh gets "-c" and one script word.
    EXPECT_EQ(RunToEnd("  /bin/sh  -c  echo\tout;echo\terr>&2;exit\t7  ", &out, &err, &proc), 7);
    EXPECT_EQ(out, "out\n");
    EXPECT_EQ(err, "err\n");
    EXPECT_EQ(proc.outPipe[0], -1);
    EXPECT_EQ(proc.outPipe[1], -1);
    EXPECT_EQ(proc.errPipe[1], -1);

    // Megabytes on both streams do not block.
    out.clear();
    err.clear();
    EXPECT_EQ(RunToEnd("/bin/dd if=/dev/zero bs=1048576 count=5", &out, &err), 0);
    EXPECT_EQ(out.size(), 5u * 1048576u);
    EXPECT_NE(err.find("5242880"), std::string::npos) << err;

    // A program that is not there: the child says so on the error pipe and ends with 127.
    const wxLogLevel level = wxLog::GetLogLevel();
    wxLog::SetLogLevel(wxLOG_Debug);
    CExternalProc missing;
    err.clear();
    EXPECT_EQ(RunToEnd("/nonexistent/program arg", nullptr, &err, &missing), 127);
    wxLog::SetLogLevel(level);
    EXPECT_EQ(err, "/nonexistent/program command not found pid(" + std::to_string(missing.pid) + ") errno(2)\n");
}

TEST(ExternalProc, StillRunningAndWaitingFollowTheProgramsEnd) {
    // The program runs until the test opens the fifo for writing: no race with its end.
    vtxtest::CTestFolder folder;
    const std::string fifo = folder / "release";
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    CExternalProc proc;
    proc.commandLine = "/bin/sh -c exec<" + fifo;
    startProc(proc);
    EXPECT_TRUE(stillRunning(proc));
    // A record known to have ended is not waited for again; this one would block for good.
    CExternalProc ended = proc;
    ended.finished = true;
    waitForCompletion(ended);
    EXPECT_FALSE(stillRunning(ended));
    close(open(fifo.c_str(), O_WRONLY));
    EXPECT_TRUE(EndsWithin(proc));
    EXPECT_TRUE(WIFEXITED(proc.status) && WEXITSTATUS(proc.status) == 0);
    closeProcPipes(proc);

    // A record that never started is never waited for (waitpid with 0 or -1 would reap another).
    for (int32_t pid : {0, -1}) {
        CExternalProc never;
        never.pid = pid;
        waitForCompletion(never);
        EXPECT_FALSE(never.finished);
        EXPECT_FALSE(stillRunning(never));
    }
}

TEST(ExternalProc, ChildInheritsNoOtherDescriptors) {
    // A descriptor without close-on-exec at a known number.
    const int stray = fcntl(0, F_DUPFD, 40);
    ASSERT_GE(stray, 40);
    std::string out;
    RunToEnd("/bin/ls /proc/self/fd", &out, nullptr);
    close(stray);
    // ls itself holds one descriptor on the folder it lists.
    EXPECT_EQ(out, "0\n1\n2\n3\n");
}

TEST(ExternalProc, ConvenienceRunnerLeavesNoDescriptorAndNoChild) {
    const auto openDescriptors = [] {
        return std::distance(std::filesystem::directory_iterator("/proc/self/fd"),
                             std::filesystem::directory_iterator{});
    };
    const auto before = openDescriptors();
    // The quotes around the path become part of it, so the child only reports "not found".
    RunExternalProgram(true, "/bin/true", "-x");
    EXPECT_EQ(openDescriptors(), before);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);  // reaped
}
