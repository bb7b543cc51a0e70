// The build's table generator (tools/gen_texts.py) must refuse every damaged table, since a table
// that compiles is shown on the instrument as it is.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace {

std::string SourceRoot() {
    std::string file = __FILE__;  // <root>/tests/language/GenTexts_test.cpp
    for (int i = 0; i < 3; ++i) file = file.substr(0, file.find_last_of('/'));
    return file;
}

const char* const kHeader =
    "msgid \"\"\n"
    "msgstr \"\"\n"
    "\"Content-Type: text/plain; charset=UTF-8\\n\"\n\n"
    "#, vtx-empty\n"
    "msgctxt \"0\"\n"
    "msgid \"(empty)\"\n"
    "msgstr \"\"\n\n";

std::string Entry(int id, const std::string& source, const std::string& text, const std::string& flags = "") {
    std::string entry = flags.empty() ? "" : "#, " + flags + "\n";
    return entry + "msgctxt \"" + std::to_string(id) + "\"\nmsgid \"" + source + "\"\nmsgstr \"" + text +
           "\"\n\n";
}

class GenTexts : public ::testing::Test {
protected:
    void SetUp() override {
        char pattern[] = "/tmp/vtx_gen_texts_XXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        m_dir = pattern;
    }
    void TearDown() override {
        std::error_code ignored;
        std::filesystem::remove_all(m_dir, ignored);
    }

    std::string Write(const std::string& name, const std::string& content) {
        const std::string path = m_dir + "/" + name;
        std::ofstream(path, std::ios::binary) << content;
        return path;
    }
    // Exit status of the generator; its messages go to m_messages.
    int Run(const std::string& arguments) {
        const std::string messages = m_dir + "/messages";
        const std::string command =
            "python3 '" + SourceRoot() + "/tools/gen_texts.py' " + arguments + " 2>'" + messages + "'";
        const int status = std::system(command.c_str());
        std::ifstream in(messages);
        std::stringstream text;
        text << in.rdbuf();
        m_messages = text.str();
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    int Generate(const std::string& po, int count = 3) {
        return Run("--table t --first-id 0 --count " + std::to_string(count) + " --out '" + Out() +
                   "' --symbol NS::TEXTS '" + po + "'");
    }
    std::string Out() const { return m_dir + "/out.cpp"; }
    bool OutExists() const { return access(Out().c_str(), F_OK) == 0; }
    std::string ReadOut() const {
        std::ifstream in(Out());
        std::stringstream text;
        text << in.rdbuf();
        return text.str();
    }

    std::string m_dir;
    std::string m_messages;
};

TEST_F(GenTexts, CompleteTableBecomesAnArrayOfEscapedLiterals) {
    const std::string po = Write("ok.po", std::string(kHeader) + Entry(1, "Language", "Spr\\\"ache\\\\") +
                                              Entry(2, "Two\\nlines", "Zwei\\n\\rZeilen ä?\?="));
    ASSERT_EQ(Generate(po), 0) << m_messages;
    const std::string out = ReadOut();
    EXPECT_NE(out.find("namespace NS {"), std::string::npos);
    EXPECT_NE(out.find("const std::string TEXTS[3] = {"), std::string::npos);
    EXPECT_NE(out.find("/* 0 */ \"\","), std::string::npos);
    EXPECT_NE(out.find("\"Spr\\\"ache\\\\\","), std::string::npos);
    // UTF-8 as octal bytes; "??=" must not become a trigraph.
    EXPECT_NE(out.find("\"Zwei\\n\"\n        \"\\rZeilen \\303\\244?\\?=\","), std::string::npos) << out;
}

TEST_F(GenTexts, TableWithAMissingOrForeignIdIsRefused) {
    EXPECT_EQ(Generate(Write("missing.po", std::string(kHeader) + Entry(2, "b", "B"))), 1);
    EXPECT_NE(m_messages.find("missing text id(s) 1"), std::string::npos) << m_messages;
    EXPECT_FALSE(OutExists());

    EXPECT_EQ(Generate(Write("extra.po", std::string(kHeader) + Entry(1, "a", "A") + Entry(2, "b", "B") +
                                             Entry(3, "c", "C"))),
              1);
    EXPECT_NE(m_messages.find("text id 3 outside this table"), std::string::npos) << m_messages;
    EXPECT_FALSE(OutExists());
}

TEST_F(GenTexts, DamagedEntriesAreRefused) {
    const std::vector<std::pair<std::string, std::string>> cases = {
        {Entry(1, "a", "A") + Entry(1, "a", "again") + Entry(2, "b", "B"), "already defined"},
        {Entry(1, "a", "A", "fuzzy") + Entry(2, "b", "B"), "fuzzy"},
        {Entry(1, "a", "A\\x41") + Entry(2, "b", "B"), "unsupported escape"},
        {Entry(1, "a", "A") + "msgctxt \"02\"\nmsgid \"b\"\nmsgstr \"B\"\n", "decimal text id"},
        {Entry(1, "a", "A") + "msgctxt \"2\"\nmsgid \"\"\nmsgstr \"B\"\n", "empty msgid"},
        {Entry(1, "a", "A") + Entry(2, "b", "B\xff"), "invalid UTF-8"},
        {Entry(1, "a", "A") + Entry(2, "b", std::string("B\0C", 3)), "control character U+0000"},
    };
    for (const auto& [entries, message] : cases) {
        EXPECT_EQ(Generate(Write("bad.po", std::string(kHeader) + entries)), 1) << message;
        EXPECT_NE(m_messages.find(message), std::string::npos) << m_messages;
        EXPECT_FALSE(OutExists()) << message;
    }
    // Without the header nothing declares the file's encoding.
    EXPECT_EQ(Generate(Write("nohead.po",
                             Entry(0, "(empty)", "", "vtx-empty") + Entry(1, "a", "A") + Entry(2, "b", "B"))),
              1);
}

TEST_F(GenTexts, PlaceholderCountsAreComparedWithTheEnglish) {
    const std::string en =
        Write("en.po", std::string(kHeader) +
                           Entry(1, "<TAG_AMOUNT> of <TAG_AMOUNT>", "<TAG_AMOUNT> of <TAG_AMOUNT>") +
                           Entry(2, "b", "B"));
    // Moved placeholders and a text left empty (not shown) are fine.
    const std::string moved =
        Write("moved.po",
              std::string(kHeader) + Entry(1, "x", "<TAG_AMOUNT><TAG_AMOUNT> von") + Entry(2, "b", "B"));
    const std::string empty =
        Write("empty.po", std::string(kHeader) + Entry(1, "x", "") + Entry(2, "b", "B"));
    EXPECT_EQ(Run("--check-placeholders '" + en + "' '" + moved + "' '" + empty + "'"), 0) << m_messages;

    const std::string lost = Write("lost.po", std::string(kHeader) + Entry(1, "x", "<TAG_AMOUNT> von") +
                                                  Entry(2, "b", "B <TAG_AMOUNT>"));
    EXPECT_EQ(Run("--check-placeholders '" + en + "' '" + moved + "' '" + lost + "'"), 1);
    EXPECT_NE(m_messages.find("text id 1 has 1"), std::string::npos) << m_messages;
    EXPECT_NE(m_messages.find("text id 2 has 1"), std::string::npos) << m_messages;
    EXPECT_EQ(m_messages.find("moved.po"), std::string::npos) << m_messages;
}

TEST_F(GenTexts, ProjectTablesPassTheirOwnChecks) {
    // The developer table with its real range, as the build generates it.
    const std::string texts = SourceRoot() + "/language/texts/";
    EXPECT_EQ(Run("--table dev --first-id 568 --count 83 --out '" + Out() + "' --symbol TEXTS '" + texts +
                  "dev.po'"),
              0)
        << m_messages;
    EXPECT_NE(ReadOut().find("/* 650 */ \"Wrong text!\","), std::string::npos);
    // Shifted by one id, the same file no longer fits.
    EXPECT_EQ(Run("--table dev --first-id 569 --count 83 --out '" + Out() + "' --symbol TEXTS '" + texts +
                  "dev.po'"),
              1);
}

}  // namespace
