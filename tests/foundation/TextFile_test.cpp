#include "foundation/TextFile.h"

#include "tests/common/TestFiles.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

using namespace std::string_literals;
using vtxtest::WriteFile;

namespace {

TEST(TextFile, ReaderLineEnds) {
    const std::string nine(9, 'x');  // a buffer of 10 holds 9 characters
    const struct {
        std::string bytes;
        uint32_t buffer;
        std::vector<std::string> lines;
    } cases[] = {
        {"one\ntwo\r\n\r\n\nlast", 1000, {"one", "two", "", "", "last"}},
        {"ab\0cd\r\nnext\r\n"s, 1000, {"ab", "next"}},  // a NUL cuts the line
        // The second line fills the buffer, so its CR stays outside and makes an empty line.
        {nine + "\n" + nine + "\r\n", 10, {nine, nine, ""}},
        // A longer line comes in pieces, none of it lost.
        {nine + nine + "xx\r\nafter", 10, {nine, nine, "xx", "after"}},
    };  // that reading ends, on any file, with nothing more to read is fuzz_text_file's
    const vtxtest::CTestFolder folder;
    const std::string path = folder / "lines.txt";
    CTextFileReader reused(1000);  // reopening a used reader starts afresh
    for (const auto& c : cases) {
        SCOPED_TRACE(c.bytes);
        WriteFile(path, c.bytes);
        CTextFileReader reader(c.buffer);
        CTextFileReader& used = c.buffer == 1000 ? reused : reader;
        ASSERT_TRUE(used.Open(path));
        std::vector<std::string> lines;
        while (!used.IsEof() && lines.size() < 100) lines.push_back(used.ReadLine());
        EXPECT_EQ(lines, c.lines);
    }
}

TEST(TextFile, AFailedOpenIsNoEndOfFile) {
    CTextFileReader reader(1000);
    EXPECT_FALSE(reader.Open("/nonexistent/missing.txt"));
    EXPECT_FALSE(reader.IsEof());
    EXPECT_EQ(reader.ReadLine(), "");
}

}  // namespace
