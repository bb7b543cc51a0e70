#include "app/CommandLine.h"

#include "tests/foundation/TraceCapture.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

using Tokens = std::vector<std::string>;

Tokens Split(const std::string& input) { return CStringTokenizer(input, ' ').GetTokens(); }

TEST(StringTokenizer, KeepsLeadingAndInnerEmptyTokensButNoTrailingOne) {
    EXPECT_EQ(Split(""), Tokens{});
    EXPECT_EQ(Split("abc"), Tokens{"abc"});
    EXPECT_EQ(Split("1 7"), (Tokens{"1", "7"}));
    EXPECT_EQ(Split("1  7"), (Tokens{"1", "", "7"}));
    EXPECT_EQ(Split("1 7 "), (Tokens{"1", "7"}));
    EXPECT_EQ(Split("1 7  "), (Tokens{"1", "7", ""}));
    EXPECT_EQ(Split(" 1"), (Tokens{"", "1"}));
    EXPECT_EQ(Split(" "), Tokens{""});
    EXPECT_EQ(Split("   "), (Tokens{"", "", ""}));
    EXPECT_EQ(CStringTokenizer("a,b,,c,", ',').GetTokens(), (Tokens{"a", "b", "", "c"}));
}

TEST(StringTokenizer, IndexPastTheEndGivesOneSharedEmptyString) {
    const CStringTokenizer one("x y", ' ');
    const CStringTokenizer other("", ' ');
    EXPECT_EQ(one.GetTokenCount(), 2u);
    EXPECT_EQ(one.GetToken(1), "y");
    EXPECT_EQ(one.GetToken(2), "");
    EXPECT_EQ(&one.GetToken(2), &other.GetToken(0));
    EXPECT_EQ(&one.GetToken(0xFFFFFFFFu), &other.GetToken(7));
}

TEST(StringTokenizer, WideFormSplitsAlike) {
    const CStringTokenizerW wide(L" 1  \u00e97 ", L' ');
    EXPECT_EQ(wide.GetTokens(), (std::vector<std::wstring>{L"", L"1", L"", L"\u00e97"}));
    EXPECT_EQ(wide.GetToken(9), L"");
    const CTokenStringW separator(L'|');
    EXPECT_EQ(separator, L"|");
    const CTokenString token(std::string("ab"));
    EXPECT_EQ(token.size(), 2u);
}

TEST(StringTokenizer, MegabyteArgumentsSplitInLinearTime) {
    const std::string digits(1 << 20, '7');
    EXPECT_EQ(Split(digits), Tokens{digits});
    const CStringTokenizer blanks(std::string(1 << 20, ' '), ' ');
    EXPECT_EQ(blanks.GetTokenCount(), 1u << 20);
    EXPECT_EQ(blanks.GetToken((1u << 20) - 1), "");
    std::string pairs;
    for (int i = 0; i < (1 << 19); ++i) pairs += "9 ";
    EXPECT_EQ(Split(pairs).size(), 1u << 19);
}

// The rule on a private handler filled the way start-up fills the application-wide one.
eUpdateCommandLineSpecialCmdParamCmd SpecialOf(const std::vector<std::string>& arguments) {
    CCommandLineHandler handler;
    for (const std::string& argument : arguments)
        for (const std::string& token : Split(argument)) handler.AddParameter(token);
    return GetSpecialCommandFromCommandLine(handler);
}

TEST(SpecialCommand, OnlyThePairOneAndNSelectsN) {
    EXPECT_EQ(SpecialOf({}), 0u);
    EXPECT_EQ(SpecialOf({"1 7"}), 7u);
    EXPECT_EQ(SpecialOf({"1", "7"}), 7u);
    EXPECT_EQ(SpecialOf({"1 3"}), 3u);
    EXPECT_EQ(SpecialOf({"1 1"}), 1u);
    EXPECT_EQ(SpecialOf({"1"}), 0u);
    EXPECT_EQ(SpecialOf({"2", "7"}), 0u);
    EXPECT_EQ(SpecialOf({"1", "7", "9"}), 0u);
    EXPECT_EQ(SpecialOf({"1  7"}), 0u);  // three parameters: 1, empty, 7
    EXPECT_EQ(SpecialOf({" 1 7"}), 0u);  // an empty first parameter reads as 0
    EXPECT_EQ(SpecialOf({"1 7 "}), 7u);  // no empty trailing parameter
    EXPECT_EQ(SpecialOf({"", "1", "7"}), 7u);  // an empty argument adds nothing
}

TEST(SpecialCommand, NumbersAreReadAsStrtolReadsThem) {
    EXPECT_EQ(SpecialOf({"01", "1"}), 1u);
    EXPECT_EQ(SpecialOf({"+1", "5"}), 5u);
    EXPECT_EQ(SpecialOf({"1x", "5x"}), 5u);
    EXPECT_EQ(SpecialOf({"\t1", "\n4"}), 4u);
    EXPECT_EQ(SpecialOf({"1", "abc"}), 0u);
    EXPECT_EQ(SpecialOf({"one", "7"}), 0u);
    EXPECT_EQ(SpecialOf({"1.0", "7"}), 7u);
    EXPECT_EQ(SpecialOf({"0x1", "7"}), 0u);
    EXPECT_EQ(SpecialOf({"11", "7"}), 0u);
    EXPECT_EQ(SpecialOf({"-1", "7"}), 0u);
    EXPECT_EQ(SpecialOf({"1", "-1"}), 0xFFFFFFFFu);
    EXPECT_EQ(SpecialOf({"1", "4294967297"}), 1u);  // carried in 32 bits
    // A megabyte of digits overflows without harm.
    EXPECT_EQ(SpecialOf({std::string(1 << 20, '1'), "7"}), 0u);
    (void)SpecialOf({"1", std::string(1 << 20, '9')});
}

TEST(CommandLineHandler, KeepsOrderAndAnswersEmptyPastTheEnd) {
    CCommandLineHandler handler;
    EXPECT_EQ(handler.GetParameterCount(), 0);
    EXPECT_EQ(handler.GetParameter(0), "");
    handler.AddParameter("1");
    handler.AddParameter("");
    const std::string& first = handler.GetParameter(0);
    for (int i = 0; i < 1000; ++i) handler.AddParameter("x");
    EXPECT_EQ(&first, &handler.GetParameter(0));  // adding does not move earlier parameters
    EXPECT_EQ(handler.GetParameterCount(), 1002);
    EXPECT_EQ(handler.GetParameter(1), "");
    EXPECT_EQ(&handler.GetParameter(1002), &handler.GetParameter(5000));
    EXPECT_NE(&handler.GetParameter(1), &handler.GetParameter(5000));
}

TEST(CommandLineHandler, ParameterIsAddedAndLoggedWithItsNumber) {
    CCommandLineHandler* handler = CSingleton<CCommandLineHandler>::GetInstance();
    ASSERT_NE(handler, nullptr);
    const int32_t before = handler->GetParameterCount();
    {
        vtxtest::CTraceCapture capture;
        UpdateProgramCommandLineAddParameter("1 %s %d");
        UpdateProgramCommandLineAddParameter("");
        ASSERT_EQ(capture.Records().size(), 2u);
        const auto& record = capture.Records()[0];
        EXPECT_EQ(record.text, "Param " + std::to_string(before + 1) + ": 1 %s %d\n");
        EXPECT_EQ(record.level, wxLOG_Debug);
        EXPECT_EQ(record.function, "UpdateProgramCommandLineAddParameter");
        EXPECT_EQ(record.module, "Update");
        EXPECT_EQ(capture.Records()[1].text, "Param " + std::to_string(before + 2) + ": \n");
    }
    {
        vtxtest::CTraceCapture capture(wxLOG_Info);
        UpdateProgramCommandLineAddParameter("quiet");
        EXPECT_TRUE(capture.Records().empty());
    }
    EXPECT_EQ(handler->GetParameterCount(), before + 3);
    EXPECT_EQ(handler->GetParameter(static_cast<uint32_t>(before)), "1 %s %d");
    EXPECT_EQ(handler->GetParameter(static_cast<uint32_t>(before + 2)), "quiet");
}

// Start-up on the real, application-wide handler: each case runs in a fresh process, which
// reports the parameters and the special command on stderr.
void StartUp(std::vector<std::string> arguments) {
    std::vector<char*> argv;
    std::string program = "update";
    argv.push_back(&program[0]);
    for (std::string& argument : arguments) argv.push_back(&argument[0]);
    argv.push_back(nullptr);
    AddProgramArguments(static_cast<int>(argv.size()) - 1, argv.data());
    CCommandLineHandler* handler = CSingleton<CCommandLineHandler>::GetInstance();
    std::string report = "count=" + std::to_string(handler->GetParameterCount());
    for (int32_t i = 0; i < handler->GetParameterCount(); ++i)
        report += " [" + handler->GetParameter(static_cast<uint32_t>(i)) + "]";
    report += " special=" + std::to_string(GetSpecialCommandFromCommandLine());
    std::fprintf(stderr, "%s\n", report.c_str());
    std::fflush(stderr);
    std::_Exit(0);
}

TEST(CommandLineDeathTest, StartUpSplitsEveryArgumentAtBlanks) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(StartUp({}), ::testing::ExitedWithCode(0), "count=0 special=0");
    EXPECT_EXIT(StartUp({"1 3"}), ::testing::ExitedWithCode(0),
                "Param 1: 1\n.*Param 2: 3\n.*count=2 \\[1\\] \\[3\\] special=3");
    EXPECT_EXIT(StartUp({"1", "7"}), ::testing::ExitedWithCode(0), "count=2 \\[1\\] \\[7\\] special=7");
    EXPECT_EXIT(StartUp({"1  7"}), ::testing::ExitedWithCode(0), "count=3 \\[1\\] \\[\\] \\[7\\] special=0");
    EXPECT_EXIT(StartUp({"1 7", "9"}), ::testing::ExitedWithCode(0), "count=3 .* special=0");
    EXPECT_EXIT(StartUp({" 1"}), ::testing::ExitedWithCode(0), "count=2 \\[\\] \\[1\\] special=0");
    EXPECT_EXIT(StartUp({"1 ", "", "5"}), ::testing::ExitedWithCode(0), "count=2 \\[1\\] \\[5\\] special=5");
}

}  // namespace
