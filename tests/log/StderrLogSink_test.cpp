#include "log/StderrLogSink.h"

#include "tests/foundation/TestFiles.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

class CFileSink : public CStderrLogSink {
public:
    explicit CFileSink(int fd) : m_fd(fd) {}

protected:
    int GetDescriptor() const override { return m_fd; }

private:
    int m_fd;
};

TEST(StderrLogSink, OneLinePerMessage) {
    EXPECT_EQ(CStderrLogSink::FormatLine(1, "Instrument View", "Could not load settings!"),
              "Error [Instrument View] Could not load settings!\n");
    EXPECT_EQ(CStderrLogSink::FormatLine(8, "", "a\r\nb\nc"), "Data [] a\\r\\nb\\nc\n");
    EXPECT_EQ(CStderrLogSink::FormatLine(42, "S", ""), "Unknown Type [S] \n");
}

TEST(StderrLogSink, LinesOfManyThreadsNeverMix) {
    vtxtest::CTestFolder folder;
    const int fd = ::open((folder / "log").c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
    ASSERT_GE(fd, 0);
    const int threads = 8, perThread = 300;
    {
        CFileSink sink(fd);
        std::vector<std::thread> workers;
        for (int t = 0; t < threads; ++t) {
            workers.emplace_back([t] {
                CTraceField field("worker" + std::to_string(t));
                const std::string filler(200 + 37 * t, static_cast<char>('a' + t));
                for (int i = 0; i < perThread; ++i) LogEvent(&field, std::to_string(i) + "\n" + filler);
            });
        }
        for (auto& w : workers) w.join();
    }
    ::close(fd);

    std::istringstream in(vtxtest::ReadFile(folder / "log"));
    std::set<std::string> seen;
    for (std::string line; std::getline(in, line);) {
        std::istringstream parts(line);
        std::string type, source, body;
        parts >> type >> source >> body;
        ASSERT_EQ(type, "Event") << line;
        const int t = source[7] - '0';
        const std::string expectedTail = "\\n" + std::string(200 + 37 * t, static_cast<char>('a' + t));
        ASSERT_GE(body.size(), expectedTail.size()) << line;
        ASSERT_EQ(body.substr(body.size() - expectedTail.size()), expectedTail) << line;
        seen.insert(source + body.substr(0, body.size() - expectedTail.size()));
    }
    EXPECT_EQ(seen.size(), static_cast<size_t>(threads * perThread));
}

}  // namespace
