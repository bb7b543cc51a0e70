// Settings files read and written through explicit paths in a temporary folder; the fixed files
// of the code folder are covered by the sandbox tests.
#include "foundation/InstrumentSettings.h"

#include "tests/common/TestFiles.h"

#include <gtest/gtest.h>

#include <string>

using namespace std::string_literals;

namespace {

CInstrumentSettingsCollection& Collection() { return *CSingleton<CInstrumentSettingsCollection>::GetInstance(); }

// A text item in an origin of its own, so that the files of the instrument's items stay as they are.
const int kTextOrigin = 4;
CInstrumentSettingsItemString g_name(kTextOrigin, &GetInstrumentKey(eKeyInstrumentName), "unnamed");

// The values of an origin in the bytes a save writes, joined by "|". The saved file's form is
// pinned by the sandbox test's reset, its loading back by fuzz_settings_scanner.
std::string Values(int origin) {
    std::string values;
    const CInstrumentSettingsCollection::CInstrumentSettingsItemOriginCount items(Collection(), origin);
    for (CInstrumentSettingsItemBase* item : items.GetItems())
        values += (values.empty() ? "" : "|") + BytesCarriedByText(item->GetAsText());
    return values;
}

TEST(SettingsFile, LoadTakesValuesExactly) {
    const vtxtest::CTestFolder folder;
    const std::string rest = "|BEEP_ONCE|BOPOMOFO|KANA";
    const std::string name = "Caf\xe9 \xc3\xa9 \xf4\x96\x9e\x9e \xed\xa0\x80\x01\x7f\xff";
    const struct {
        int origin;
        std::string file;
        bool complete;  // every key of the origin found
        std::string values;
    } cases[] = {
        // Beforehand: Italian, 2900 Hz, LED channel 1 at 7, the rest at the defaults.
        // An empty value counts as present but leaves the item as it is; empty lines are skipped.
        {0,
         "Language = \r\nDateFormat = EU\r\nBeepAudioReminder = BEEP_30_SEC\r\n\r\n\r\n"
         "ChineseLiteration = PINYIN\r\nJapaneseLiteration = ROMAJI\r\n",
         true, "IT|EU|BEEP_30_SEC|PINYIN|ROMAJI"},
        {0, "DateFormat = EU\nLanguage = DE\n", false, "DE|EU" + rest},
        // A key counts anywhere in a line and its first line wins; one key per line, tried in
        // registration order; without the separator no key.
        {0, "XLanguage = DE\r\nLanguage = FR\r\n", false, "DE|US" + rest},
        {0, "DateFormat = EU Language = DE\r\n", false, "DE|US" + rest},
        {0, "Language=DE\r\nLanguage DE\r\n", false, "IT|US" + rest},
        // The value as it stands (a member text only when exact is fuzz_settings_items').
        {0, "Language = SE", false, "SE|US" + rest},
        {0, "Language = DE\0trailing\r\nDateFormat = \0EU\r\n"s, false, "DE|US" + rest},
        {0,
         "Language = \xf4\x96\x9e\x9e\r\nDateFormat = \xc9U\r\nBeepAudioReminder = \xed\xa0\x80\r\n"
         "ChineseLiteration = NONE\r\n",
         false, "EN|US|BEEP_ONCE|NONE|KANA"},
        {1, "PlasmaQcMode = TRUE\r\n", true, "TRUE"},
        {1, "PlasmaQcMode = true\r\n", true, "FALSE"},
        {2, "BeepFrequency = 3100HZ\r\nLEDIntensityCH0 = 512\r\nLEDIntensityCH1 = 40x\r\n", true,
         "2700HZ|512|40"},
        // LED numbers are what a string stream reads.
        {2, "LEDIntensityCH1 = 70000\r\n", false, "2900HZ|1023|65535"},
        {2, "LEDIntensityCH1 = -1\r\n", false, "2900HZ|1023|65535"},
        // A value's bytes are kept as they came, whatever their encoding.
        {kTextOrigin, "Instrument Name = " + name + "\r\n", true, name},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.file);
        for (int origin : {0, 1, 2, kTextOrigin}) Collection().ResetOrigin(origin, 0);
        SetSettingLanguage(eLanguageItalian);
        GetSettingsItemBeepFrequency().Set(eBeep2900Hz);
        GetSettingsItemLEDIntensityCH1().Set(7);
        ASSERT_TRUE(vtxtest::WriteFile(folder / "in", c.file));
        EXPECT_EQ(Collection().LoadOriginFromFile(c.origin, folder / "in"), c.complete);
        EXPECT_EQ(Values(c.origin), c.values);
    }
    // The last case's value goes back to its file byte for byte.
    ASSERT_TRUE(Collection().SaveOriginToFile(kTextOrigin, folder / "out"));
    EXPECT_EQ(vtxtest::ReadFile(folder / "out"), "Instrument Name = " + name + "\r\n");
    EXPECT_FALSE(Collection().LoadOriginFromFile(0, folder / "missing"));
    EXPECT_FALSE(Collection().SaveOriginToFile(0, folder.Path()));
    for (int origin : {0, 1, 2, kTextOrigin}) Collection().ResetOrigin(origin, 0);
}

}  // namespace
