#include "update/os/ExternalProc.h"

#include "foundation/DebugTrace.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstring>
#include <thread>
#include <vector>

extern char** environ;

namespace {

const char* const kModule = "ExternalProc";

std::vector<char*> PointerList(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (std::string& text : texts) pointers.push_back(&text[0]);
    pointers.push_back(nullptr);
    return pointers;
}

void CloseDescriptor(int& fd) {
    if (fd >= 0) close(fd);
    fd = -1;
}

// Async-signal-safe decimal formatting for the child after fork.
char* AppendNumber(char* at, const char* end, long value) {
    char digits[24];
    int count = 0;
    const bool negative = value < 0;
    unsigned long magnitude = negative ? 0ul - static_cast<unsigned long>(value)
                                       : static_cast<unsigned long>(value);
    do {
        digits[count++] = static_cast<char>('0' + magnitude % 10);
        magnitude /= 10;
    } while (magnitude != 0 && count < 22);
    if (negative && at < end) *at++ = '-';
    while (count > 0 && at < end) *at++ = digits[--count];
    return at;
}

char* AppendText(char* at, const char* end, const char* text) {
    while (*text != '\0' && at < end) *at++ = *text++;
    return at;
}

// Runs in the child between fork and exec: async-signal-safe calls only.
[[noreturn]] void ExecChild(const CExternalProc& proc, const char* program, char* const* argv, char* const* envp,
                            long descriptorLimit, char* message, size_t messageSize) {
    close(proc.outPipe[0]);
    close(proc.errPipe[0]);
    // Move the write ends clear of 0..2 first, so neither dup2 clobbers the other.
    const int out = proc.outPipe[1] < 3 ? fcntl(proc.outPipe[1], F_DUPFD, 3) : proc.outPipe[1];
    const int err = proc.errPipe[1] < 3 ? fcntl(proc.errPipe[1], F_DUPFD, 3) : proc.errPipe[1];
    dup2(out, 1);
    dup2(err, 2);
    if (descriptorLimit >= 4) {
        const unsigned last = descriptorLimit > static_cast<long>(UINT_MAX)
                                  ? UINT_MAX
                                  : static_cast<unsigned>(descriptorLimit - 1);
        if (close_range(3, last, 0) != 0) {
            for (long fd = 3; fd < descriptorLimit; ++fd) close(static_cast<int>(fd));
        }
    }
    execve(program, argv, envp);
    const int error = errno;
    if (message != nullptr) {
        // The message text up to the pid was formatted before the fork.
        const char* end = message + messageSize - 1;
        char* at = message + std::strlen(message);
        at = AppendNumber(at, end, static_cast<long>(getpid()));
        at = AppendText(at, end, ") errno(");
        at = AppendNumber(at, end, error);
        at = AppendText(at, end, ")\n");
        const ssize_t ignored = write(2, message, static_cast<size_t>(at - message));
        (void)ignored;
    }
    _exit(127);
}

}  // namespace

void startProc(CExternalProc& proc) {
    std::vector<std::string> environment;
    for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry)
        environment.emplace_back(*entry);

    std::string program;
    std::vector<std::string> arguments;
    bool programFound = false;
    auto takeToken = [&](const std::string& token) {
        if (!programFound && token.find('=') != std::string::npos) {
            // Appended, not replacing an inherited entry of the same name.
            environment.push_back(token);
        } else if (!programFound) {
            programFound = true;
            program = token;
            const size_t slash = token.rfind('/');
            arguments.push_back(slash == std::string::npos ? token : token.substr(slash + 1));
        } else {
            arguments.push_back(token);
        }
    };
    std::string token;
    for (char c : proc.commandLine) {
        if (c != ' ') {
            token += c;
        } else if (!token.empty()) {
            takeToken(token);
            token.clear();
        }
    }
    if (!token.empty()) takeToken(token);

    // Close-on-exec, so that programs started meanwhile by other threads do not hold our write
    // ends; dup2 in the child clears the flag on descriptors 1 and 2.
    if (pipe2(proc.outPipe, O_CLOEXEC) != 0) {
        VtxDebugTrace(kModule, "startProc", "pipe fail %d", errno);
        proc.outPipe[0] = proc.outPipe[1] = -1;
        return;
    }
    if (pipe2(proc.errPipe, O_CLOEXEC) != 0) {
        VtxDebugTrace(kModule, "startProc", "pipe fail %d", errno);
        proc.errPipe[0] = proc.errPipe[1] = -1;
        return;
    }

    // Everything the child needs is built here: after fork it may not allocate.
    std::vector<char*> argv = PointerList(arguments);
    std::vector<char*> envp = PointerList(environment);
    long descriptorLimit = -1;
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) == 0) {
        descriptorLimit = limit.rlim_cur == RLIM_INFINITY || limit.rlim_cur > static_cast<rlim_t>(LONG_MAX)
                              ? LONG_MAX
                              : static_cast<long>(limit.rlim_cur);
    }
    std::vector<char> message;
    if (VtxDebugTraceEnabled()) {
        const std::string start = program + " command not found pid(";
        message.assign(start.begin(), start.end());
        message.resize(start.size() + 64, '\0');
    }

    const pid_t pid = fork();
    if (pid == 0) {
        ExecChild(proc, program.c_str(), argv.data(), envp.data(), descriptorLimit,
                  message.empty() ? nullptr : message.data(), message.size());
    }
    proc.pid = pid;
    if (pid < 0) VtxDebugTrace(kModule, "startProc", "fork fail %d", errno);

    fcntl(proc.outPipe[0], F_SETFL, fcntl(proc.outPipe[0], F_GETFL) | O_NONBLOCK);
    fcntl(proc.errPipe[0], F_SETFL, fcntl(proc.errPipe[0], F_GETFL) | O_NONBLOCK);
    CloseDescriptor(proc.outPipe[1]);
    CloseDescriptor(proc.errPipe[1]);
}

void waitForCompletion(CExternalProc& proc) {
    if (proc.finished) return;
    if (proc.pid <= 0) {
        // Never started: waiting on 0 or -1 would reap somebody else's child.
        VtxDebugTrace(kModule, "waitForCompletion", "waitpid fail %d", ECHILD);
        return;
    }
    int status = 0;
    pid_t result;
    do {
        result = waitpid(proc.pid, &status, 0);
    } while (result < 0 && errno == EINTR);
    if (result < 0) {
        VtxDebugTrace(kModule, "waitForCompletion", "waitpid fail %d", errno);
        return;
    }
    proc.status = status;
    proc.finished = true;
}

bool stillRunning(CExternalProc& proc) {
    if (proc.finished) return false;
    if (proc.pid <= 0) {
        VtxDebugTrace(kModule, "stillRunning", "waitpid fail %d", ECHILD);
        return false;
    }
    int status = 0;
    pid_t result;
    do {
        result = waitpid(proc.pid, &status, WNOHANG);
    } while (result < 0 && errno == EINTR);
    if (result < 0) {
        VtxDebugTrace(kModule, "stillRunning", "waitpid fail %d", errno);
        return false;
    }
    if (result == 0) return true;
    proc.status = status;
    proc.finished = true;
    return false;
}

bool readProcOutput(CExternalProc& proc, std::string* out, std::string* err) {
    // A program that never started wrote nothing; a start that stopped between the two pipes
    // left the output pipe's write end open here, and reading would wait for ever.
    if (proc.pid <= 0) return true;
    struct Stream {
        int fd;
        std::string* text;
    } streams[2] = {{proc.outPipe[0], out}, {proc.errPipe[0], err}};
    char buffer[65536];
    for (;;) {
        pollfd fds[2];
        Stream* owners[2];
        nfds_t count = 0;
        for (Stream& stream : streams) {
            if (stream.fd < 0) continue;
            fds[count] = pollfd{stream.fd, POLLIN, 0};
            owners[count++] = &stream;
        }
        if (count == 0) return true;
        if (poll(fds, count, -1) < 0) {
            if (errno == EINTR) continue;
            return false;
        }
        for (nfds_t i = 0; i < count; ++i) {
            if (fds[i].revents == 0) continue;
            const ssize_t length = read(fds[i].fd, buffer, sizeof buffer);
            if (length > 0) {
                if (owners[i]->text != nullptr) owners[i]->text->append(buffer, static_cast<size_t>(length));
            } else if (length == 0) {
                owners[i]->fd = -1;  // the program closed its end
            } else if (errno != EAGAIN && errno != EWOULDBLOCK && errno != EINTR) {
                return false;
            }
        }
    }
}

void closeProcPipes(CExternalProc& proc) {
    // The write ends are still open only when the start stopped between the two pipes.
    for (int* pipe : {proc.outPipe, proc.errPipe}) {
        CloseDescriptor(pipe[0]);
        CloseDescriptor(pipe[1]);
    }
}

void RunExternalProgram(bool wait, const std::string& programPath, const std::string& arguments) {
    CExternalProc proc;
    proc.commandLine = "\"" + programPath + "\"";
    if (!arguments.empty()) proc.commandLine += " " + arguments;
    startProc(proc);
    // Nobody reads the program's output: drain it, so the program never blocks on a full pipe,
    // and reap it. Without waiting, a detached thread does that.
    auto finish = [](CExternalProc started) {
        readProcOutput(started, nullptr, nullptr);
        waitForCompletion(started);
        closeProcPipes(started);
    };
    if (wait) {
        finish(proc);
    } else if (proc.pid > 0) {
        std::thread(finish, proc).detach();
    } else {
        closeProcPipes(proc);
    }
}
