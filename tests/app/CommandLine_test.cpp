#include "app/CommandLine.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

// How arguments split at blanks and give the special command is fuzz_command_line's oracle, run
// over its seeds (fuzz/corpus/command_line) and whatever it generates. Here what it cannot see.
TEST(CommandLine, WideTokensAndTheTokenPastTheEnd) {
    EXPECT_EQ(CStringTokenizerW(L" \u00e97 ", L' ').GetTokens(), (std::vector<std::wstring>{L"", L"\u00e97"}));
    // Past the end: one shared empty string, whatever the tokenizer.
    EXPECT_EQ(&CStringTokenizer("x y", ' ').GetToken(2), &CStringTokenizer("", ' ').GetToken(0xFFFFFFFFu));
}

}  // namespace
