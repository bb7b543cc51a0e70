// The build's table generator (tools/gen_texts.py) must refuse every damaged or unfinished table,
// since a table that compiles is shown on the instrument as it is.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
// The repository, from the build: __FILE__ is relative when ccache rewrites paths.
const std::string kRoot = VTX_SOURCE_DIR;

std::string Entry(int id, const std::string& text, const std::string& flags = "") {
    return (flags.empty() ? "" : "#, " + flags + "\n") + "msgctxt \"" + std::to_string(id) + "\"\nmsgid \"en" +
           text + "\"\nmsgstr \"" + text + "\"\n\n";
}

// The generator's messages about the table of ids 0..2 that body completes; "accepted" when it
// wrote the table.
std::string Refusal(const std::string& body) {
    const fs::path dir = fs::temp_directory_path() / ("vtx_gen_texts_" + std::to_string(getpid()));
    fs::create_directories(dir);
    std::ofstream(dir / "t.po", std::ios::binary)
        << "msgid \"\"\nmsgstr \"\"\n\"Content-Type: text/plain; charset=UTF-8\\n\"\n\n"
        << "msgctxt \"0\"\nmsgid \"(empty)\"\nmsgstr \"\"\n\n"
        << body;
    const int status = std::system(("cd '" + dir.string() + "' && python3 '" + kRoot +
                                    "/tools/gen_texts.py' --table t --first-id 0 --count 3 --out out.cpp "
                                    "--symbol NS::T t.po 2>messages")
                                       .c_str());
    std::stringstream messages;
    messages << std::ifstream(dir / "messages").rdbuf();
    const bool wrote = fs::exists(dir / "out.cpp");
    fs::remove_all(dir);
    return status != 0 && !wrote ? messages.str() : "accepted";
}

TEST(GenTexts, DamagedOrUnfinishedTablesAreRefused) {
    const std::vector<std::pair<std::string, std::string>> cases = {
        {Entry(2, "B"), "missing text id(s) 1"},
        {Entry(1, "A") + Entry(2, "B") + Entry(3, "C"), "text 3 outside this table"},
        {Entry(1, "A") + Entry(1, "B") + Entry(2, "C"), "text 1 already defined"},
        {Entry(1, "A", "fuzzy") + Entry(2, "B"), "text 1 \"A\" is fuzzy"},
        {Entry(1, "") + Entry(2, "B"), "text 1 \"en\" is not translated"},
        {"msgctxt \"1\"\nmsgid \"(empty)\"\nmsgstr \"A\"\n\n" + Entry(2, "B"), "the source text is empty"},
        // polib alone would take the unterminated string for an empty text.
        {Entry(1, "A") + "msgctxt \"2\"\nmsgid \"enB\"\nmsgstr \"B\n", "end-of-line within string"},
        // gettext reads \x41 as "A", polib as four characters.
        {Entry(1, "A\\x41") + Entry(2, "B"), "backslash in msgstr"},
        {Entry(1, "A") + Entry(2, std::string("B\0C", 3)), "control character U+0000"},
    };
    for (const auto& [po, message] : cases) {
        const std::string messages = Refusal(po);
        EXPECT_NE(messages.find(message), std::string::npos) << message << ": " << messages;
    }
}

}  // namespace
