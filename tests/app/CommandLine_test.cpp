#include "app/CommandLine.h"

#include "tests/foundation/TraceCapture.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

// The tokens as "[a][b]", so that no tokens and one empty token differ.
std::string Split(const std::string& input) {
    const CStringTokenizer tokenizer(input, ' ');
    std::string joined;
    for (const std::string& token : tokenizer.GetTokens()) joined += "[" + token + "]";
    return joined;
}

TEST(StringTokenizer, KeepsLeadingAndInnerEmptyTokensButNoTrailingOne) {
    const struct {
        const char* input;
        const char* tokens;
    } cases[] = {
        {"", ""}, {"1 7 ", "[1][7]"}, {"1  7", "[1][][7]"}, {"1 7  ", "[1][7][]"}, {"   ", "[][][]"}};
    for (const auto& c : cases) EXPECT_EQ(Split(c.input), c.tokens) << '"' << c.input << '"';
    EXPECT_EQ(CStringTokenizerW(L" \u00e97 ", L' ').GetTokens(),
              (std::vector<std::wstring>{L"", L"\u00e97"}));
    // Past the end: one shared empty string, whatever the tokenizer.
    EXPECT_EQ(&CStringTokenizer("x y", ' ').GetToken(2), &CStringTokenizer("", ' ').GetToken(0xFFFFFFFFu));
    EXPECT_EQ(CStringTokenizer(std::string(1 << 20, ' '), ' ').GetTokenCount(), 1u << 20);
}

// The rule on a private handler filled the way start-up fills the application-wide one.
uint32_t SpecialOf(const std::vector<std::string>& arguments) {
    CCommandLineHandler handler;
    for (const std::string& argument : arguments) {
        const CStringTokenizer tokens(argument, ' ');
        for (const std::string& token : tokens.GetTokens()) handler.AddParameter(token);
    }
    return GetSpecialCommandFromCommandLine(handler);
}

TEST(SpecialCommand, NumbersAreReadAsStrtolReadsThem) {
    // The program arguments, separated by "|". Numbers are read as the instrument's 32-bit strtol
    // reads them: beyond its range they saturate, they never wrap round.
    const struct {
        const char* arguments;
        uint32_t special;
    } cases[] = {{"1 7", 7},   {"1  7", 0}, {"+1|5", 5},   {"1x|5x", 5},       {"\t1|\n4", 4},
                 {"0x1|7", 0}, {"-1|7", 0}, {"1|-1", ~0u}, {"1|4294967297", 2147483647u},
                 {"1|-4294967297", 2147483648u}, {"4294967297|1", 0}};
    for (const auto& c : cases)
        EXPECT_EQ(SpecialOf(CStringTokenizer(c.arguments, '|').GetTokens()), c.special) << c.arguments;
    EXPECT_EQ(SpecialOf({std::string(1 << 20, '1'), "7"}), 0u);  // overflows without harm
}

TEST(CommandLineHandler, ParameterIsAddedAndLoggedWithItsNumber) {
    CCommandLineHandler* handler = CSingleton<CCommandLineHandler>::GetInstance();
    const int32_t before = handler->GetParameterCount();
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
    EXPECT_EQ(handler->GetParameter(static_cast<uint32_t>(before)), "1 %s %d");
    EXPECT_EQ(handler->GetParameterCount(), before + 2);
    EXPECT_EQ(&handler->GetParameter(before + 2), &handler->GetParameter(0xFFFFFFFFu));
    EXPECT_EQ(handler->GetParameter(0xFFFFFFFFu), "");
}

}  // namespace
