#include "log/InstrumentLog.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace {

using Entries = std::vector<std::string>;

// Each entry as "type [source] context text"; one thread only.
struct CCaptureSink : CLogInterface {
    void Log(int type, const std::string& source, int context, const std::string& text) override {
        entries.push_back(std::to_string(type) + " [" + source + "] " + std::to_string(context) + " " + text);
    }
    void Flush() override {}
    Entries entries;
};

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
    LogWarning(&field, "w"), LogMessage(&field, "m"), LogEvent(&field, "ev"), LogProgramEvent(&field, "pe");
    // A scope is traced from the level its type needs; without a field never.
    field.SetLevel(1);
    { const CLogTraceScope passes(&field, "s", 6), fails(&field, "f", 7), none(nullptr, "n", 0); }
    EXPECT_EQ(sink.entries,
              (Entries{"6 [Update] 4 t1", "7 [Update] 0 t2", "8 [Update] 0 size:12", "1 [Update] 9 e",
                       "7 [Update] 0 explicit", "0 [] 0 ie", "2 [Update] 0 w", "3 [Update] 0 m",
                       "4 [Update] 0 ev", "5 [Update] 0 pe", "6 [Update] 0 s Enter", "6 [Update] 0 s Exit"}));
    EXPECT_STREQ(GetTraceLevelText(7), "Unknown Type");
}

TEST(ProgramLog, OnlyTheNewestSinkHearsAndNoneOnceOneIsGone) {
    auto first = std::make_unique<CCaptureSink>();
    CCaptureSink second;
    LogError(nullptr, "to second");
    EXPECT_TRUE(first->entries.empty());
    first.reset();  // the older one: the newer one is not heard either from now on
    EXPECT_EQ(CLogInterface::GetCurrent(), nullptr);
    LogError(nullptr, "dropped");
    EXPECT_EQ(second.entries, Entries{"1 [] 0 to second"});
}

}  // namespace
