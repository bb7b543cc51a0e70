#include "log/StderrLogSink.h"

#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "update/ConsoleLines.h"

CStderrLogSink::CStderrLogSink(bool stamped) : m_stamped(stamped) {}
CStderrLogSink::~CStderrLogSink() = default;

std::string CStderrLogSink::FormatLine(int type, const std::string& source, const std::string& text) {
    std::string line = GetLogTypeText(type);
    line += " [";
    line += source;
    line += "] ";
    line.reserve(line.size() + text.size() + 8);
    for (char c : text) {
        if (c == '\r') {
            line += "\\r";
        } else if (c == '\n') {
            line += "\\n";
        } else {
            line += c;
        }
    }
    line += '\n';
    return line;
}

void CStderrLogSink::Log(int type, const std::string& source, int, const std::string& text) {
    std::string line = FormatLine(type, source, text);
    if (m_stamped) {
        timespec now{};
        clock_gettime(CLOCK_MONOTONIC, &now);
        char stamp[64];
        std::snprintf(stamp, sizeof stamp, "%s%lld.%09ld ", NS_ConsoleLines::kStamp,
                      static_cast<long long>(now.tv_sec), now.tv_nsec);
        line.insert(0, stamp);
    }
    const int fd = GetDescriptor();
    // Unbuffered: a line written by one write() is never split by another thread's line. Only a
    // partial write (a full pipe, a signal) continues with the rest.
    const char* data = line.data();
    size_t left = line.size();
    while (left > 0) {
        const ssize_t written = ::write(fd, data, left);
        if (written < 0) {
            if (errno == EINTR) continue;
            return;
        }
        data += written;
        left -= static_cast<size_t>(written);
    }
}

void CStderrLogSink::Flush() {}

int CStderrLogSink::GetDescriptor() const { return STDERR_FILENO; }
