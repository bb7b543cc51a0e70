#include "foundation/TextFile.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <unistd.h>

namespace {

class TextFile : public ::testing::Test {
protected:
    void SetUp() override {
        const char* tmp = std::getenv("TMPDIR");
        std::string pattern = std::string(tmp && *tmp ? tmp : "/tmp") + "/vtx-textfile.XXXXXX";
        ASSERT_NE(mkdtemp(&pattern[0]), nullptr);
        m_dir = pattern;
    }
    void TearDown() override { (void)std::system(("rm -rf '" + m_dir + "'").c_str()); }

    std::string PathOf(const char* name) const { return m_dir + "/" + name; }
    static std::string Bytes(const std::string& path) {
        std::ifstream in(path, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }
    static void Put(const std::string& path, const std::string& bytes) {
        std::ofstream out(path, std::ios::binary | std::ios::trunc);
        out << bytes;
    }
    static std::vector<std::string> ReadAll(CTextFileReader& reader, size_t limit = 100000) {
        std::vector<std::string> lines;
        while (!reader.IsEof() && lines.size() < limit) lines.push_back(reader.ReadLine());
        return lines;
    }

    std::string m_dir;
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
    EXPECT_EQ(Bytes(path), "a\r\nb\r\n");

    CTextFileReader reader(1000);
    ASSERT_TRUE(reader.Open(path));
    EXPECT_FALSE(reader.IsEof());
    EXPECT_EQ(reader.ReadLine(), "a");
    EXPECT_EQ(reader.ReadLine(), "b");
    EXPECT_TRUE(reader.IsEof());
    EXPECT_EQ(reader.ReadLine(), "");  // reading on at the end gives nothing
    EXPECT_TRUE(reader.IsEof());
}

TEST_F(TextFile, ReaderAcceptsLfOnlyMixedAndMissingLastLineEnd) {
    const std::string path = PathOf("mixed.txt");
    Put(path, "one\ntwo\r\n\r\n\nlast");
    CTextFileReader reader(1000);
    ASSERT_TRUE(reader.Open(path));
    EXPECT_EQ(ReadAll(reader), (std::vector<std::string>{"one", "two", "", "", "last"}));

    Put(path, "");
    ASSERT_TRUE(reader.Open(path));  // reopening a used reader works
    EXPECT_TRUE(reader.IsEof());
}

TEST_F(TextFile, NulCutsTheLineAndTheNextLineFollows) {
    const std::string path = PathOf("nul.txt");
    Put(path, std::string("ab\0cd\r\nnext\r\n", 13));
    CTextFileReader reader(1000);
    ASSERT_TRUE(reader.Open(path));
    EXPECT_EQ(reader.ReadLine(), "ab");
    EXPECT_EQ(reader.ReadLine(), "next");
    EXPECT_TRUE(reader.IsEof());
}

TEST_F(TextFile, OverlongLineComesInPiecesAndReadingEnds) {
    const std::string path = PathOf("long.txt");
    std::string longLine;
    for (int i = 0; i < 5000; ++i) longLine += static_cast<char>('a' + i % 26);
    Put(path, longLine + "\r\nafter\r\n");
    CTextFileReader reader(1000);
    ASSERT_TRUE(reader.Open(path));
    const std::vector<std::string> lines = ReadAll(reader);
    ASSERT_LT(lines.size(), 100u);
    std::string joined;
    for (size_t i = 0; i + 1 < lines.size(); ++i) {
        EXPECT_LE(lines[i].size(), 999u);
        joined += lines[i];
    }
    EXPECT_EQ(joined, longLine);
    EXPECT_EQ(lines.back(), "after");
}

TEST_F(TextFile, LineOfExactlyTheBufferLimitIsWhole) {
    const std::string path = PathOf("limit.txt");
    const std::string line(9, 'x');  // buffer of 10 holds 9 characters
    Put(path, line + "\n" + line + "\r\n");
    CTextFileReader reader(10);
    ASSERT_TRUE(reader.Open(path));
    EXPECT_EQ(reader.ReadLine(), line);
    EXPECT_EQ(reader.ReadLine(), line);  // 9 characters, then the CR stays outside the buffer
    EXPECT_FALSE(reader.IsEof());
    EXPECT_EQ(reader.ReadLine(), "");
    EXPECT_TRUE(reader.IsEof());
}

TEST_F(TextFile, WritesGoToTheCurrentEndAfterAnotherWriter) {
    for (bool append : {false, true}) {
        const std::string path = PathOf(append ? "app.log" : "trunc.log");
        Put(path, "old\r\n");
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
        EXPECT_EQ(Bytes(path), std::string(append ? "old\r\n" : "") + "1\r\nother\r\n2\r\n") << append;
    }
}

TEST_F(TextFile, OpenFailuresAreReported) {
    CTextFileReader reader(1000);
    EXPECT_FALSE(reader.Open(PathOf("missing.txt")));
    EXPECT_TRUE(reader.IsEof());
    EXPECT_EQ(reader.ReadLine(), "");

    CTextFileWriter writer;
    EXPECT_FALSE(writer.Open(PathOf("no/such/folder.txt"), true));
    writer.WriteLine("dropped");
    EXPECT_FALSE(writer.Close());
    ASSERT_TRUE(writer.Open(PathOf("created.txt"), true));  // append creates the file
    EXPECT_TRUE(writer.Close());
    EXPECT_EQ(access(PathOf("created.txt").c_str(), F_OK), 0);
}

TEST_F(TextFile, WideFormWritesTheSameBytes) {
    const std::string path = PathOf("wide.txt");
    {
        CTextFileWriterW writer;
        ASSERT_TRUE(writer.Open(path, false));
        writer.WriteLine(L"a");
        writer.WriteLine(L"key = value");
        EXPECT_TRUE(writer.Close());
    }
    EXPECT_EQ(Bytes(path), "a\r\nkey = value\r\n");
    Put(path, "a\nb\r\n");
    CTextFileReaderW reader(1000);
    ASSERT_TRUE(reader.Open(path));
    EXPECT_EQ(reader.ReadLine(), L"a");
    EXPECT_EQ(reader.ReadLine(), L"b");
    EXPECT_TRUE(reader.IsEof());
}

}  // namespace
