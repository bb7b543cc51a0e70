#include "app/CommandLine.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

// The program arguments (separated by "|" here) split at blanks the way start-up does: the
// parameters as "[a][b]", so that none and one empty parameter differ, and the special command.
std::pair<std::string, uint32_t> Read(const std::string& arguments) {
    CCommandLineHandler handler;
    std::string joined;
    const CStringTokenizer each(arguments, '|');
    for (const std::string& argument : each.GetTokens()) {
        const CStringTokenizer tokens(argument, ' ');
        for (const std::string& token : tokens.GetTokens()) {
            handler.AddParameter(token);
            joined += "[" + token + "]";
        }
    }
    return {joined, GetSpecialCommandFromCommandLine(handler)};
}

TEST(CommandLine, SplittingAndTheSpecialCommand) {
    // Empty parameters are kept at the start and between two blanks, never at the end. Numbers are
    // read as the instrument's 32-bit strtol reads them: beyond its range they saturate.
    const struct {
        const char* arguments;
        const char* parameters;
        uint32_t special;
    } cases[] = {
        // clang-format off
        {"", "", 0}, {"1 7 ", "[1][7]", 7}, {"1  7", "[1][][7]", 0}, {"1 7  ", "[1][7][]", 0}, {"   ", "[][][]", 0},
        {"1", "[1]", 0}, {"1|7|9", "[1][7][9]", 0}, {" 1|7", "[][1][7]", 0}, {"+1|5", "[+1][5]", 5},
        {"1x|5x", "[1x][5x]", 5}, {"\t1|\n4", "[\t1][\n4]", 4}, {"0x1|7", "[0x1][7]", 0}, {"-1|7", "[-1][7]", 0},
        {"1|-1", "[1][-1]", ~0u}, {"1|4294967297", "[1][4294967297]", 2147483647u},
        {"1|-4294967297", "[1][-4294967297]", 2147483648u}, {"4294967297|1", "[4294967297][1]", 0},
        // clang-format on
    };
    for (const auto& c : cases)
        EXPECT_EQ(Read(c.arguments), std::make_pair(std::string(c.parameters), c.special)) << c.arguments;
    EXPECT_EQ(CStringTokenizerW(L" \u00e97 ", L' ').GetTokens(),
              (std::vector<std::wstring>{L"", L"\u00e97"}));
    // Past the end: one shared empty string, whatever the tokenizer.
    EXPECT_EQ(&CStringTokenizer("x y", ' ').GetToken(2), &CStringTokenizer("", ' ').GetToken(0xFFFFFFFFu));
    EXPECT_EQ(Read(std::string(1 << 20, '1') + "|7").second, 0u);  // overflows without harm
}

}  // namespace
