#include "update/os/ExternalProc.h"

#include "tests/common/TestFiles.h"

#include <gtest/gtest.h>
#include <wx/log.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <iterator>
#include <string>
#include <thread>

namespace {

// Starts the command, collects both streams, waits and closes the pipes; the exit code, or -1
// when the program did not exit normally.
int RunToEnd(CExternalProc& proc, const std::string& commandLine, std::string* out, std::string* err) {
    proc.commandLine = commandLine;
    startProc(proc);
    EXPECT_TRUE(readProcOutput(proc, out, err));
    waitForCompletion(proc);
    closeProcPipes(proc);
    EXPECT_TRUE(proc.finished && proc.outPipe[0] == -1 && proc.errPipe[0] == -1);
    return WIFEXITED(proc.status) ? WEXITSTATUS(proc.status) : -1;
}

}  // namespace

// What docs/maintainer/deliberate-choices.md promises: the child is reaped, and only when it is ours.
TEST(ExternalProc, TheChildIsReapedOnlyWhenItIsOurs) {
    // Leading assignments go to the environment; the tab is no separator, so sh gets "-c" and one
    // script word; argument 0 is the path's last component.
    CExternalProc proc, missing;
    std::string out, err;
    EXPECT_EQ(RunToEnd(proc, "A=1   /bin/sh  -c  echo\t$0\t$A;echo\terr>&2;exit\t7  ", &out, &err), 7);
    EXPECT_EQ(out + err, "sh 1\nerr\n");
    // A program that is not there: the child says so on the error pipe and ends with 127.
    const wxLogLevel level = wxLog::GetLogLevel();
    wxLog::SetLogLevel(wxLOG_Debug);
    err.clear();
    EXPECT_EQ(RunToEnd(missing, "/nonexistent/program arg", nullptr, &err), 127);
    wxLog::SetLogLevel(level);
    EXPECT_EQ(err, "/nonexistent/program command not found pid(" + std::to_string(missing.pid) + ") errno(2)\n");

    // Running until the test opens the fifo for writing: no race with its end.
    vtxtest::CTestFolder folder;
    ASSERT_EQ(mkfifo((folder / "release").c_str(), 0600), 0);
    CExternalProc waiting;
    waiting.commandLine = "/bin/sh -c exec<" + (folder / "release");
    startProc(waiting);
    EXPECT_TRUE(stillRunning(waiting));
    close(open((folder / "release").c_str(), O_WRONLY));
    for (int polls = 0; stillRunning(waiting) && polls < 12000; ++polls)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    EXPECT_TRUE(waiting.finished && WIFEXITED(waiting.status) && WEXITSTATUS(waiting.status) == 0);
    waitForCompletion(waiting);  // known to have ended: not waited for again, which would block
    closeProcPipes(waiting);

    // A record that never started is never waited for (waitpid with 0 or -1 would reap another).
    for (int32_t pid : {0, -1}) {
        CExternalProc never;
        never.pid = pid;
        waitForCompletion(never);
        EXPECT_FALSE(never.finished || stillRunning(never));
    }
}

TEST(ExternalProc, NoDescriptorReachesTheChildOrStaysOpenAndNoChildIsLeft) {
    const int stray = fcntl(0, F_DUPFD, 40);  // without close-on-exec, at a known number
    ASSERT_GE(stray, 40);
    CExternalProc ls;
    std::string out;
    RunToEnd(ls, "/bin/ls /proc/self/fd", &out, nullptr);
    close(stray);
    EXPECT_EQ(out, "0\n1\n2\n3\n");  // ls itself holds one descriptor on the folder it lists

    const auto openDescriptors = [] {
        return std::distance(std::filesystem::directory_iterator("/proc/self/fd"),
                             std::filesystem::directory_iterator{});
    };
    const auto before = openDescriptors();
    RunExternalProgram(true, "/bin/true", "-x");  // the quotes make the path one that is not found
    EXPECT_EQ(openDescriptors(), before);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);  // reaped
}
