#include "foundation/TextFile.h"

#include "tests/foundation/TestFiles.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <fstream>
#include <string>
#include <unistd.h>
#include <vector>

using namespace std::string_literals;
using vtxtest::ReadFile;
using vtxtest::WriteFile;

namespace {

using Lines = std::vector<std::string>;

Lines ReadAll(CTextFileReader& reader) {
    Lines lines;
    while (!reader.IsEof() && lines.size() < 100000) lines.push_back(reader.ReadLine());
    return lines;
}

class TextFile : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_FALSE(m_folder.Path().empty()); }
    std::string PathOf(const char* name) const { return m_folder / name; }
    vtxtest::CTestFolder m_folder;
};

TEST_F(TextFile, WrittenLinesEndInCrLfAndReadBackWithout) {
    const std::string path = PathOf("ab.txt");
    {
        CTextFileWriter writer;
        ASSERT_TRUE(writer.Open(path, false));
        writer.WriteLine("a");
        writer.WriteLine("b");
        EXPECT_TRUE(writer.Close());
    }
    EXPECT_EQ(ReadFile(path), "a\r\nb\r\n");

    CTextFileReader reader(1000);
    ASSERT_TRUE(reader.Open(path));
    EXPECT_EQ(reader.ReadLine(), "a");
    EXPECT_EQ(reader.ReadLine(), "b");
    EXPECT_TRUE(reader.IsEof());
    EXPECT_EQ(reader.ReadLine(), "");  // reading on at the end gives nothing
    EXPECT_TRUE(reader.IsEof());
}

TEST_F(TextFile, ReaderLineEnds) {
    const std::string nine(9, 'x');  // a buffer of 10 holds 9 characters
    const struct {
        std::string bytes;
        uint32_t buffer;
        Lines lines;
    } cases[] = {
        {"one\ntwo\r\n\r\n\nlast", 1000, {"one", "two", "", "", "last"}},
        {"ab\0cd\r\nnext\r\n"s, 1000, {"ab", "next"}},  // a NUL cuts the line
        // The second line fills the buffer, so its CR stays outside and makes an empty line.
        {nine + "\n" + nine + "\r\n", 10, {nine, nine, ""}},
        // A longer line comes in pieces, none of it lost.
        {nine + nine + "xx\r\nafter", 10, {nine, nine, "xx", "after"}},
        {"", 1000, {}},
    };
    const std::string path = PathOf("lines.txt");
    CTextFileReader reused(1000);  // reopening a used reader starts afresh
    for (const auto& c : cases) {
        SCOPED_TRACE(c.bytes);
        WriteFile(path, c.bytes);
        CTextFileReader reader(c.buffer);
        CTextFileReader& used = c.buffer == 1000 ? reused : reader;
        ASSERT_TRUE(used.Open(path));
        EXPECT_EQ(ReadAll(used), c.lines);
    }
}

TEST_F(TextFile, WritesGoToTheCurrentEndAfterAnotherWriter) {
    for (bool append : {false, true}) {
        const std::string path = PathOf(append ? "app.log" : "trunc.log");
        WriteFile(path, "old\r\n");
        CTextFileWriter writer;
        ASSERT_TRUE(writer.Open(path, append));
        writer.WriteLine("1");
        {
            std::ofstream other(path, std::ios::binary | std::ios::app);
            other << "other\r\n";
        }
        writer.Write("2");
        writer.WriteLine("");
        EXPECT_TRUE(writer.Close());
        EXPECT_EQ(ReadFile(path), std::string(append ? "old\r\n" : "") + "1\r\nother\r\n2\r\n") << append;
    }
}

TEST_F(TextFile, OpenFailuresAreReported) {
    CTextFileReader reader(1000);
    EXPECT_FALSE(reader.Open(PathOf("missing.txt")));
    EXPECT_FALSE(reader.IsEof());  // failed, not at its end
    EXPECT_EQ(reader.ReadLine(), "");

    CTextFileWriter writer;
    EXPECT_FALSE(writer.Open(PathOf("no/such/folder.txt"), true));
    writer.WriteLine("dropped");
    EXPECT_FALSE(writer.Close());
    ASSERT_TRUE(writer.Open(PathOf("created.txt"), true));  // append creates the file
    EXPECT_TRUE(writer.Close());
    EXPECT_EQ(access(PathOf("created.txt").c_str(), F_OK), 0);
}

}  // namespace
