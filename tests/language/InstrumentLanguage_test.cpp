// Text lookup, language availability, control labelling and placeholder filling.
#include "language/InstrumentLanguage.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "foundation/InstrumentCommonData.h"
#include "foundation/InstrumentEnums.h"
#include "foundation/InstrumentSettings.h"
#include "language/LanguageTables.h"
#include "ui/TextControl.h"

namespace {

using NS_LanguageTexts::GetLanguageTable;

const std::vector<int> kAllLanguages = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9};
// Language values that are no language, all shown in English.
const std::vector<int> kBadLanguages = {10, 11, 255, -1, 1000};

class CFixedLanguage : public CInstrumentLanguageSource {
public:
    explicit CFixedLanguage(int language) : m_language(language) {}
    int GetLanguage() const override { return m_language; }
    void Set(int language) { m_language = language; }

private:
    int m_language;
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
CRecordingControl g_first, g_second, g_third, g_twice, g_formatted, g_neverRemembered;

const CInstrumentLanguage::CColonAdder g_colon;

// Runs checks in a process of its own, as an instrument of the given type: the lookup copies the
// type once per process, so a type other than the start-up one cannot be tried in this process.
// checks returns a description of every mismatch, empty when all held.
void ExpectInFreshProcess(int type, const std::function<std::string()>& checks) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            SetInstrumentTypeForTesting(type);
            const std::string failures = checks();
            std::fputs(failures.c_str(), stderr);
            std::fflush(stderr);
            std::_Exit(failures.empty() ? 0 : 1);
        },
        ::testing::ExitedWithCode(0), "");
}

// Collects mismatches for ExpectInFreshProcess.
class CMismatches {
public:
    template <class A, class B>
    void Equal(const A& actual, const B& expected, const std::string& what) {
        if (!(actual == expected))
            m_out << what << ": got \"" << actual << "\", want \"" << expected << "\"\n";
    }
    std::string Get() const { return m_out.str(); }

private:
    std::ostringstream m_out;
};

}  // namespace

TEST(InstrumentLanguageLookup, IdsWithoutATextGiveTheEmptyTextInEveryLanguage) {
    const CInstrumentLanguageDef def(nullptr);
    std::vector<int> languages = kAllLanguages;
    languages.insert(languages.end(), kBadLanguages.begin(), kBadLanguages.end());
    for (int language : languages) {
        for (uint32_t id : {0u, 651u, 652u, 1000u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
            EXPECT_EQ(def.GetTextForLanguage(id, language), "") << "id " << id << ", language " << language;
        }
    }
}

TEST(InstrumentLanguageLookup, DeveloperTextsAreTheSameInEveryLanguage) {
    const CInstrumentLanguageDef def(nullptr);
    std::vector<int> languages = kAllLanguages;
    languages.insert(languages.end(), kBadLanguages.begin(), kBadLanguages.end());
    for (int language : languages) {
        EXPECT_EQ(def.GetTextForLanguage(568, language), "Signal") << language;
        EXPECT_EQ(def.GetTextForLanguage(569, language), "Developer") << language;
        EXPECT_EQ(def.GetTextForLanguage(650, language), "Wrong text!") << language;
    }
    // The last translated id still comes from the language's own table.
    EXPECT_EQ(&def.GetTextForLanguage(567, eLanguageJapanese), &GetLanguageTable(eLanguageJapanese)[567]);
    EXPECT_EQ(def.GetTextForLanguage(567, eLanguageEnglish),
              "Plasma QC failed\nCheck the control material and repeat the test");
}

TEST(InstrumentLanguageLookup, LanguageOutsideTheTenIsEnglish) {
    const CInstrumentLanguageDef def(nullptr);
    for (int language : kBadLanguages) {
        EXPECT_EQ(def.GetTextForLanguage(1, language), "Language") << language;
        EXPECT_EQ(def.GetTextForLanguage(417, language), "Software upgrade in progress") << language;
        EXPECT_EQ(def.GetTextForLanguage(21, language), "Sample ID") << language;
    }
    const CFixedLanguage beyond(255);
    EXPECT_EQ(CInstrumentLanguageDef(&beyond).GetText(2), "Settings");
}

TEST(InstrumentLanguageLookup, EachLanguageValueReadsItsOwnTable) {
    // The first two texts of every table, in the order of the language values: a swapped table
    // shows up here.
    const std::vector<std::pair<std::string, std::string>> expected = {
        {"Language", "Settings"},
        {"Sprog", "Indstillinger"},
        {"Språk", "Inställningar"},
        {"Lingua", "Impostazioni"},
        {"Taal", "Instellingen"},
        {"Langue", "Paramètres"},
        {"Idioma", "Configuración"},
        {"Sprache", "Einstellungen"},
        {"言語", "設定"},
        {"语言", "设置"},
    };
    const CInstrumentLanguageDef def(nullptr);
    for (int language : kAllLanguages) {
        EXPECT_EQ(def.GetTextForLanguage(1, language), expected[language].first) << language;
        EXPECT_EQ(def.GetTextForLanguage(2, language), expected[language].second) << language;
    }
}

TEST(InstrumentLanguageLookup, GetTextFollowsTheSourceAndKeepsItsReference) {
    CFixedLanguage source(eLanguageGerman);
    const CInstrumentLanguageDef def(&source);
    const std::string& german = def.GetText(422);
    EXPECT_EQ(german, "Upgrade erfolgreich");
    source.Set(eLanguageEnglish);
    EXPECT_EQ(def.GetText(422), "Upgrade successful");
    // The reference handed out earlier still holds the German text: it points into the table.
    EXPECT_EQ(german, "Upgrade erfolgreich");
    EXPECT_EQ(&def.GetText(422), &def.GetText(422));

    // Without a source the texts are English.
    EXPECT_EQ(CInstrumentLanguageDef(nullptr).GetText(422), "Upgrade successful");
}

TEST(InstrumentLanguageLookup, ProgramLanguageFollowsTheLanguageSetting) {
    const int saved = GetSettingLanguage();
    SetSettingLanguage(eLanguageGerman);
    EXPECT_EQ(GetText(417), "Software upgrade in Arbeit");
    EXPECT_EQ(&GetInstrumentLanguage(), &GetInstrumentLanguage());
    SetSettingLanguage(eLanguageEnglish);
    EXPECT_EQ(GetText(417), "Software upgrade in progress");
    EXPECT_EQ(GetText(0xFFFFFFFF), "");
    SetSettingLanguage(saved);
}

TEST(InstrumentLanguageLookup, RomanceLanguagesAreItalianFrenchAndSpanish) {
    CFixedLanguage source(0);
    const CInstrumentLanguageDef def(&source);
    for (int language = -1; language <= 11; ++language) {
        source.Set(language);
        const bool romance =
            language == eLanguageItalian || language == eLanguageFrench || language == eLanguageSpanish;
        EXPECT_EQ(def.IsRomanceLanguage(), romance) << language;
    }
}

TEST(InstrumentLanguageLookup, TypeChangesAfterTheFirstLookupAreNotSeen) {
    const CInstrumentLanguageDef def(nullptr);
    ASSERT_EQ(def.GetTextForLanguage(21, eLanguageEnglish), "Sample ID");
    ASSERT_EQ(CInstrumentLanguageDef::GetTextInstrumentType(), eInstrumentKorvalin);
    SetInstrumentTypeForTesting(eInstrumentPellamZento);
    EXPECT_EQ(def.GetTextForLanguage(21, eLanguageEnglish), "Sample ID");
    EXPECT_EQ(def.GetTextForLanguage(558, eLanguageEnglish), "PT/aPTT Combo");
    EXPECT_EQ(CInstrumentLanguageDef::CountAvailableLanguages(), 10);
    SetInstrumentTypeForTesting(eInstrumentKorvalin);
}

TEST(InstrumentLanguageLookup, PellamInstrumentShowsItsEnglishInEveryLanguage) {
    ExpectInFreshProcess(eInstrumentKorvalin, [] {
        CMismatches m;
        const CInstrumentLanguageDef def(nullptr);
        // A developer text is looked up before the type is read, so it does not fix the type yet.
        m.Equal(def.GetTextForLanguage(568, eLanguageGerman), "Signal", "568 before the type");
        SetInstrumentTypeForTesting(eInstrumentPellamZento);
        for (int language : {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 255}) {
            const std::string in = " in language " + std::to_string(language);
            m.Equal(def.GetTextForLanguage(21, language), "Patient name", "21" + in);
            m.Equal(def.GetTextForLanguage(234, language), "Analyzer calibrated successfully", "234" + in);
            m.Equal(def.GetTextForLanguage(431, language),
                    "If the problem persists contact Pellam Technical Service", "431" + in);
            m.Equal(def.GetTextForLanguage(417, language), "Software upgrade in progress", "417" + in);
            for (uint32_t id = 558; id <= 567; ++id)
                m.Equal(def.GetTextForLanguage(id, language), "", std::to_string(id) + in);
            m.Equal(def.GetTextForLanguage(568, language), "Signal", "568" + in);
            m.Equal(def.GetTextForLanguage(650, language), "Wrong text!", "650" + in);
            m.Equal(def.GetTextForLanguage(651, language), "", "651" + in);
        }
        // Only English is offered.
        for (int language = 0; language <= 10; ++language)
            m.Equal(CInstrumentLanguageDef::IsLanguageAvailable(language), language == 0,
                    "availability of " + std::to_string(language));
        m.Equal(CInstrumentLanguageDef::CountAvailableLanguages(), 1, "count");
        // The branding stays for the rest of the run.
        SetInstrumentTypeForTesting(eInstrumentKorvalin);
        m.Equal(def.GetTextForLanguage(21, eLanguageGerman), "Patient name", "21 after a type change");
        m.Equal(CInstrumentLanguageDef::GetTextInstrumentType(), 1, "type seen by the texts");
        return m.Get();
    });
}

TEST(InstrumentLanguageLookup, TandemInstrumentOffersEnglishAndSpanish) {
    ExpectInFreshProcess(eInstrumentLumetTandem, [] {
        CMismatches m;
        for (int language = 0; language <= 10; ++language)
            m.Equal(CInstrumentLanguageDef::IsLanguageAvailable(language),
                    language == eLanguageEnglish || language == eLanguageSpanish,
                    "availability of " + std::to_string(language));
        m.Equal(CInstrumentLanguageDef::CountAvailableLanguages(), 2, "count");
        // Its texts are the ordinary tables.
        const CInstrumentLanguageDef def(nullptr);
        m.Equal(def.GetTextForLanguage(21, eLanguageEnglish), "Sample ID", "21");
        m.Equal(def.GetTextForLanguage(1, eLanguageSpanish), "Idioma", "1 in Spanish");
        m.Equal(def.GetTextForLanguage(558, eLanguageEnglish), "PT/aPTT Combo", "558");
        return m.Get();
    });
}

TEST(InstrumentLanguageAvailability, OrdinaryInstrumentOffersAllTenLanguages) {
    ASSERT_EQ(CInstrumentLanguageDef::GetTextInstrumentType(), eInstrumentKorvalin);
    for (int language : kAllLanguages)
        EXPECT_TRUE(CInstrumentLanguageDef::IsLanguageAvailable(language)) << language;
    for (int language : kBadLanguages)
        EXPECT_FALSE(CInstrumentLanguageDef::IsLanguageAvailable(language)) << language;
    EXPECT_EQ(CInstrumentLanguageDef::CountAvailableLanguages(), 10);
}

TEST(InstrumentLanguageLabels, SetControlTextUsesTheCurrentLanguageAndTheFormatter) {
    CFixedLanguage source(eLanguageGerman);
    const CInstrumentLanguage language(&source);
    CRecordingControl field;
    language.SetControlText(&field, 1, &g_colon);
    language.SetControlText(&field, 1);
    language.SetControlText(&field, 0, &g_colon);
    source.Set(eLanguageEnglish);
    language.SetControlText(&field, 1, &g_colon);
    EXPECT_EQ(field.texts, (std::vector<std::string>{"Sprache:", "Sprache", "", "Language:"}));
    // A missing control is skipped.
    language.SetControlText(nullptr, 1, &g_colon);
}

TEST(InstrumentLanguageLabels, ColonAdderLeavesAnEmptyTextEmpty) {
    const CInstrumentLanguage language(nullptr);
    std::string text = "Language";
    g_colon.Format(nullptr, 1, text, language);
    EXPECT_EQ(text, "Language:");
    text.clear();
    g_colon.Format(nullptr, 0, text, language);
    EXPECT_EQ(text, "");
}

TEST(InstrumentLanguageLabels, FormatterSeesControlIdAndLanguageObject) {
    struct CProbe : CInstrumentLanguage::CFormatText {
        mutable CTextBearingControl* control = nullptr;
        mutable uint32_t id = 0;
        mutable const CInstrumentLanguage* language = nullptr;
        void Format(CTextBearingControl* c, uint32_t textId, std::string& text,
                    const CInstrumentLanguage& l) const override {
            control = c;
            id = textId;
            language = &l;
            text = "[" + text + "]";
        }
    } probe;
    const CInstrumentLanguage language(nullptr);
    CRecordingControl field;
    language.SetControlText(&field, 4, &probe);
    EXPECT_EQ(probe.control, &field);
    EXPECT_EQ(probe.id, 4u);
    EXPECT_EQ(probe.language, &language);
    EXPECT_EQ(field.texts, std::vector<std::string>{"[Home]"});
}

TEST(InstrumentLanguageLabels, RefreshRelabelsEveryRememberedControlInOrder) {
    CFixedLanguage source(eLanguageEnglish);
    const CInstrumentLanguage language(&source);
    language.SetControlTextAndRemember(&g_third, 418);
    language.SetControlTextAndRemember(&g_first, 1, &g_colon);
    language.SetControlTextAndRemember(&g_second, 0, &g_colon);
    EXPECT_EQ(g_first.texts.back(), "Language:");

    source.Set(eLanguageFrench);
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

TEST(InstrumentLanguageLabels, ReapplyUsesTheFirstRememberedLabel) {
    CFixedLanguage source(eLanguageEnglish);
    const CInstrumentLanguage language(&source);
    language.SetControlTextAndRemember(&g_twice, 3);
    language.SetControlTextAndRemember(&g_twice, 4, &g_colon);
    ASSERT_EQ(g_twice.texts, (std::vector<std::string>{"Analyze", "Home:"}));

    source.Set(eLanguageGerman);
    EXPECT_TRUE(language.ReapplyText(&g_twice));
    EXPECT_EQ(g_twice.texts.back(), GetLanguageTable(eLanguageGerman)[3]);

    const auto& remembered = CInstrumentLanguage::GetRememberedLabels();
    const size_t before = remembered.size();
    g_labelLog.clear();
    EXPECT_FALSE(language.ReapplyText(&g_neverRemembered));
    EXPECT_FALSE(language.ReapplyText(nullptr));
    EXPECT_TRUE(g_neverRemembered.texts.empty());
    EXPECT_TRUE(g_labelLog.empty());
    EXPECT_EQ(remembered.size(), before);
}

TEST(InstrumentLanguageLabels, RememberedLabelsKeepTheirFormatterAcrossGrowth) {
    // Enough labels to make the list grow several times; every one must survive the moves.
    const CInstrumentLanguage language(nullptr);
    const size_t before = CInstrumentLanguage::GetRememberedLabels().size();
    for (int i = 0; i < 100; ++i) language.SetControlTextAndRemember(&g_formatted, 5 + i % 3, &g_colon);
    const auto& labels = CInstrumentLanguage::GetRememberedLabels();
    ASSERT_EQ(labels.size(), before + 100);
    for (size_t i = before; i < labels.size(); ++i) {
        EXPECT_EQ(labels[i].GetControl(), &g_formatted);
        EXPECT_EQ(labels[i].GetTextId(), 5 + (i - before) % 3);
        EXPECT_EQ(labels[i].GetFormatter(), &g_colon);
    }
    g_formatted.texts.clear();
    EXPECT_TRUE(language.ReapplyText(&g_formatted));
    EXPECT_EQ(g_formatted.texts, std::vector<std::string>{"Back:"});
}

TEST(InstrumentLanguagePlaceholders, MarkIsTwelveCharacters) {
    EXPECT_EQ(CInstrumentLanguageDef::GetPlaceholder(), "<TAG_AMOUNT>");
    EXPECT_EQ(CInstrumentLanguageDef::GetPlaceholderLength(), 12u);
    EXPECT_EQ(&CInstrumentLanguageDef::GetPlaceholder(), &CInstrumentLanguageDef::GetPlaceholder());
}

TEST(InstrumentLanguagePlaceholders, FilledLeftToRight) {
    const CInstrumentLanguageDef def(nullptr);
    EXPECT_EQ(CInstrumentLanguageDef::FillPlaceholders(def.GetTextForLanguage(437, eLanguageEnglish),
                                                       {"Anna", "passed", "12.03.2024"}),
              "Anna has passed the analyser self test on 12.03.2024");
    EXPECT_EQ(CInstrumentLanguageDef::FillPlaceholders("<TAG_AMOUNT><TAG_AMOUNT>", {"1", "2"}), "12");
    EXPECT_EQ(CInstrumentLanguageDef::FillPlaceholders("Minimum <TAG_AMOUNT> g × min", {"50"}),
              "Minimum 50 g × min");
    EXPECT_EQ(CInstrumentLanguageDef::FillPlaceholders("<TAG_AMOUNT> drops", {""}), " drops");
}

TEST(InstrumentLanguagePlaceholders, ExtraValuesIgnoredMissingValuesLeaveTheMark) {
    EXPECT_EQ(CInstrumentLanguageDef::FillPlaceholders("<TAG_AMOUNT> drops", {"3", "4", "5"}), "3 drops");
    EXPECT_EQ(CInstrumentLanguageDef::FillPlaceholders("a <TAG_AMOUNT> b <TAG_AMOUNT> c", {"1"}),
              "a 1 b <TAG_AMOUNT> c");
    EXPECT_EQ(CInstrumentLanguageDef::FillPlaceholders("a <TAG_AMOUNT> b", std::vector<std::string>{}),
              "a <TAG_AMOUNT> b");
    EXPECT_EQ(CInstrumentLanguageDef::FillPlaceholders("no mark", {"1"}), "no mark");
    EXPECT_EQ(CInstrumentLanguageDef::FillPlaceholders("", {"1"}), "");
    // Something that merely resembles the mark is text.
    EXPECT_EQ(CInstrumentLanguageDef::FillPlaceholders("<TAG_AMOUNT <tag_amount> <TAG_AMOUNT>", {"x"}),
              "<TAG_AMOUNT <tag_amount> x");
}

TEST(InstrumentLanguagePlaceholders, InsertedValuesAreNotSearchedAgain) {
    EXPECT_EQ(CInstrumentLanguageDef::FillPlaceholders("<TAG_AMOUNT>-<TAG_AMOUNT>", {"<TAG_AMOUNT>", "x"}),
              "<TAG_AMOUNT>-x");
    // A value that completes a mark with the text around it does not create one either.
    EXPECT_EQ(CInstrumentLanguageDef::FillPlaceholders("<TAG_<TAG_AMOUNT>AMOUNT>", {""}), "<TAG_AMOUNT>");
}
