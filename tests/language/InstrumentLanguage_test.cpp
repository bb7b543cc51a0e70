// Text lookup, language availability, control labelling and placeholder filling.
#include "language/InstrumentLanguage.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "foundation/common/InstrumentCommonData.h"
#include "foundation/InstrumentEnums.h"
#include "foundation/InstrumentSettings.h"
#include "language/LanguageTables.h"
#include "ui/TextControl.h"

namespace {

using NS_LanguageTexts::GetLanguageTable;

class CFixedLanguage : public CInstrumentLanguageSource {
public:
    explicit CFixedLanguage(int language) : language(language) {}
    int GetLanguage() const override { return language; }
    int GetLanguageValue() const override { return language; }
    int language;
};

// Everything labelled anywhere, in order, so that tests can check the order across controls.
std::vector<std::pair<const void*, std::string>> g_labelLog;

class CRecordingControl : public CTextBearingControl {
public:
    void SetControlText(const std::string& utf8) override {
        texts.push_back(utf8);
        g_labelLog.emplace_back(this, utf8);
    }
    std::vector<std::string> texts;
};

// Labels are remembered for the life of the program, so remembered controls must live as long.
CRecordingControl g_first, g_second, g_third;
const CInstrumentLanguage::CColonAdder g_colon;

}  // namespace

TEST(InstrumentLanguageLookup, OutOfRangeIdsAndLanguages) {
    const CInstrumentLanguageDef def(nullptr);
    for (int language : {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 255, -1}) {
        SCOPED_TRACE(language);
        for (uint32_t id : {0u, 651u, 1000u, 0xFFFFFFFFu})
            EXPECT_EQ(def.GetTextForLanguage(id, language), "") << id;
        EXPECT_EQ(def.GetTextForLanguage(568, language), "Signal");
        EXPECT_EQ(def.GetTextForLanguage(650, language), "Wrong text!");
        if (language < 0 || language > 9) {
            EXPECT_EQ(def.GetTextForLanguage(417, language), "Software upgrade in progress");
        }
    }
    // The last translated id still comes from the language's own table.
    EXPECT_EQ(&def.GetTextForLanguage(567, eLanguageJapanese), &GetLanguageTable(eLanguageJapanese)[567]);
}

TEST(InstrumentLanguageLookup, GetTextFollowsTheSourceAndKeepsItsReference) {
    CFixedLanguage source(eLanguageGerman);
    const CInstrumentLanguageDef def(&source);
    const std::string& german = def.GetText(422);
    EXPECT_EQ(german, "Upgrade erfolgreich");
    source.language = eLanguageEnglish;
    EXPECT_EQ(def.GetText(422), "Upgrade successful");
    EXPECT_EQ(german, "Upgrade erfolgreich") << "the reference points into the table";
    EXPECT_EQ(CInstrumentLanguageDef(nullptr).GetText(422), "Upgrade successful") << "no source: English";

    const int saved = GetSettingLanguage();
    SetSettingLanguage(eLanguageGerman);
    EXPECT_EQ(GetText(417), "Software upgrade in Arbeit");
    SetSettingLanguage(saved);
}

TEST(InstrumentLanguageLookup, TypeChangesAfterTheFirstLookupAreNotSeen) {
    const CInstrumentLanguageDef def(nullptr);
    ASSERT_EQ(def.GetTextForLanguage(21, eLanguageEnglish), "Sample ID");
    ASSERT_EQ(CInstrumentLanguageDef::GetTextInstrumentType(), eInstrumentKorvalin);
    SetInstrumentTypeForTesting(eInstrumentPellamZento);
    EXPECT_EQ(def.GetTextForLanguage(21, eLanguageEnglish), "Sample ID");
    EXPECT_EQ(def.GetTextForLanguage(558, eLanguageEnglish), "PT/aPTT Combo");
    for (int language = -1; language <= 10; ++language)
        EXPECT_EQ(CInstrumentLanguageDef::IsLanguageAvailable(language), language >= 0 && language <= 9);
    EXPECT_EQ(CInstrumentLanguageDef::CountAvailableLanguages(), 10);
    SetInstrumentTypeForTesting(eInstrumentKorvalin);
}

// The lookup copies the instrument type once per process, so the other types run in a child each.
// The child reports every mismatch on stderr and exits with 1.
TEST(InstrumentLanguageLookup, PellamAndTandemInstruments) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    struct {
        int type, count, offered;  // offered: bit n for language n
        const char* text21;
    } const cases[] = {{eInstrumentPellamZento, 1, 0x001, "Patient name"},
                       {eInstrumentLumetTandem, 2, 0x041, "Sample ID"}};
    for (const auto& c : cases) {
        EXPECT_EXIT(
            {
                std::string out;
                const auto expect = [&out](const std::string& got, const std::string& want, int id,
                                           int lang) {
                    if (got != want)
                        out += std::to_string(id) + "/" + std::to_string(lang) + ": " + got + "\n";
                };
                const CInstrumentLanguageDef def(nullptr);
                // A developer text is looked up before the type is read, so it does not fix the type yet.
                expect(def.GetTextForLanguage(568, eLanguageGerman), "Signal", 568, eLanguageGerman);
                SetInstrumentTypeForTesting(c.type);
                for (int lang = 0; lang <= 10; ++lang)
                    if (CInstrumentLanguageDef::IsLanguageAvailable(lang) != bool((c.offered >> lang) & 1))
                        out += "availability of " + std::to_string(lang) + "\n";
                if (CInstrumentLanguageDef::CountAvailableLanguages() != c.count) out += "count\n";
                expect(def.GetTextForLanguage(21, 0), c.text21, 21, 0);
                if (c.type == eInstrumentPellamZento) {
                    for (int lang : {1, 7, 8, 9, 10, 255}) {
                        expect(def.GetTextForLanguage(21, lang), "Patient name", 21, lang);
                        expect(def.GetTextForLanguage(234, lang), "Analyzer calibrated successfully", 234,
                               lang);
                        expect(def.GetTextForLanguage(431, lang),
                               "If the problem persists contact Pellam Technical Service", 431, lang);
                        for (uint32_t id = 558; id <= 567; ++id)
                            expect(def.GetTextForLanguage(id, lang), "", id, lang);
                        expect(def.GetTextForLanguage(650, lang), "Wrong text!", 650, lang);
                    }
                    SetInstrumentTypeForTesting(eInstrumentKorvalin);  // the branding stays for the run
                    expect(def.GetTextForLanguage(21, eLanguageGerman), "Patient name", 21, eLanguageGerman);
                }
                std::fputs(out.c_str(), stderr);
                std::_Exit(out.empty() ? 0 : 1);
            },
            ::testing::ExitedWithCode(0), "")
            << "type " << c.type;
    }
}

TEST(InstrumentLanguageLabels, SetControlTextUsesTheCurrentLanguageAndTheFormatter) {
    CFixedLanguage source(eLanguageGerman);
    const CInstrumentLanguage language(&source);
    CRecordingControl field;
    language.SetControlText(&field, 1, &g_colon);
    language.SetControlText(&field, 1);
    language.SetControlText(&field, 0, &g_colon);  // the colon adder leaves an empty text empty
    source.language = eLanguageEnglish;
    language.SetControlText(&field, 1, &g_colon);
    language.SetControlText(nullptr, 1, &g_colon);  // a missing control is skipped
    EXPECT_EQ(field.texts, (std::vector<std::string>{"Sprache:", "Sprache", "", "Language:"}));
}

TEST(InstrumentLanguageLabels, RefreshRelabelsEveryRememberedControlInOrder) {
    CFixedLanguage source(eLanguageEnglish);
    const CInstrumentLanguage language(&source);
    language.SetControlTextAndRemember(&g_third, 418);
    language.SetControlTextAndRemember(&g_first, 1, &g_colon);
    language.SetControlTextAndRemember(&g_second, 0, &g_colon);
    source.language = eLanguageFrench;
    g_labelLog.clear();
    language.RefreshAllTexts();
    std::vector<std::pair<const void*, std::string>> mine;
    for (const auto& entry : g_labelLog)
        if (entry.first == &g_first || entry.first == &g_second || entry.first == &g_third)
            mine.push_back(entry);
    const std::vector<std::pair<const void*, std::string>> expected = {
        {&g_third, GetLanguageTable(eLanguageFrench)[418]}, {&g_first, "Langue:"}, {&g_second, ""}};
    EXPECT_EQ(mine, expected);
}

TEST(InstrumentLanguagePlaceholders, FilledLeftToRightOnlyWhereTheMarkStood) {
    const struct {
        std::string text;
        std::vector<std::string> values;
        std::string expected;
    } cases[] = {
        {CInstrumentLanguageDef(nullptr).GetTextForLanguage(437, eLanguageEnglish),
         {"Anna", "passed", "12.03.2024"},
         "Anna has passed the analyser self test on 12.03.2024"},
        {"<TAG_AMOUNT> drops", {"3", "4"}, "3 drops"},
        {"a <TAG_AMOUNT> b <TAG_AMOUNT> c", {"1"}, "a 1 b <TAG_AMOUNT> c"},
        // Inserted values are not searched again, nor do they complete a mark with the text around.
        {"<TAG_AMOUNT>-<TAG_AMOUNT>", {"<TAG_AMOUNT>", "x"}, "<TAG_AMOUNT>-x"},
        {"<TAG_<TAG_AMOUNT>AMOUNT>", {""}, "<TAG_AMOUNT>"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(CInstrumentLanguageDef::FillPlaceholders(c.text, c.values), c.expected) << c.text;
}
