// The combined load, save and reset on the instrument's own settings files (sandbox only).
#include "foundation/InstrumentSettings.h"

#include "tests/foundation/TestFiles.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <string>
#include <utility>
#include <vector>

using vtxtest::ReadFile;
using vtxtest::WriteFile;

namespace {

const std::string kUser = "/home/vtx/Code/settings.vtx";
const std::string kSecond = "/home/vtx/Code/settings.lmo";
const std::string kFactory = "/home/vtx/Code/factory.lmo";

// Records the notifications of all instances in one shared list.
struct CRecordingCallBack : CInstrumentSettingsChangedCallBack {
    CRecordingCallBack(std::vector<std::string>& record, std::string name) : record(record), name(std::move(name)) {}
    void OnSettingsLoaded() override { record.push_back(name + " loaded"); }
    void OnSettingsSaved() override { record.push_back(name + " saved"); }
    std::vector<std::string>& record;
    std::string name;
};

class InstrumentSettingsFiles : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(access("/home/vtx/Code", W_OK), 0) << "not inside the instrument sandbox";
        for (const std::string& path : {kUser, kSecond, kFactory}) {
            std::remove(path.c_str());
            ::rmdir(path.c_str());
        }
        CInstrumentSettingsCollection* collection = CSingleton<CInstrumentSettingsCollection>::GetInstance();
        for (int origin = 0; origin < eSettingsOriginCount; ++origin) collection->ResetOrigin(origin, 0);
    }
};

TEST_F(InstrumentSettingsFiles, SaveWritesBothUserFilesAndNeverTheFactoryFile) {
    SetSettingLanguage(eLanguageDanish);
    GetSettingsItemPlasmaQcMode().Set(true);
    EXPECT_TRUE(SaveSettings());
    EXPECT_EQ(ReadFile(kUser).substr(0, 30), "Language = DK\r\nDateFormat = US");
    EXPECT_EQ(ReadFile(kSecond), "PlasmaQcMode = TRUE\r\n");
    EXPECT_NE(access(kFactory.c_str(), F_OK), 0);

    // One file that cannot be written fails the save; the other is still written.
    std::remove(kSecond.c_str());
    ASSERT_EQ(::mkdir(kSecond.c_str(), 0755), 0);
    SetSettingLanguage(eLanguageItalian);
    EXPECT_FALSE(SaveSettings());
    EXPECT_EQ(ReadFile(kUser).substr(0, 15), "Language = IT\r\n");
    EXPECT_EQ(GetSettingLanguage(), eLanguageItalian);
}

TEST_F(InstrumentSettingsFiles, LoadReadsFactoryThenUserFilesAndCountsOnlyTheUserFiles) {
    WriteFile(kFactory, "BeepFrequency = 2300HZ\r\n");  // incomplete: does not count
    WriteFile(kUser,
              "Language = CH\r\nDateFormat = EU\r\nBeepAudioReminder = BEEP_60_SEC\r\n"
              "ChineseLiteration = NONE\r\nJapaneseLiteration = NONE\r\n");
    WriteFile(kSecond, "PlasmaQcMode = TRUE\r\n");
    EXPECT_TRUE(LoadSettings());
    EXPECT_EQ(GetSettingLanguage(), eLanguageChinese);
    EXPECT_EQ(GetSettingDateFormat(), eDateFormatEU);
    EXPECT_TRUE(GetSettingsItemPlasmaQcMode().Get());
    EXPECT_EQ(GetSettingsItemBeepFrequency().Get(), eBeep2300Hz);
    EXPECT_EQ(GetSettingsItemLEDIntensityCH0().Get(), 1023);

    std::remove(kSecond.c_str());
    EXPECT_FALSE(LoadSettings());
    EXPECT_EQ(GetSettingLanguage(), eLanguageChinese);
}

TEST_F(InstrumentSettingsFiles, CallbacksAreToldInRegistrationOrder) {
    std::vector<std::string> record;
    {
        CRecordingCallBack first(record, "first");
        CRecordingCallBack second(record, "second");
        LoadSettings();
        SaveSettings();
        ResetSettings(0);
        // Single origins tell nobody.
        CSingleton<CInstrumentSettingsCollection>::GetInstance()->SaveOrigin(0);
        CSingleton<CInstrumentSettingsCollection>::GetInstance()->LoadOrigin(0);
    }
    SaveSettings();  // both are gone
    EXPECT_EQ(record, (std::vector<std::string>{"first loaded", "second loaded", "first saved", "second saved",
                                                "first saved", "second saved"}));
}

TEST_F(InstrumentSettingsFiles, ResetRestoresUserFilesAndLeavesTheFactoryFileAlone) {
    const std::string factory = "BeepFrequency = 2900HZ\r\nLEDIntensityCH0 = 800\r\nLEDIntensityCH1 = 900\r\n";
    WriteFile(kFactory, factory);
    WriteFile(kUser,
              "Language = DE\r\nDateFormat = EU\r\nBeepAudioReminder = BEEP_10_SEC\r\n"
              "ChineseLiteration = PINYIN\r\nJapaneseLiteration = ROMAJI\r\n");
    WriteFile(kSecond, "PlasmaQcMode = TRUE\r\n");
    ASSERT_TRUE(LoadSettings());

    EXPECT_TRUE(ResetSettings(2));
    EXPECT_EQ(ReadFile(kUser),
              "Language = EN\r\nDateFormat = US\r\nBeepAudioReminder = BEEP_ONCE\r\n"
              "ChineseLiteration = BOPOMOFO\r\nJapaneseLiteration = KANA\r\n");
    EXPECT_EQ(ReadFile(kSecond), "PlasmaQcMode = FALSE\r\n");
    EXPECT_EQ(ReadFile(kFactory), factory);
    EXPECT_EQ(GetSettingLanguage(), eLanguageEnglish);
    EXPECT_EQ(GetSettingsItemBeepFrequency().Get(), eBeep2900Hz);
    EXPECT_EQ(GetSettingsItemLEDIntensityCH1().Get(), 900);
}

}  // namespace
