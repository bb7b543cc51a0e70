// Text lookup, language availability, control labelling and placeholder filling.
#include "language/InstrumentLanguage.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <tuple>
#include <vector>

#include "foundation/InstrumentEnums.h"
#include "foundation/InstrumentSettings.h"
#include "foundation/common/InstrumentCommonData.h"
#include "language/LanguageTables.h"
#include "ui/TextControl.h"

namespace {

using NS_LanguageTexts::GetLanguageTable;

class CFixedLanguage : public CInstrumentLanguageSource {
public:
    explicit CFixedLanguage(int language) : language(language), value(language) {}
    int GetLanguage() const override { return language; }
    int GetLanguageValue() const override { return value; }
    int language, value;
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
CRecordingControl g_first, g_second, g_third, g_fourth;
const CInstrumentLanguage::CColonAdder g_colon;

}  // namespace

TEST(InstrumentLanguageLookup, IdsAndLanguagesOfEveryRange) {
    const CInstrumentLanguageDef def(nullptr);
    const struct {
        uint32_t id;
        int language;
        const char* text;
    } cases[] = {
        // clang-format off
        {0, 3, ""}, {652, 8, ""}, {0xFFFFFFFFu, 0, ""},             // no text: the empty one
        {568, 8, "Signal"}, {650, 9, "Wrong text!"},                // developer texts in every language
        {417, 10, "Software upgrade in progress"}, {417, -1, "Software upgrade in progress"},
        {422, 7, "Upgrade erfolgreich"},
        {651, 7, "Upgrade nicht für dieses Gerät signiert"}, {651, 10, "Update not signed for this instrument"},
        // Each language value reads its own table.
        {1, 0, "Language"}, {1, 1, "Sprog"}, {1, 2, "Språk"}, {1, 3, "Lingua"}, {1, 4, "Taal"},
        {1, 5, "Langue"}, {1, 6, "Idioma"}, {1, 7, "Sprache"}, {1, 8, "言語"}, {1, 9, "语言"},
        // clang-format on
    };
    for (const auto& c : cases)
        EXPECT_EQ(def.GetTextForLanguage(c.id, c.language), c.text) << c.id << "/" << c.language;
    EXPECT_EQ(&def.GetTextForLanguage(567, eLanguageJapanese), &GetLanguageTable(eLanguageJapanese)[567]);

    // The lookups ask the source's language, the Romance question its language value.
    CFixedLanguage source(eLanguageGerman);
    const CInstrumentLanguageDef followed(&source);
    const std::string& german = followed.GetText(422);
    source.language = eLanguageEnglish;
    EXPECT_EQ(followed.GetText(422), "Upgrade successful");
    EXPECT_EQ(german, "Upgrade erfolgreich") << "a returned text stays valid";
    EXPECT_FALSE(followed.IsRomanceLanguage());
    source.value = eLanguageFrench;
    EXPECT_TRUE(followed.IsRomanceLanguage());

    const int saved = GetSettingLanguage();
    SetSettingLanguage(eLanguageGerman);
    EXPECT_EQ(GetText(417), "Software upgrade in Arbeit");
    SetSettingLanguage(saved);
}

// The lookup copies the instrument type once per process: each type in a child, exiting with the
// number of its rows that do not hold.
TEST(InstrumentLanguageLookup, PellamAndTandemInstruments) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const std::string service = "If the problem persists contact Pellam Technical Service";
    const struct {
        int type, count, offered;                                   // offered: bit n for language n
        std::vector<std::tuple<uint32_t, int, std::string>> texts;  // id, language, text
    } cases[] = {
        {eInstrumentKorvalin, 10, 0x3FF, {{21, 0, "Sample ID"}}},
        // Pellam's English in every language, its developer range empty.
        {eInstrumentPellamZento,
         1,
         0x001,
         {{21, 0, "Patient name"},
          {21, 7, "Patient name"},
          {21, 255, "Patient name"},
          {558, 9, ""},
          {567, 255, ""},
          {234, 9, "Analyzer calibrated successfully"},
          {431, 7, service},
          {650, 9, "Wrong text!"},
          {651, 8, "Update not signed for this instrument"}}},
        {eInstrumentLumetTandem, 2, 0x041, {{21, 0, "Sample ID"}}},
    };
    for (const auto& c : cases) {
        EXPECT_EXIT(
            {
                const CInstrumentLanguageDef def(nullptr);
                // A developer text is looked up before the type is read, so it does not fix the type yet.
                int wrong = def.GetTextForLanguage(568, eLanguageGerman) != "Signal";
                SetInstrumentTypeForTesting(c.type);
                for (int lang = 0; lang <= 10; ++lang)
                    wrong += CInstrumentLanguageDef::IsLanguageAvailable(lang) != bool((c.offered >> lang) & 1);
                wrong += CInstrumentLanguageDef::CountAvailableLanguages() != c.count;
                // The branding stays for the run.
                SetInstrumentTypeForTesting(c.type == eInstrumentPellamZento ? eInstrumentKorvalin
                                                                             : eInstrumentPellamZento);
                for (const auto& [id, lang, text] : c.texts) wrong += def.GetTextForLanguage(id, lang) != text;
                std::_Exit(wrong);
            },
            ::testing::ExitedWithCode(0), "")
            << "type " << c.type;
    }
}

TEST(InstrumentLanguageLabels, RefreshRelabelsEveryRememberedControlInOrder) {
    CFixedLanguage source(eLanguageGerman);
    const CInstrumentLanguage language(&source);
    language.SetControlTextAndRemember(&g_third, 418);
    language.SetControlTextAndRemember(&g_first, 1, &g_colon);
    language.SetControlTextAndRemember(&g_second, 0, &g_colon);  // the colon adder leaves "" empty
    language.SetControlText(nullptr, 1, &g_colon);               // a missing control is skipped
    EXPECT_EQ(g_first.texts.back(), "Sprache:");
    source.language = eLanguageEnglish;
    EXPECT_FALSE(language.ReapplyText(&g_fourth));
    EXPECT_TRUE(language.ReapplyText(&g_first));
    EXPECT_EQ(g_first.texts.back(), "Language:");
    source.language = eLanguageFrench;
    g_labelLog.clear();
    language.RefreshAllTexts();  // the only labels this program remembers
    const std::vector<std::pair<const void*, std::string>> expected = {
        {&g_third, GetLanguageTable(eLanguageFrench)[418]}, {&g_first, "Langue:"}, {&g_second, ""}};
    EXPECT_EQ(g_labelLog, expected);
}
