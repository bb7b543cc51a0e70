#include "log/InstrumentLog.h"

#include <gtest/gtest.h>

#include <mutex>
#include <string>
#include <vector>

namespace {

using Entries = std::vector<std::string>;

// Each entry as "type [source] context text".
class CCaptureSink : public CLogInterface {
public:
    void Log(int type, const std::string& source, int context, const std::string& text) override {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_entries.push_back(std::to_string(type) + " [" + source + "] " + std::to_string(context) + " " + text);
    }
    void Flush() override {}
    Entries Take() {
        std::lock_guard<std::mutex> lock(m_mutex);
        Entries out;
        out.swap(m_entries);
        return out;
    }

private:
    std::mutex m_mutex;
    Entries m_entries;
};

TEST(LogTexts, TypesAndLevels) {
    EXPECT_STREQ(GetLogTypeText(0), "Internal Error");
    EXPECT_STREQ(GetLogTypeText(8), "Data");
    EXPECT_STREQ(GetLogTypeText(9), "Unknown Type");
    EXPECT_STREQ(GetLogTypeText(-1), "Unknown Type");
    EXPECT_STREQ(GetTraceLevelText(0), "None");
    EXPECT_STREQ(GetTraceLevelText(3), "All");
    EXPECT_STREQ(GetTraceLevelText(4), "Unknown Type");
    EXPECT_STREQ(GetTraceLevelText(-1), "Unknown Type");
}

TEST(ProgramLog, TracesPassByTheFieldsLevel) {
    CCaptureSink sink;
    CTraceField field("Update", 1);
    LogTrace1(&field, "t1", 4);
    LogTrace2(&field, "t2");
    LogData(&field, "size", "12");
    field.SetLevel(2);
    LogTrace2(&field, "t2");
    LogData(&field, "size", "12");
    field.SetLevel(3);
    LogData(&field, "size", "12");
    field.SetLevel(0);
    LogTrace1(&field, "t1");
    LogError(&field, "e", 9);
    LogWithType(&field, eLogTrace2, "explicit");  // an explicit type always passes
    LogTrace1(nullptr, "null");
    LogInternalError(nullptr, "ie");
    LogWarning(&field, "w");
    LogMessage(&field, "m");
    LogEvent(&field, "ev");
    LogProgramEvent(&field, "pe");
    EXPECT_EQ(sink.Take(), (Entries{"6 [Update] 4 t1", "7 [Update] 0 t2", "8 [Update] 0 size:12", "1 [Update] 9 e",
                                    "7 [Update] 0 explicit", "0 [] 0 ie", "2 [Update] 0 w", "3 [Update] 0 m",
                                    "4 [Update] 0 ev", "5 [Update] 0 pe"}));
}

TEST(ProgramLog, WithoutASinkEverythingIsDropped) {
    {
        CCaptureSink first;
        CCaptureSink second;  // replaces the first
        LogError(nullptr, "to second");
        EXPECT_TRUE(first.Take().empty());
        EXPECT_EQ(second.Take().size(), 1u);
    }
    EXPECT_EQ(CLogInterface::GetCurrent(), nullptr);
    CTraceField field("X", 3);
    LogError(&field, "dropped");
    LogData(&field, "a", "b");
}

}  // namespace
