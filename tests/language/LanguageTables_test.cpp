// The content of the compiled-in tables: their shape, the texts other parts rely on, and the
// translations' consistency with the English.
#include "language/LanguageTables.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace NS_LanguageTexts;

namespace {

struct CTable {
    const char* name;
    const std::string* texts;
};

const std::vector<CTable> kTranslations = {
    {"da", TEXTS_DA}, {"sv", TEXTS_SV}, {"it", TEXTS_IT}, {"nl", TEXTS_NL}, {"fr", TEXTS_FR},
    {"es", TEXTS_ES}, {"de", TEXTS_DE}, {"ja", TEXTS_JA}, {"zh", TEXTS_ZH},
};

int CountPlaceholders(const std::string& text) {
    int count = 0;
    for (size_t at = text.find("<TAG_AMOUNT>"); at != std::string::npos;
         at = text.find("<TAG_AMOUNT>", at + 12))
        ++count;
    return count;
}

}  // namespace

TEST(LanguageTables, TablesFollowTheLanguageValues) {
    const std::vector<const std::string*> order = {TEXTS_EN, TEXTS_DA, TEXTS_SV, TEXTS_IT, TEXTS_NL,
                                                   TEXTS_FR, TEXTS_ES, TEXTS_DE, TEXTS_JA, TEXTS_ZH};
    for (int language = 0; language < kLanguageCount; ++language)
        EXPECT_EQ(GetLanguageTable(language), order[language]) << language;
    EXPECT_EQ(GetLanguageTable(-1), nullptr);
    EXPECT_EQ(GetLanguageTable(10), nullptr);
}

TEST(LanguageTables, EveryTableStartsEmptyAndIsComplete) {
    static_assert(sizeof(TEXTS_EN) / sizeof(TEXTS_EN[0]) == 568, "ids 0..567");
    static_assert(sizeof(TEXTS_DEV) / sizeof(TEXTS_DEV[0]) == 83, "ids 568..650");
    EXPECT_EQ(TEXTS_EN[0], "");
    EXPECT_EQ(TEXTS_EN_PELLAM[0], "");
    for (uint32_t id = 1; id < kTableSize; ++id) EXPECT_NE(TEXTS_EN[id], "") << id;
    // A translation shows every text the English shows: an empty entry would be a blank label.
    for (const CTable& table : kTranslations) {
        EXPECT_EQ(table.texts[0], "") << table.name;
        for (uint32_t id = 1; id < kTableSize; ++id)
            EXPECT_NE(table.texts[id], "") << table.name << " " << id;
    }
    for (uint32_t i = 0; i < kDeveloperCount; ++i) EXPECT_NE(TEXTS_DEV[i], "") << 568 + i;
}

TEST(LanguageTables, EnglishTextsOtherPartsRelyOn) {
    const std::vector<std::pair<uint32_t, std::string>> expected = {
        {1, "Language"},
        {2, "Settings"},
        {3, "Analyze"},
        {4, "Home"},
        {85, "English"},
        {86, "French"},
        {87, "Italian"},
        {88, "Spanish"},
        {89, "German"},
        {224, "Danish"},
        {225, "Swedish"},
        {226, "Dutch"},
        {227, "Japanese"},
        {229, "Chinese"},
        {136, "Software v."},
        {137, "Upgrade"},
        {417, "Software upgrade in progress"},
        {418, "Copying files"},
        {419, "Could not copy file(s)"},
        {420, "Downloading firmware"},
        {421, "Could not download firmware"},
        {422, "Upgrade successful"},
        {423, "Restarting application"},
        {424, "Could not restart application"},
        {509, "Insert USB stick with the install files\n\rfor the selected printer and press OK"},
    };
    for (const auto& [id, text] : expected) EXPECT_EQ(TEXTS_EN[id], text) << id;
}

TEST(LanguageTables, GermanUpdateTexts) {
    const std::vector<std::string> expected = {
        "Software upgrade in Arbeit",
        "Kopiere Daten",
        "Daten konnten nicht kopiert werden",
        "Download Firmware",
        "Firmware konnte nicht heruntergeladen werden",
        "Upgrade erfolgreich",
        "Neustart",
        "Anwendung konnte nicht erneut gestartet werden",
    };
    for (uint32_t id = 417; id <= 424; ++id) EXPECT_EQ(TEXTS_DE[id], expected[id - 417]) << id;
}

TEST(LanguageTables, DeveloperTableBeginsAndEndsAsExpected) {
    const std::vector<std::string> first = {"Signal", "Developer", "Log", "PCB hardware", "Template"};
    for (size_t i = 0; i < first.size(); ++i) EXPECT_EQ(TEXTS_DEV[i], first[i]) << 568 + i;
    const std::vector<std::string> last = {"Cartridge scattering mode", "PT/aPTT Combo (QA)",
                                           "PT/aPTT (Plasma QC)", "Wrong text!"};
    for (size_t i = 0; i < last.size(); ++i)
        EXPECT_EQ(TEXTS_DEV[kDeveloperCount - 4 + i], last[i]) << 647 + i;
}

TEST(LanguageTables, PellamWordingDiffersWhereItShould) {
    EXPECT_EQ(TEXTS_EN_PELLAM[21], "Patient name");
    EXPECT_EQ(TEXTS_EN[21], "Sample ID");
    EXPECT_EQ(TEXTS_EN_PELLAM[234], "Analyzer calibrated successfully");
    EXPECT_EQ(TEXTS_EN[234], "Analyser calibrated successfully");
    EXPECT_EQ(TEXTS_EN_PELLAM[431], "If the problem persists contact Pellam Technical Service");
    EXPECT_EQ(TEXTS_EN[431], "If the problem persists contact Technical Service");
    int differences = 0;
    for (uint32_t id = 1; id < 558; ++id) differences += TEXTS_EN_PELLAM[id] != TEXTS_EN[id];
    EXPECT_EQ(differences, 74);
    // The texts added last were never written for this instrument.
    for (uint32_t id = 558; id < kTableSize; ++id) EXPECT_EQ(TEXTS_EN_PELLAM[id], "") << id;
}

TEST(LanguageTables, PlaceholderCountsMatchTheEnglish) {
    std::vector<CTable> tables = kTranslations;
    tables.push_back({"en_pellam", TEXTS_EN_PELLAM});
    for (const CTable& table : tables) {
        for (uint32_t id = 1; id < kTableSize; ++id) {
            if (table.texts[id].empty()) continue;  // not shown, nothing to fill in
            EXPECT_EQ(CountPlaceholders(table.texts[id]), CountPlaceholders(TEXTS_EN[id]))
                << table.name << " " << id << ": " << table.texts[id];
        }
    }
    EXPECT_EQ(CountPlaceholders(TEXTS_EN[437]), 3);
}

TEST(LanguageTables, TranslationsAreNotCopiesOfTheEnglish) {
    // Units, codes and short labels may legitimately stay as they are, but not a fifth of a table.
    for (const CTable& table : kTranslations) {
        int same = 0;
        for (uint32_t id = 1; id < kTableSize; ++id) same += table.texts[id] == TEXTS_EN[id];
        EXPECT_LT(same * 5, static_cast<int>(kTableSize - 1))
            << table.name << ": " << same << " texts as in English";
    }
}

TEST(LanguageTables, TranslationsDifferFromEachOther) {
    // A file copied over another language's would still pass the checks above.
    for (size_t a = 0; a < kTranslations.size(); ++a) {
        for (size_t b = a + 1; b < kTranslations.size(); ++b) {
            int same = 0;
            for (uint32_t id = 1; id < kTableSize; ++id)
                same += kTranslations[a].texts[id] == kTranslations[b].texts[id];
            EXPECT_LT(same * 2, static_cast<int>(kTableSize - 1))
                << kTranslations[a].name << " and " << kTranslations[b].name;
        }
    }
}
