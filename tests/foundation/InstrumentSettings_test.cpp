// Settings files read and written through explicit paths in a temporary folder; the fixed files
// of the code folder are covered by the sandbox tests.
#include "foundation/InstrumentSettings.h"

#include "tests/foundation/TestFiles.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

using namespace std::string_literals;
using vtxtest::ReadFile;
using vtxtest::WriteFile;

namespace {

CInstrumentSettingsCollection& Collection() { return *CSingleton<CInstrumentSettingsCollection>::GetInstance(); }

class SettingsFile : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_FALSE(m_folder.Path().empty());
        ResetAll();
    }
    void TearDown() override { ResetAll(); }
    static void ResetAll() {
        for (int origin = 0; origin < eSettingsOriginCount; ++origin) Collection().ResetOrigin(origin, 0);
    }
    bool Load(int origin, const std::string& bytes) {
        WriteFile(m_folder / "in.txt", bytes);
        return Collection().LoadOriginFromFile(origin, m_folder / "in.txt");
    }
    std::string Save(int origin) {
        EXPECT_TRUE(Collection().SaveOriginToFile(origin, m_folder / "out.txt"));
        return ReadFile(m_folder / "out.txt");
    }

    vtxtest::CTestFolder m_folder;
};

TEST_F(SettingsFile, SaveWritesOneLinePerItemInRegistrationOrder) {
    SetSettingLanguage(eLanguageJapanese);
    SetSettingDateFormat(eDateFormatEU);
    GetSettingsItemPlasmaQcMode().Set(true);
    GetSettingsItemLEDIntensityCH1().Set(7);
    const std::string saved = Save(0);
    EXPECT_EQ(saved,
              "Language = JP\r\nDateFormat = EU\r\nBeepAudioReminder = BEEP_ONCE\r\n"
              "ChineseLiteration = BOPOMOFO\r\nJapaneseLiteration = KANA\r\n");
    EXPECT_EQ(Save(1), "PlasmaQcMode = TRUE\r\n");
    EXPECT_EQ(Save(2), "BeepFrequency = 2700HZ\r\nLEDIntensityCH0 = 1023\r\nLEDIntensityCH1 = 7\r\n");

    // What was saved loads back completely.
    ResetAll();
    EXPECT_TRUE(Load(0, saved));
    EXPECT_EQ(GetSettingLanguage(), eLanguageJapanese);
    EXPECT_EQ(GetSettingDateFormat(), eDateFormatEU);

    // A longer old file is truncated; only a file that cannot be opened fails.
    WriteFile(m_folder / "out.txt", std::string(5000, 'x'));
    EXPECT_EQ(Save(1), "PlasmaQcMode = FALSE\r\n");
    EXPECT_FALSE(Collection().SaveOriginToFile(0, m_folder / "no/such/folder.txt"));
    EXPECT_FALSE(Collection().SaveOriginToFile(0, m_folder.Path()));
}

TEST_F(SettingsFile, KeysAreFoundAnywhereInALineAndValuesAreTakenExactly) {
    const struct {
        std::string file;
        eInstrumentLanguage language;  // Italian beforehand: kept when no key is found
        eInstrumentDateFormat dateFormat;
    } cases[] = {
        {"Language = DE\r\nDateFormat = EU\r\n", eLanguageGerman, eDateFormatEU},
        {"DateFormat = EU\nLanguage = DE\n", eLanguageGerman, eDateFormatEU},
        {"XLanguage = DE\r\n", eLanguageGerman, eDateFormatUS},
        {"Language = FR\r\nLanguage = DE\r\n", eLanguageFrench, eDateFormatUS},
        // One key per line: the keys are tried in registration order, the first match takes the line.
        {"DateFormat = EU Language = DE\r\n", eLanguageGerman, eDateFormatUS},
        {"Language=DE\r\nLanguage DE\r\n", eLanguageItalian, eDateFormatUS},  // no separator, no key
        {"Language = \r\n", eLanguageItalian, eDateFormatUS},                 // empty value keeps the item
        {"Language = DE \r\n", eLanguageEnglish, eDateFormatUS},              // untrimmed: the default
        {"Language = de\r\n", eLanguageEnglish, eDateFormatUS},
        // What the reader can make out of a damaged file is taken.
        {"Language = SE", eLanguageSwedish, eDateFormatUS},
        {"Language = DE\0trailing\r\nDateFormat = \0EU\r\n"s, eLanguageGerman, eDateFormatUS},
        // Bytes that are no UTF-8 (past U+10FFFF, a surrogate, Latin-1) are a value like any other.
        {"Language = \xf4\x96\x9e\x9e\r\nDateFormat = EU\r\n", eLanguageEnglish, eDateFormatEU},
        {"Language = \xed\xa0\x80\r\nDateFormat = \xc9U\r\n", eLanguageEnglish, eDateFormatUS},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.file);
        ResetAll();
        SetSettingLanguage(eLanguageItalian);
        EXPECT_FALSE(Load(0, c.file));  // some keys are always missing
        EXPECT_EQ(GetSettingLanguage(), c.language);
        EXPECT_EQ(GetSettingDateFormat(), c.dateFormat);
    }

    SetSettingLanguage(eLanguageSwedish);
    EXPECT_TRUE(Load(0,
                     "Language = \r\nDateFormat = EU\r\nBeepAudioReminder = BEEP_30_SEC\r\n"
                     "\r\n\r\nChineseLiteration = PINYIN\r\nJapaneseLiteration = ROMAJI\r\n"));
    EXPECT_EQ(GetSettingLanguage(), eLanguageSwedish);
    EXPECT_EQ(GetSettingsItemBeepAudioReminder().Get(), eBeep30Sec);
    EXPECT_EQ(GetSettingsItemJapaneseLiteration().Get(), NS_JapaneseLiteration::eJapaneseRomaji);
}

// An origin of its own, so that the files of the instrument's items stay as they are.
const int kTestOrigin = 4;
CInstrumentSettingsItemString g_name(kTestOrigin, &GetInstrumentKey(eKeyInstrumentName), "unnamed");

TEST_F(SettingsFile, OtherOriginsTakeTheirValuesExactly) {
    GetSettingsItemBeepFrequency().Set(eBeep2900Hz);
    Load(2, "BeepFrequency = 3100HZ\r\n");
    EXPECT_EQ(GetSettingsItemBeepFrequency().GetAsText(), "2700HZ");

    // Numbers are what a string stream reads; only a text without a number keeps the default.
    const struct {
        const char* text;
        unsigned short value;
    } numbers[] = {{"512", 512}, {"40x", 40}, {" 7", 7}, {"high", 1023}, {"70000", 65535}, {"-1", 65535}};
    for (const auto& n : numbers) {
        SCOPED_TRACE(n.text);
        EXPECT_TRUE(Load(2, "LEDIntensityCH0 = 1\r\nLEDIntensityCH1 = "s + n.text + "\r\nBeepFrequency = 2300HZ\r\n"));
        EXPECT_EQ(GetSettingsItemLEDIntensityCH1().Get(), n.value);
    }

    // A value's bytes go back to the file as they came, whatever their encoding.
    for (const std::string line : {"Instrument Name = Caf\xe9 \xc3\xa9 \xf4\x96\x9e\x9e \xed\xa0\x80\r\n"s,
                                   "Instrument Name = \x01\x7f\xff\r\n"s}) {
        EXPECT_TRUE(Load(kTestOrigin, line));
        EXPECT_EQ(Save(kTestOrigin), line);
    }
}

TEST_F(SettingsFile, MissingFileLoadsNothingAndOriginWithoutItemsAlwaysLoads) {
    SetSettingLanguage(eLanguageDutch);
    EXPECT_FALSE(Collection().LoadOriginFromFile(0, m_folder / "missing.vtx"));
    EXPECT_EQ(GetSettingLanguage(), eLanguageDutch);
    EXPECT_TRUE(Collection().LoadOriginFromFile(5, m_folder / "missing.vtx"));
    EXPECT_TRUE(Collection().LoadOrigin(3));  // no items, no path: the file is never looked at
}

}  // namespace
