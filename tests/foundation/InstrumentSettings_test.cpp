// Settings files read and written through explicit paths in a temporary folder; the fixed files
// of the code folder are covered by the sandbox tests.
#include "foundation/InstrumentSettings.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

namespace {

class TempFolder {
public:
    TempFolder() {
        std::string pattern = std::string(std::getenv("TMPDIR") ? std::getenv("TMPDIR") : "/tmp") + "/vtxset.XXXXXX";
        m_path = mkdtemp(&pattern[0]) ? pattern : std::string();
    }
    ~TempFolder() {
        if (!m_path.empty()) std::system(("rm -rf '" + m_path + "'").c_str());
    }
    std::string File(const std::string& name) const { return m_path + "/" + name; }
    const std::string& Path() const { return m_path; }

private:
    std::string m_path;
};

// A literal with its NUL bytes.
template <size_t N>
std::string Bytes(const char (&literal)[N]) {
    return std::string(literal, N - 1);
}

std::string ReadBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void WriteBytes(const std::string& path, const std::string& bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

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
        WriteBytes(m_folder.File("in.txt"), bytes);
        return Collection().LoadOriginFromFile(origin, m_folder.File("in.txt"));
    }
    std::string Save(int origin) {
        EXPECT_TRUE(Collection().SaveOriginToFile(origin, m_folder.File("out.txt")));
        return ReadBytes(m_folder.File("out.txt"));
    }
    static void ExpectAllValid() {
        EXPECT_LT(static_cast<unsigned>(GetSettingsItemLanguage().GetValue()), 10u);
        EXPECT_LT(static_cast<unsigned>(GetSettingsItemDateFormat().GetValue()), 2u);
        EXPECT_LT(static_cast<unsigned>(GetSettingsItemBeepAudioReminder().GetValue()), 4u);
        EXPECT_LT(static_cast<unsigned>(GetSettingsItemChineseLiteration().GetValue()), 3u);
        EXPECT_LT(static_cast<unsigned>(GetSettingsItemJapaneseLiteration().GetValue()), 3u);
        EXPECT_LT(static_cast<unsigned>(GetSettingsItemBeepFrequency().GetValue()), 4u);
        // Every item still writes a well-formed line.
        for (CInstrumentSettingsItemBase* item : Collection().GetItems()) {
            const std::string text = item->GetAsText().utf8_string();
            EXPECT_EQ(text.find_first_of("\r\n"), std::string::npos) << item->GetKey();
        }
    }

    TempFolder m_folder;
};

TEST(SettingsPaths, FilesOfTheThreeOrigins) {
    EXPECT_EQ(GetSettingsFilePath(0), "/home/vtx/Code/settings.vtx");
    EXPECT_EQ(GetSettingsFilePath(1), "/home/vtx/Code/settings.lmo");
    EXPECT_EQ(GetSettingsFilePath(2), "/home/vtx/Code/factory.lmo");
    EXPECT_EQ(GetSettingsFilePath(3), "");
    EXPECT_EQ(GetSettingsFilePath(-1), "");
    EXPECT_EQ(GetInstrumentKey(eKeyInstrumentName), "Instrument Name");
    EXPECT_EQ(GetInstrumentKey(eKeyMacAddress), "MAC address");
    EXPECT_EQ(GetInstrumentKey(eKeyCount), "");
}

TEST_F(SettingsFile, SaveWritesOneLinePerItemInRegistrationOrder) {
    EXPECT_EQ(Save(0),
              "Language = EN\r\nDateFormat = US\r\nBeepAudioReminder = BEEP_ONCE\r\n"
              "ChineseLiteration = BOPOMOFO\r\nJapaneseLiteration = KANA\r\n");
    EXPECT_EQ(Save(1), "PlasmaQcMode = FALSE\r\n");
    EXPECT_EQ(Save(2), "BeepFrequency = 2700HZ\r\nLEDIntensityCH0 = 1023\r\nLEDIntensityCH1 = 1023\r\n");

    SetSettingLanguage(eLanguageJapanese);
    SetSettingDateFormat(eDateFormatEU);
    GetSettingsItemPlasmaQcMode().Set(true);
    GetSettingsItemLEDIntensityCH1().Set(7);
    EXPECT_EQ(Save(0),
              "Language = JP\r\nDateFormat = EU\r\nBeepAudioReminder = BEEP_ONCE\r\n"
              "ChineseLiteration = BOPOMOFO\r\nJapaneseLiteration = KANA\r\n");
    EXPECT_EQ(Save(1), "PlasmaQcMode = TRUE\r\n");
    EXPECT_EQ(Save(2), "BeepFrequency = 2700HZ\r\nLEDIntensityCH0 = 1023\r\nLEDIntensityCH1 = 7\r\n");

    // What was saved loads back completely.
    const std::string saved = Save(0);
    ResetAll();
    EXPECT_TRUE(Load(0, saved));
    EXPECT_EQ(GetSettingLanguage(), eLanguageJapanese);
    EXPECT_EQ(GetSettingDateFormat(), eDateFormatEU);
}

TEST_F(SettingsFile, SaveTruncatesAndFailsOnlyWhenTheFileCannotBeOpened) {
    WriteBytes(m_folder.File("out.txt"), std::string(5000, 'x'));
    EXPECT_EQ(Save(1), "PlasmaQcMode = FALSE\r\n");
    EXPECT_FALSE(Collection().SaveOriginToFile(0, m_folder.File("no/such/folder.txt")));
    EXPECT_FALSE(Collection().SaveOriginToFile(0, m_folder.Path()));
}

TEST_F(SettingsFile, KeysAreFoundAnywhereInALineAndTheFirstOccurrenceWins) {
    EXPECT_FALSE(Load(0, "Language = DE\r\nDateFormat = EU\r\n"));  // three keys missing
    EXPECT_EQ(GetSettingLanguage(), eLanguageGerman);
    EXPECT_EQ(GetSettingDateFormat(), eDateFormatEU);

    ResetAll();
    Load(0, "DateFormat = EU\nLanguage = DE\n");
    EXPECT_EQ(GetSettingLanguage(), eLanguageGerman);
    EXPECT_EQ(GetSettingDateFormat(), eDateFormatEU);

    ResetAll();
    Load(0, "XLanguage = DE\r\n");
    EXPECT_EQ(GetSettingLanguage(), eLanguageGerman);

    ResetAll();
    Load(0, "Language = FR\r\nLanguage = DE\r\n");
    EXPECT_EQ(GetSettingLanguage(), eLanguageFrench);

    // One key per line: the keys are tried in registration order, the first match takes the line.
    ResetAll();
    Load(0, "DateFormat = EU Language = DE\r\n");
    EXPECT_EQ(GetSettingLanguage(), eLanguageGerman);
    EXPECT_EQ(GetSettingDateFormat(), eDateFormatUS);

    // Without the separator there is no key.
    ResetAll();
    Load(0, "Language=DE\r\nLanguage DE\r\n");
    EXPECT_EQ(GetSettingLanguage(), eLanguageEnglish);
}

TEST_F(SettingsFile, ValuesAreTakenExactly) {
    Load(1, "PlasmaQcMode = true\r\n");
    EXPECT_FALSE(GetSettingsItemPlasmaQcMode().Get());
    Load(1, "PlasmaQcMode = TRUE\r\n");
    EXPECT_TRUE(GetSettingsItemPlasmaQcMode().Get());
    Load(1, "PlasmaQcMode = TRUE \r\n");
    EXPECT_FALSE(GetSettingsItemPlasmaQcMode().Get());

    GetSettingsItemBeepFrequency().Set(eBeep2900Hz);
    Load(2, "BeepFrequency = 3100HZ\r\n");
    EXPECT_EQ(GetSettingsItemBeepFrequency().Get(), eBeep2700Hz);
    EXPECT_EQ(GetSettingsItemBeepFrequency().GetAsText(), "2700HZ");

    // Untrimmed: a trailing blank or a lower-case code is no member text.
    SetSettingLanguage(eLanguageItalian);
    Load(0, "Language = DE \r\n");
    EXPECT_EQ(GetSettingLanguage(), eLanguageEnglish);
    SetSettingLanguage(eLanguageItalian);
    Load(0, "Language = de\r\n");
    EXPECT_EQ(GetSettingLanguage(), eLanguageEnglish);

    EXPECT_TRUE(Load(2, "LEDIntensityCH0 = 512\r\nLEDIntensityCH1 = 40x\r\nBeepFrequency = 2300HZ\r\n"));
    EXPECT_EQ(GetSettingsItemLEDIntensityCH0().Get(), 512);
    EXPECT_EQ(GetSettingsItemLEDIntensityCH1().Get(), 40);
    Load(2, "LEDIntensityCH0 = high\r\nLEDIntensityCH1 = 70000\r\n");
    EXPECT_EQ(GetSettingsItemLEDIntensityCH0().Get(), 1023);
    EXPECT_EQ(GetSettingsItemLEDIntensityCH1().Get(), 1023);
}

TEST_F(SettingsFile, EmptyValueCountsAsFoundAndKeepsTheItem) {
    SetSettingLanguage(eLanguageSwedish);
    EXPECT_TRUE(Load(0,
                     "Language = \r\nDateFormat = EU\r\nBeepAudioReminder = BEEP_30_SEC\r\n"
                     "\r\n\r\nChineseLiteration = PINYIN\r\nJapaneseLiteration = ROMAJI\r\n"));
    EXPECT_EQ(GetSettingLanguage(), eLanguageSwedish);
    EXPECT_EQ(GetSettingsItemBeepAudioReminder().Get(), eBeep30Sec);
    EXPECT_EQ(GetSettingsItemChineseLiteration().Get(), NS_ChineseLiteration::eChinesePinyin);
    EXPECT_EQ(GetSettingsItemJapaneseLiteration().Get(), NS_JapaneseLiteration::eJapaneseRomaji);
}

TEST_F(SettingsFile, MissingFileLoadsNothingAndOriginWithoutItemsAlwaysLoads) {
    SetSettingLanguage(eLanguageDutch);
    EXPECT_FALSE(Collection().LoadOriginFromFile(0, m_folder.File("missing.vtx")));
    EXPECT_EQ(GetSettingLanguage(), eLanguageDutch);
    EXPECT_TRUE(Collection().LoadOriginFromFile(5, m_folder.File("missing.vtx")));
    EXPECT_TRUE(Collection().LoadOrigin(3));  // no items, no path: the file is never looked at
}

TEST_F(SettingsFile, MalformedFilesLoadWithoutHarm) {
    std::string junk;
    unsigned seed = 12345;
    for (int i = 0; i < 20000; ++i) {
        seed = seed * 1103515245u + 12345u;
        junk += static_cast<char>((seed >> 16) & 0xFF);
    }
    const std::string longLine = std::string(5000, 'A') + "Language = DE\r\n";
    const std::string cases[] = {
        junk,
        longLine,
        std::string(5000, 'Z'),
        "Language = SE",  // no line end at all
        Bytes("Language = DE\0trailing\r\nDateFormat = \0EU\r\n"),
        Bytes("\0\0\0\0\n\0"),
        "",
        "\r\n\r\n\n\n",
        " = \r\n = = = \r\nLanguage = = DE\r\n",
        std::string("Language = \xC3\x28\xFF\r\n"),
    };
    for (const std::string& bytes : cases) {
        for (int origin = 0; origin < eSettingsOriginCount; ++origin) Load(origin, bytes);
        ExpectAllValid();
    }

    // What the reader can still make out is taken.
    ResetAll();
    Load(0, "Language = SE");
    EXPECT_EQ(GetSettingLanguage(), eLanguageSwedish);
    Load(0, Bytes("Language = DE\0trailing\r\n"));
    EXPECT_EQ(GetSettingLanguage(), eLanguageGerman);
    ResetAll();
    Load(0, longLine);  // the long line is read in pieces; the key still sits in one of them
    ExpectAllValid();
}

TEST_F(SettingsFile, OtherItemKindsReadAndWriteTheirText) {
    static const std::string timeKey = "CalibrationTime";
    static const std::string nameKey = "OperatorName";
    CInstrumentSettingsItemTime time(7, &timeKey, CInstrumentTime(1, 1, 2000, 0, 0));
    CInstrumentSettingsItemString name(7, &nameKey, "nobody");

    EXPECT_TRUE(Load(7, "CalibrationTime = 02102017 1407\r\nOperatorName = Dr. Jørgensen = chief\r\n"));
    EXPECT_EQ(time.GetAsText(), "02102017 1407");
    EXPECT_EQ(time.Get().GetHour(), 14);
    EXPECT_EQ(name.Get(), "Dr. Jørgensen = chief");
    EXPECT_EQ(Save(7), "CalibrationTime = 02102017 1407\r\nOperatorName = Dr. Jørgensen = chief\r\n");

    Load(7, "CalibrationTime = 2017-10-02\r\n");
    EXPECT_EQ(time.GetAsText(), "01012000 0000");
    time.ResetToDefault(0);
    name.ResetToDefault(0);
    EXPECT_EQ(name.Get(), "nobody");
}

TEST_F(SettingsFile, ItemsLeaveTheCollectionWhenDestroyed) {
    const size_t before = Collection().Count();
    {
        static const std::string key = "Scratch";
        CInstrumentSettingsItemBool scratch(0, &key, true);
        EXPECT_EQ(Collection().Count(), before + 1);
        EXPECT_EQ(Collection().GetItems().back(), &scratch);
    }
    EXPECT_EQ(Collection().Count(), before);
    EXPECT_EQ(Collection().GetItems().front(), &GetSettingsItemLanguage());
}

TEST(FileScanner, MatchesRulesAndStopsAtEmptyLineOnlyWhenAsked) {
    TempFolder folder;
    WriteBytes(folder.File("f.txt"), "alpha: 1\r\n\r\nbeta: 2\nalpha: 3\n");
    const std::vector<std::string> keys = {"alpha", "beta", "gamma"};
    std::vector<std::string> values;
    std::vector<bool> found;

    EXPECT_EQ(CFileScanner(": ", false).Scan(folder.File("f.txt"), keys, values, found), 2);
    EXPECT_EQ(values[0], "1");
    EXPECT_EQ(values[1], "2");
    EXPECT_TRUE(found[0] && found[1] && !found[2]);

    EXPECT_EQ(CFileScanner(": ", true).Scan(folder.File("f.txt"), keys, values, found), 1);
    EXPECT_FALSE(found[1]);

    EXPECT_EQ(CFileScanner(": ", false).Scan(folder.File("none.txt"), keys, values, found), 0);
    EXPECT_EQ(values.size(), keys.size());

    std::vector<bool> flags(3, false);
    std::vector<std::string> vals(3);
    EXPECT_EQ(CFileScanner(" = ", false).ScanLine("xbeta = alpha = 5", keys, vals, flags), 0);
    EXPECT_EQ(vals[0], "5");
    EXPECT_EQ(CFileScanner(" = ", false).ScanLine("xbeta = alpha = 5", keys, vals, flags), 1);
    EXPECT_EQ(vals[1], "alpha = 5");
}

}  // namespace
