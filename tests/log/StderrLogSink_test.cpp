#include "log/StderrLogSink.h"

#include "tests/common/TestFiles.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

struct CFileSink : CStderrLogSink {
    explicit CFileSink(int fd) : fd(fd) {}
    int GetDescriptor() const override { return fd; }
    const int fd;
};

// The line's form is read by every end-to-end run (the statuses, the pauses' stamps).
TEST(StderrLogSink, LinesOfManyThreadsNeverMix) {
    vtxtest::CTestFolder folder;
    const int fd = ::open((folder / "log").c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
    ASSERT_GE(fd, 0);
    const auto message = [](int t, int i) {
        return std::to_string(i) + "\n" + std::string(200 + 37 * t, static_cast<char>('a' + t));
    };
    std::multiset<std::string> expected, written;
    {
        CFileSink sink(fd);
        std::vector<std::thread> workers;
        for (int t = 0; t < 8; ++t) {
            workers.emplace_back([t, &message] {
                const CTraceField field("worker" + std::to_string(t));
                for (int i = 0; i < 300; ++i) LogEvent(&field, message(t, i));
            });
            for (int i = 0; i < 300; ++i)
                expected.insert(
                    CStderrLogSink::FormatLine(eLogEvent, "worker" + std::to_string(t), message(t, i)));
        }
        for (auto& w : workers) w.join();
    }
    ::close(fd);
    std::istringstream in(vtxtest::ReadFile(folder / "log"));
    for (std::string line; std::getline(in, line);) written.insert(line + "\n");
    EXPECT_TRUE(written == expected) << written.size() << " lines";
}

}  // namespace
