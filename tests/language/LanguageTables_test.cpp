// What the generator cannot see in one file: a table copied over another language, or a
// language written in the wrong script.
#include "language/LanguageTables.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace NS_LanguageTexts;

namespace {

// Whether the (valid UTF-8) text holds a code point in [first, last].
bool Any(const std::string& text, char32_t first, char32_t last) {
    for (size_t i = 0; i < text.size();) {
        const unsigned char lead = text[i];
        const int more = lead < 0x80 ? 0 : lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
        char32_t c = lead & (0x7F >> more);
        for (int k = 1; k <= more && i + k < text.size(); ++k) c = (c << 6) | (text[i + k] & 0x3F);
        if (c >= first && c <= last) return true;
        i += 1 + more;
    }
    return false;
}

}  // namespace

TEST(LanguageTables, EachTranslationIsItsOwnAndWrittenInItsScript) {
    const std::vector<std::pair<const char*, const std::string*>> translations = {
        {"da", TEXTS_DA}, {"sv", TEXTS_SV}, {"it", TEXTS_IT}, {"nl", TEXTS_NL}, {"fr", TEXTS_FR},
        {"es", TEXTS_ES}, {"de", TEXTS_DE}, {"ja", TEXTS_JA}, {"zh", TEXTS_ZH}};
    const int n = int(kTableSize) - 1;
    // Units, codes and short labels may stay as they are, but not a fifth of a table; a file copied
    // over another language's shares most of it.
    for (size_t a = 0; a < translations.size(); ++a) {
        int english = 0;
        for (uint32_t id = 1; id < kTableSize; ++id) english += translations[a].second[id] == TEXTS_EN[id];
        EXPECT_LT(english * 5, n) << translations[a].first;
        for (size_t b = a + 1; b < translations.size(); ++b) {
            int same = 0;
            for (uint32_t id = 1; id < kTableSize; ++id)
                same += translations[a].second[id] == translations[b].second[id];
            EXPECT_LT(same * 2, n) << translations[a].first << " and " << translations[b].first;
        }
    }
    // Codes and units such as "INR" stay Latin; nearly everything else is CJK, Japanese with kana.
    int kana = 0, japanese = 0, chinese = 0;
    for (uint32_t id = 1; id < kTableSize; ++id) {
        kana += Any(TEXTS_JA[id], 0x3040, 0x30FF);
        japanese += Any(TEXTS_JA[id], 0x3040, 0x30FF) || Any(TEXTS_JA[id], 0x4E00, 0x9FFF);
        chinese += Any(TEXTS_ZH[id], 0x4E00, 0x9FFF);
        EXPECT_FALSE(Any(TEXTS_ZH[id], 0x3040, 0x30FF)) << "kana in Chinese text " << id;
    }
    EXPECT_GT(japanese * 10, n * 9);
    EXPECT_GT(kana * 2, n);
    EXPECT_GT(chinese * 10, n * 9);
}
