// The build's table generator (tools/gen_texts.py) must refuse every damaged table, since a table
// that compiles is shown on the instrument as it is.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace {

const std::string kRoot = std::string(__FILE__).substr(0, std::string(__FILE__).rfind("/tests/language/"));
const std::string kHeader =
    "msgid \"\"\nmsgstr \"\"\n\"Content-Type: text/plain; charset=UTF-8\\n\"\n\n"
    "#, vtx-empty\nmsgctxt \"0\"\nmsgid \"(empty)\"\nmsgstr \"\"\n\n";

std::string Entry(int id, const std::string& text, const std::string& flags = "") {
    return (flags.empty() ? "" : "#, " + flags + "\n") + "msgctxt \"" + std::to_string(id) +
           "\"\nmsgid \"source\"\nmsgstr \"" + text + "\"\n\n";
}

class GenTexts : public ::testing::Test {
protected:
    void SetUp() override {
        char pattern[] = "/tmp/vtx_gen_texts_XXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        m_dir = pattern;
    }
    void TearDown() override { std::filesystem::remove_all(m_dir); }
    std::string Write(const std::string& content) {
        const std::string path = m_dir + "/" + std::to_string(m_files++) + ".po";
        std::ofstream(path, std::ios::binary) << content;
        return " '" + path + "'";
    }
    // Exit status of the generator; its messages in m_messages, the table it wrote in m_out.
    int Run(const std::string& arguments) {
        std::filesystem::remove(m_dir + "/out.cpp");
        const int status = std::system(
            ("python3 '" + kRoot + "/tools/gen_texts.py' " + arguments + " 2>'" + m_dir + "/messages'")
                .c_str());
        std::stringstream messages, out;
        messages << std::ifstream(m_dir + "/messages").rdbuf();
        out << std::ifstream(m_dir + "/out.cpp").rdbuf();
        m_messages = messages.str(), m_out = out.str();
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    int Generate(const std::string& po) {
        return Run("--table t --first-id 0 --count 3 --out '" + m_dir + "/out.cpp' --symbol NS::TEXTS" +
                   Write(po));
    }
    std::string m_dir, m_messages, m_out;
    int m_files = 0;
};

TEST_F(GenTexts, DamagedTablesAreRefused) {
    const std::vector<std::pair<std::string, std::string>> cases = {
        {kHeader + Entry(2, "B"), "missing text id(s) 1"},
        {kHeader + Entry(1, "A") + Entry(2, "B") + Entry(3, "C"), "text id 3 outside this table"},
        {kHeader + Entry(1, "A") + Entry(1, "again") + Entry(2, "B"), "already defined"},
        {kHeader + Entry(1, "A", "fuzzy") + Entry(2, "B"), "fuzzy"},
        {kHeader + Entry(1, "A\\x41") + Entry(2, "B"), "unsupported escape"},
        {kHeader + Entry(1, "A") + Entry(2, "B\xff"), "invalid UTF-8"},
        {kHeader + Entry(1, "A") + Entry(2, std::string("B\0C", 3)), "control character U+0000"},
        // Without the header nothing declares the file's encoding.
        {kHeader.substr(kHeader.find("#, vtx-empty")) + Entry(1, "A") + Entry(2, "B"), "no PO header"},
    };
    for (const auto& [po, message] : cases) {
        EXPECT_EQ(Generate(po), 1) << message;
        EXPECT_NE(m_messages.find(message), std::string::npos) << m_messages;
        EXPECT_TRUE(m_out.empty()) << message;
    }
}

}  // namespace
