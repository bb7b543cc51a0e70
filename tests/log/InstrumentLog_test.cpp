#include "log/InstrumentLog.h"

#include <gtest/gtest.h>

#include <mutex>
#include <string>
#include <vector>

namespace {

class CCaptureSink : public CLogInterface {
public:
    struct Entry {
        int type;
        std::string source;
        int context;
        std::string text;
    };
    void Log(int type, const std::string& source, int context, const std::string& text) override {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_entries.push_back({type, source, context, text});
    }
    void Flush() override {}
    std::vector<Entry> Take() {
        std::lock_guard<std::mutex> lock(m_mutex);
        std::vector<Entry> out;
        out.swap(m_entries);
        return out;
    }

private:
    std::mutex m_mutex;
    std::vector<Entry> m_entries;
};

std::vector<std::string> Texts(const std::vector<CCaptureSink::Entry>& entries) {
    std::vector<std::string> texts;
    for (const auto& e : entries) texts.push_back(e.text);
    return texts;
}

TEST(LogTexts, TypesAndLevels) {
    const char* const expected[] = {"Internal Error", "Error", "Warning", "Message", "Event",
                                    "Program Event", "Trace1", "Trace2", "Data"};
    for (int type = 0; type <= 8; ++type) EXPECT_STREQ(GetLogTypeText(type), expected[type]) << type;
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

    const auto entries = sink.Take();
    ASSERT_EQ(Texts(entries), (std::vector<std::string>{"t1", "t2", "size:12", "e", "explicit", "ie"}));
    EXPECT_EQ(entries[0].type, eLogTrace1);
    EXPECT_EQ(entries[0].context, 4);
    EXPECT_EQ(entries[0].source, "Update");
    EXPECT_EQ(entries[2].type, eLogData);
    EXPECT_EQ(entries[3].type, eLogError);
    EXPECT_EQ(entries[3].context, 9);
    EXPECT_EQ(entries[4].type, eLogTrace2);
    EXPECT_EQ(entries[5].type, eLogInternalError);
    EXPECT_EQ(entries[5].source, "");

    // Every fixed-type function sends its own type.
    LogWarning(&field, "w");
    LogMessage(&field, "m");
    LogEvent(&field, "ev");
    LogProgramEvent(&field, "pe");
    const auto more = sink.Take();
    ASSERT_EQ(more.size(), 4u);
    for (int i = 0; i < 4; ++i) EXPECT_EQ(more[i].type, eLogWarning + i);
}

TEST(ProgramLog, ScopeTracesEnterAndExitFromItsLevel) {
    CCaptureSink sink;
    CTraceField field("View", 1);
    { CLogTraceScope scope(&field, "Draw", eLogTrace1); }
    { CLogTraceScope scope(&field, "Paint", eLogTrace2); }
    { CLogTraceScope scope(&field, "Start", eLogError); }
    { CLogTraceScope scope(nullptr, "Nothing", eLogError); }
    field.SetLevel(3);
    { CLogTraceScope scope(&field, "Data", eLogData); }
    const auto entries = sink.Take();
    EXPECT_EQ(Texts(entries), (std::vector<std::string>{"Draw Enter", "Draw Exit", "Start Enter", "Start Exit",
                                                        "Data Enter", "Data Exit"}));
    EXPECT_EQ(entries[0].type, eLogTrace1);
    EXPECT_EQ(entries[0].context, 0);
    EXPECT_EQ(entries[4].type, eLogData);
}

TEST(ProgramLog, WithoutASinkEverythingIsDropped) {
    {
        CCaptureSink first;
        CCaptureSink second;  // replaces the first
        EXPECT_EQ(CLogInterface::GetCurrent(), &second);
        LogError(nullptr, "to second");
        EXPECT_TRUE(first.Take().empty());
        EXPECT_EQ(second.Take().size(), 1u);
    }
    EXPECT_EQ(CLogInterface::GetCurrent(), nullptr);
    CTraceField field("X", 3);
    LogError(&field, "dropped");
    { CLogTraceScope scope(&field, "dropped", eLogError); }
    LogData(&field, "a", "b");
}

TEST(LogClients, RegisterWithTheLogListAndLogThroughTheirField) {
    CLogList* list = CSingleton<CLogList>::GetInstance();
    ASSERT_NE(list, nullptr);
    const size_t before = list->Count();
    CCaptureSink sink;
    {
        CLogClient client("Settings", 2);
        ASSERT_EQ(list->Count(), before + 1);
        EXPECT_EQ(list->GetItems().back(), &client);
        client.LogTrace2("deep");
        client.LogWarning("careful");
        client.GetTraceField().SetLevel(1);
        client.LogTrace2("hidden");
    }
    EXPECT_EQ(list->Count(), before);
    const auto entries = sink.Take();
    EXPECT_EQ(Texts(entries), (std::vector<std::string>{"deep", "careful"}));
    EXPECT_EQ(entries[0].source, "Settings");
}

}  // namespace
