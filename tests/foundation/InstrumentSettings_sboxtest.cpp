// The combined load, save and reset on the instrument's own settings files (sandbox only).
#include "foundation/InstrumentSettings.h"

#include "tests/common/TestFiles.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <string>
#include <vector>

using vtxtest::ReadFile;
using vtxtest::WriteFile;

namespace {

const std::string kUser = "/home/vtx/Code/settings.vtx", kSecond = "/home/vtx/Code/settings.lmo",
                  kFactory = "/home/vtx/Code/factory.lmo";
const std::string kFactoryFile = "BeepFrequency = 2900HZ\r\nLEDIntensityCH1 = 900\r\n";  // incomplete

// Adds the notifications it is given to a list shared by all instances.
struct CRecordingCallBack : CInstrumentSettingsChangedCallBack {
    CRecordingCallBack(std::vector<std::string>& record, const char* name) : record(record), name(name) {}
    void OnSettingsLoaded() override { record.push_back(name + " loaded"); }
    void OnSettingsSaved() override { record.push_back(name + " saved"); }
    std::vector<std::string>& record;
    const std::string name;
};

class InstrumentSettingsFiles : public ::testing::Test {
protected:
    void SetUp() override {
        for (const std::string& path : {kUser, kSecond, kFactory}) {
            std::remove(path.c_str());
            ::rmdir(path.c_str());
        }
        for (int origin = 0; origin < eSettingsOriginCount; ++origin)
            CSingleton<CInstrumentSettingsCollection>::GetInstance()->ResetOrigin(origin, 0);
        ASSERT_TRUE(WriteFile(kFactory, kFactoryFile));
    }
    // Callbacks are told in registration order, of combined loads and saves only.
    std::vector<std::string> m_record;
    CRecordingCallBack m_first{m_record, "first"}, m_second{m_record, "second"};
};

TEST_F(InstrumentSettingsFiles, LoadReadsAllThreeFilesAndCountsOnlyTheUserFiles) {
    ASSERT_TRUE(WriteFile(kUser,
                          "Language = CH\r\nDateFormat = EU\r\nBeepAudioReminder = BEEP_60_SEC\r\n"
                          "ChineseLiteration = NONE\r\nJapaneseLiteration = NONE\r\n"));
    ASSERT_TRUE(WriteFile(kSecond, "PlasmaQcMode = TRUE\r\n"));
    EXPECT_TRUE(LoadSettings());
    EXPECT_EQ(GetSettingLanguage(), eLanguageChinese);
    EXPECT_EQ(GetSettingsItemBeepAudioReminder().Get(), eBeep60Sec);
    EXPECT_EQ(GetSettingsItemJapaneseLiteration().Get(), NS_JapaneseLiteration::eJapaneseNone);
    EXPECT_TRUE(GetSettingsItemPlasmaQcMode().Get());
    EXPECT_EQ(GetSettingsItemBeepFrequency().Get(), eBeep2900Hz);
    EXPECT_EQ(GetSettingsItemLEDIntensityCH0().Get(), 1023);
    EXPECT_EQ(GetSettingsItemLEDIntensityCH1().Get(), 900);

    std::remove(kSecond.c_str());
    EXPECT_FALSE(LoadSettings());
    EXPECT_EQ(GetSettingLanguage(), eLanguageChinese);
    CSingleton<CInstrumentSettingsCollection>::GetInstance()->LoadOrigin(0);
    EXPECT_EQ(m_record,
              (std::vector<std::string>{"first loaded", "second loaded", "first loaded", "second loaded"}));
    EXPECT_EQ(GetSettingsFilePath(2) + GetSettingsFilePath(3) + GetSettingsFilePath(-1), kFactory);  // no others
}

TEST_F(InstrumentSettingsFiles, SaveAndResetWriteBothUserFilesAndNeverTheFactoryFile) {
    SetSettingLanguage(eLanguageDanish);
    SetSettingDateFormat(eDateFormatEU);
    GetSettingsItemPlasmaQcMode().Set(true);
    GetSettingsItemBeepFrequency().Set(eBeep2300Hz);  // would show in a factory file written
    EXPECT_TRUE(SaveSettings());
    EXPECT_EQ(ReadFile(kUser).substr(0, 30), "Language = DK\r\nDateFormat = EU");
    EXPECT_EQ(ReadFile(kSecond), "PlasmaQcMode = TRUE\r\n");

    EXPECT_TRUE(ResetSettings(0));
    EXPECT_EQ(ReadFile(kUser),
              "Language = EN\r\nDateFormat = US\r\nBeepAudioReminder = BEEP_ONCE\r\n"
              "ChineseLiteration = BOPOMOFO\r\nJapaneseLiteration = KANA\r\n");
    EXPECT_EQ(ReadFile(kSecond), "PlasmaQcMode = FALSE\r\n");
    EXPECT_EQ(GetSettingsItemBeepFrequency().Get(), eBeep2300Hz);

    // One file that cannot be written fails the save and the reset.
    std::remove(kSecond.c_str());
    ASSERT_EQ(::mkdir(kSecond.c_str(), 0755), 0);
    EXPECT_FALSE(SaveSettings());
    EXPECT_FALSE(ResetSettings(0));
    EXPECT_EQ(ReadFile(kFactory), kFactoryFile);
    CSingleton<CInstrumentSettingsCollection>::GetInstance()->SaveOrigin(0);
    EXPECT_EQ(m_record.size(), 8u);
    for (size_t i = 0; i < m_record.size(); ++i)
        EXPECT_EQ(m_record[i], i % 2 ? "second saved" : "first saved") << i;
}

}  // namespace
