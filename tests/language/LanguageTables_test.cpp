// The content of the compiled-in tables: their shape, the texts other parts rely on, and the
// translations' consistency with the English.
#include "language/LanguageTables.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "foundation/InstrumentEnums.h"
#include "language/InstrumentLanguage.h"

using namespace NS_LanguageTexts;

namespace {

const std::vector<std::pair<const char*, const std::string*>> kTranslations = {
    {"da", TEXTS_DA}, {"sv", TEXTS_SV}, {"it", TEXTS_IT}, {"nl", TEXTS_NL}, {"fr", TEXTS_FR},
    {"es", TEXTS_ES}, {"de", TEXTS_DE}, {"ja", TEXTS_JA}, {"zh", TEXTS_ZH}};

int CountPlaceholders(const std::string& text) {
    int count = 0;
    for (size_t at = text.find("<TAG_AMOUNT>"); at != std::string::npos;
         at = text.find("<TAG_AMOUNT>", at + 12))
        ++count;
    return count;
}

// The code points of a UTF-8 text; none when it is not valid UTF-8 (overlong forms, surrogates and
// values above U+10FFFF included) or holds a control character other than CR and LF.
std::optional<std::u32string> Decode(const std::string& text) {
    static const char32_t kMin[] = {0, 0x80, 0x800, 0x10000};
    std::u32string out;
    for (size_t i = 0; i < text.size();) {
        const unsigned char lead = text[i++];
        const int n = lead < 0x80                   ? 0
                      : lead >= 0xC0 && lead < 0xF8 ? 1 + (lead >= 0xE0) + (lead >= 0xF0)
                                                    : -1;
        if (n < 0 || text.size() - i < size_t(n)) return std::nullopt;
        char32_t c = lead & (0x7F >> n);
        for (int k = 0; k < n; ++k, ++i) {
            if ((text[i] & 0xC0) != 0x80) return std::nullopt;
            c = (c << 6) | (text[i] & 0x3F);
        }
        if (c < kMin[n] || c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF) ||
            (c < 0x20 && c != '\n' && c != '\r'))
            return std::nullopt;
        out.push_back(c);
    }
    return out;
}

bool Any(const std::u32string& text, char32_t first, char32_t last) {
    for (char32_t c : text)
        if (c >= first && c <= last) return true;
    return false;
}

}  // namespace

TEST(LanguageTables, EveryTableIsCompleteAndValidUtf8WithoutControlCharacters) {
    static_assert(sizeof(TEXTS_EN) / sizeof(TEXTS_EN[0]) == 568, "ids 0..567");
    static_assert(sizeof(TEXTS_DEV) / sizeof(TEXTS_DEV[0]) == 83, "ids 568..650");
    for (const char* bad :
         {"\xff", "\xc0\xaf", "\xe2\x82", "\xed\xa0\x80", "\xf4\x90\x80\x80", "a\x80", "\t"})
        EXPECT_FALSE(Decode(bad)) << "the check itself";
    auto tables = kTranslations;
    tables.insert(tables.end(), {{"en", TEXTS_EN}, {"en_pellam", TEXTS_EN_PELLAM}});
    for (const auto& [name, texts] : tables) {
        for (uint32_t id = 0; id < kTableSize; ++id) {
            EXPECT_TRUE(Decode(texts[id])) << name << " " << id;
            // Id 0 is empty; elsewhere an empty text is a blank label (the Pellam table: not shown).
            if (texts != TEXTS_EN_PELLAM || id == 0) {
                EXPECT_EQ(texts[id].empty(), id == 0) << name << " " << id;
            }
        }
    }
    for (uint32_t i = 0; i < kDeveloperCount; ++i) {
        EXPECT_TRUE(Decode(TEXTS_DEV[i]) && !TEXTS_DEV[i].empty()) << 568 + i;
    }
}

TEST(LanguageTables, JapaneseAndChineseTablesAreWrittenInTheirScripts) {
    // Codes and units such as "INR" or "g/L" stay Latin; nearly everything else is CJK.
    int kana = 0, japanese = 0, chinese = 0;
    for (uint32_t id = 1; id < kTableSize; ++id) {
        const std::u32string ja = Decode(TEXTS_JA[id]).value_or(U""), zh = Decode(TEXTS_ZH[id]).value_or(U"");
        kana += Any(ja, 0x3040, 0x30FF);
        japanese += Any(ja, 0x3040, 0x30FF) || Any(ja, 0x4E00, 0x9FFF);
        chinese += Any(zh, 0x4E00, 0x9FFF);
        EXPECT_FALSE(Any(zh, 0x3040, 0x30FF)) << "kana in Chinese text " << id << ": " << TEXTS_ZH[id];
    }
    EXPECT_GT(japanese * 10, int(kTableSize) * 9);
    EXPECT_GT(kana * 2, int(kTableSize)) << "Japanese is written with kana";
    EXPECT_GT(chinese * 10, int(kTableSize) * 9);
}

TEST(LanguageTables, TranslationsAreTheirOwnWithTheEnglishPlaceholders) {
    const uint32_t n = kTableSize - 1;
    for (size_t a = 0; a < kTranslations.size(); ++a) {
        const auto& [name, texts] = kTranslations[a];
        // Units, codes and short labels may stay as they are, but not a fifth of a table; a file
        // copied over another language's shares most of it.
        int english = 0;
        for (uint32_t id = 1; id < kTableSize; ++id) english += texts[id] == TEXTS_EN[id];
        EXPECT_LT(english * 5, int(n)) << name << ": " << english << " as in English";
        for (size_t b = a + 1; b < kTranslations.size(); ++b) {
            int same = 0;
            for (uint32_t id = 1; id < kTableSize; ++id) same += texts[id] == kTranslations[b].second[id];
            EXPECT_LT(same * 2, int(n)) << name << " and " << kTranslations[b].first;
        }
    }
    auto tables = kTranslations;
    tables.push_back({"en_pellam", TEXTS_EN_PELLAM});
    for (const auto& [name, texts] : tables)
        for (uint32_t id = 1; id < kTableSize; ++id)
            if (!texts[id].empty()) {  // an empty text is not shown: nothing to fill in
                EXPECT_EQ(CountPlaceholders(texts[id]), CountPlaceholders(TEXTS_EN[id])) << name << " " << id;
            }
    EXPECT_EQ(CountPlaceholders(TEXTS_EN[437]), 3);
    int pellamDifferences = 0;
    for (uint32_t id = 1; id < 558; ++id) pellamDifferences += TEXTS_EN_PELLAM[id] != TEXTS_EN[id];
    EXPECT_EQ(pellamDifferences, 74);
}

TEST(LanguageTables, TextsOtherPartsRelyOn) {
    // clang-format off
    const std::vector<std::pair<uint32_t, std::string>> english = {
        {1, "Language"}, {2, "Settings"}, {3, "Analyze"}, {4, "Home"}, {85, "English"}, {86, "French"},
        {87, "Italian"}, {88, "Spanish"}, {89, "German"}, {224, "Danish"}, {225, "Swedish"}, {226, "Dutch"},
        {227, "Japanese"}, {229, "Chinese"}, {92, "Done"}, {168, "Disk error"}, {136, "Software v."},
        {137, "Upgrade"}, {138, "Current software version"}, {165, "Copying data..."},
        {169, "Upgrade to newer version?"}, {278, "Restart Now"}, {287, "The instrument will now restart"},
        {288, "Please note that the restart will take a while"}, {289, "Important!"},
        {290, "Do NOT power off the instrument during restart"}, {292, "Could not restart instrument"},
        {293, "Restart instrument manually"}, {500, "Software version"},
        {417, "Software upgrade in progress"}, {418, "Copying files"}, {419, "Could not copy file(s)"},
        {420, "Downloading firmware"}, {421, "Could not download firmware"}, {422, "Upgrade successful"},
        {423, "Restarting application"}, {424, "Could not restart application"},
        {509, "Insert USB stick with the install files\n\rfor the selected printer and press OK"},
        {568, "Signal"}, {569, "Developer"}, {570, "Log"}, {571, "PCB hardware"}, {572, "Template"},
        {647, "Cartridge scattering mode"}, {648, "PT/aPTT Combo (QA)"}, {649, "PT/aPTT (Plasma QC)"},
        {650, "Wrong text!"}};
    const CInstrumentLanguageDef def(nullptr);
    for (const auto& [id, text] : english)
        EXPECT_EQ(def.GetTextForLanguage(id, eLanguageEnglish), text) << id;
    const char* const german[] = {
        "Software upgrade in Arbeit", "Kopiere Daten", "Daten konnten nicht kopiert werden",
        "Download Firmware", "Firmware konnte nicht heruntergeladen werden", "Upgrade erfolgreich",
        "Neustart",
        "Anwendung konnte nicht erneut gestartet werden"};
    for (uint32_t id = 417; id <= 424; ++id)
        EXPECT_EQ(def.GetTextForLanguage(id, eLanguageGerman), german[id - 417]);
    // Each language value reads its own table.
    const char* const language[] = {"Language", "Sprog",  "Språk",   "Lingua", "Taal",
                                    "Langue",   "Idioma", "Sprache", "言語",   "语言"};
    for (int lang = 0; lang < 10; ++lang) EXPECT_EQ(def.GetTextForLanguage(1, lang), language[lang]) << lang;
    // clang-format on
}
