#include "foundation/ProgramCompilationStamp.h"

#include "tests/foundation/TraceCapture.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using Fields = std::vector<int>;

Fields Parse(bool date, const std::string& input, bool* ok = nullptr) {
    int fields[3] = {-1, -1, -1};
    const bool parsed = date ? GetDate(fields, input) : GetTime(fields, input);
    if (ok != nullptr) *ok = parsed;
    return Fields(fields, fields + 3);
}

TEST(ProgramCompilationStamp, ParsesTheCompilerForms) {
    vtxtest::CTraceCapture capture;
    bool ok = false;
    EXPECT_EQ(Parse(false, "14:07:44", &ok), (Fields{14, 7, 44}));
    EXPECT_TRUE(ok);
    EXPECT_EQ(Parse(true, "Oct  2 2017", &ok), (Fields{10, 2, 2017}));
    EXPECT_TRUE(ok);
    EXPECT_EQ(Parse(true, "Oct 02 2017", &ok), (Fields{10, 2, 2017}));
    EXPECT_TRUE(ok);
    const char* months[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    for (int m = 0; m < 12; ++m) EXPECT_EQ(Parse(true, std::string(months[m]) + " 31 1999")[0], m + 1);
    EXPECT_EQ(Parse(false, "99:99:99")[0], 99);  // only the sign is checked

    ASSERT_GE(capture.Records().size(), 2u);
    const auto& first = capture.Records()[0];
    EXPECT_EQ(first.text, "Time 14:07:44");
    EXPECT_EQ(first.level, wxLOG_Debug);
    EXPECT_EQ(first.module, "ProgramCompilationStamp");
    EXPECT_EQ(first.function, "GetTime");
    EXPECT_EQ(capture.Records()[1].text, "Date Oct  2 2017");
    EXPECT_EQ(capture.Records()[1].function, "GetDate");
}

TEST(ProgramCompilationStamp, FailsWithOneTraceAndKeepsEarlierFields) {
    const struct {
        bool date;
        std::string input, trace;
        Fields fields;
    } failures[] = {
        {false, "14:7:44", "bad time length", {-1, -1, -1}},
        {false, "", "bad time length", {-1, -1, -1}},
        {false, std::string(100000, '1'), "bad time length", {-1, -1, -1}},
        {false, "14:0x:44", "BAD char in time item 1", {14, -1, -1}},
        {false, "14: 7:44", "BAD char in time item 1", {14, -1, -1}},
        {false, " 4:07:44", "BAD char in time item 0", {-1, -1, -1}},
        {false, "14:07:-4", "BAD char in time item 2", {14, 7, -1}},
        {true, "oct 02 2017", "BAD date item0", {-1, -1, -1}},
        {true, "OCT 02 2017", "BAD date item0", {-1, -1, -1}},
        {true, "Oct 2 2017", "bad date length", {-1, -1, -1}},
        {true, "Oct  2 20x7", "BAD char in date item 2", {10, 2, -1}},
        {true, "Oct 2  2017", "BAD char in date item 1", {10, -1, -1}},
        {true, "Oct -2 2017", "BAD char in date item 1", {10, -1, -1}},
    };
    for (const auto& f : failures) {
        SCOPED_TRACE(f.input.substr(0, 20));
        vtxtest::CTraceCapture capture;
        bool ok = true;
        EXPECT_EQ(Parse(f.date, f.input, &ok), f.fields);
        EXPECT_FALSE(ok);
        EXPECT_EQ(capture.Texts(), (std::vector<std::string>{(f.date ? "Date " : "Time ") + f.input, f.trace}));
    }
}

}  // namespace
