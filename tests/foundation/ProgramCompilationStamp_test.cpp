#include "foundation/ProgramCompilationStamp.h"

#include "tests/foundation/TraceCapture.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace {

using Texts = std::vector<std::string>;

TEST(ProgramCompilationStamp, ParsesTheCompilerForms) {
    vtxtest::CTraceCapture capture;
    int time[3] = {-1, -1, -1};
    ASSERT_TRUE(GetTime(time, "14:07:44"));
    EXPECT_EQ(time[0], 14);
    EXPECT_EQ(time[1], 7);
    EXPECT_EQ(time[2], 44);

    int date[3] = {-1, -1, -1};
    ASSERT_TRUE(GetDate(date, "Oct  2 2017"));
    EXPECT_EQ(date[0], 10);
    EXPECT_EQ(date[1], 2);
    EXPECT_EQ(date[2], 2017);
    int padded[3] = {-1, -1, -1};
    ASSERT_TRUE(GetDate(padded, "Oct 02 2017"));
    EXPECT_EQ(std::vector<int>(padded, padded + 3), std::vector<int>(date, date + 3));

    const char* months[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    for (int m = 0; m < 12; ++m) {
        ASSERT_TRUE(GetDate(date, std::string(months[m]) + " 31 1999"));
        EXPECT_EQ(date[0], m + 1);
    }
    // Only the sign is checked.
    ASSERT_TRUE(GetTime(time, "99:99:99"));
    EXPECT_EQ(time[0], 99);

    ASSERT_GE(capture.Records().size(), 2u);
    const auto& first = capture.Records()[0];
    EXPECT_EQ(first.text, "Time 14:07:44");
    EXPECT_EQ(first.level, wxLOG_Debug);
    EXPECT_EQ(first.module, "ProgramCompilationStamp");
    EXPECT_EQ(first.function, "GetTime");
    EXPECT_EQ(capture.Records()[1].text, "Date Oct  2 2017");
    EXPECT_EQ(capture.Records()[1].function, "GetDate");
}

struct Failure {
    bool date;
    std::string input;
    std::string trace;
    std::vector<int> fields;  // after the call, starting from -1, -1, -1
};

TEST(ProgramCompilationStamp, FailsWithOneTraceAndKeepsEarlierFields) {
    const std::vector<Failure> failures = {
        {false, "14:7:44", "bad time length", {-1, -1, -1}},
        {false, "", "bad time length", {-1, -1, -1}},
        {false, "14:07:44 ", "bad time length", {-1, -1, -1}},
        {false, "14:0x:44", "BAD char in time item 1", {14, -1, -1}},
        {false, "14: 7:44", "BAD char in time item 1", {14, -1, -1}},
        {false, " 4:07:44", "BAD char in time item 0", {-1, -1, -1}},
        {false, "14:07:-4", "BAD char in time item 2", {14, 7, -1}},
        {true, "oct 02 2017", "BAD date item0", {-1, -1, -1}},
        {true, "OCT 02 2017", "BAD date item0", {-1, -1, -1}},
        {true, "Oct 2 2017", "bad date length", {-1, -1, -1}},
        {true, "Oct  2 20x7", "BAD char in date item 2", {10, 2, -1}},
        {true, "Oct 2  2017", "BAD char in date item 1", {10, -1, -1}},
        {true, "Oct    2017", "BAD char in date item 1", {10, -1, -1}},
        {true, "Oct -2 2017", "BAD char in date item 1", {10, -1, -1}},
    };
    for (const Failure& f : failures) {
        vtxtest::CTraceCapture capture;
        int fields[3] = {-1, -1, -1};
        EXPECT_FALSE(f.date ? GetDate(fields, f.input) : GetTime(fields, f.input)) << f.input;
        EXPECT_EQ(std::vector<int>(fields, fields + 3), f.fields) << f.input;
        const Texts expected = {(f.date ? "Date " : "Time ") + f.input, f.trace};
        EXPECT_EQ(capture.Texts(), expected) << f.input;
    }
}

TEST(ProgramCompilationStamp, TracesOnlyWhenDebugLevelIsEnabled) {
    int fields[3];
    {
        vtxtest::CTraceCapture capture(wxLOG_Info);
        EXPECT_FALSE(GetTime(fields, "bad"));
        EXPECT_TRUE(GetDate(fields, "Jan 01 2000"));
        EXPECT_TRUE(capture.Records().empty());
    }
    {
        vtxtest::CTraceCapture capture;
        wxLogNull off;
        EXPECT_FALSE(GetDate(fields, "bad"));
        EXPECT_TRUE(capture.Records().empty());
    }
}

TEST(ProgramCompilationStamp, TraceOfBytesThatAreNotUtf8KeepsTheLine) {
    vtxtest::CTraceCapture capture;
    int fields[3];
    EXPECT_FALSE(GetTime(fields, "14:\xff\xfe:44"));
    ASSERT_EQ(capture.Records().size(), 2u);
    EXPECT_EQ(capture.Records()[0].text.substr(0, 8), "Time 14:");
    EXPECT_EQ(capture.Records()[1].text, "BAD char in time item 1");
}

TEST(ProgramCompilationStamp, ArbitraryBytesNeverCrash) {
    vtxtest::CTraceCapture capture(wxLOG_Info);  // quiet
    std::mt19937 random(20171002);
    const std::string alphabet = "0123456789 :JanFebOctDec\t-+x";
    for (int round = 0; round < 20000; ++round) {
        std::string input;
        const size_t length = round % 4 == 0 ? (round % 8 == 0 ? 8u : 11u) : random() % 65;
        for (size_t i = 0; i < length; ++i) {
            input += round % 2 ? static_cast<char>(random() % 256)
                               : alphabet[random() % alphabet.size()];
        }
        int time[3] = {0, 0, 0}, date[3] = {0, 0, 0};
        if (GetTime(time, input)) {
            for (int v : time) EXPECT_TRUE(v >= 0 && v <= 99) << input;
        }
        if (GetDate(date, input)) {
            EXPECT_TRUE(date[0] >= 1 && date[0] <= 12) << input;
            EXPECT_TRUE(date[1] >= 0 && date[1] <= 99) << input;
            EXPECT_TRUE(date[2] >= 0 && date[2] <= 9999) << input;
        }
    }
}

TEST(ProgramCompilationStamp, OwnBuildMomentIsParsedAndInThePast) {
    const CProgramCompilationStamp stamp = GetProgramCompilationStamp();
    ASSERT_TRUE(stamp.valid);
    EXPECT_GE(stamp.year, 2024);
    EXPECT_TRUE(stamp.month >= 1 && stamp.month <= 12);
    EXPECT_TRUE(stamp.day >= 1 && stamp.day <= 31);
    const CInstrumentTime built = GetProgramCompilationTime();
    ASSERT_TRUE(built.IsValid());
    EXPECT_EQ(built.GetHour(), stamp.hour);
    EXPECT_FALSE(built > CInstrumentTime::Now() + CInstrumentTimeSpan::Minutes(1));
}

}  // namespace
