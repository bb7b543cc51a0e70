// The combined load, save and reset on the instrument's own settings files (sandbox only).
#include "foundation/InstrumentSettings.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace {

const std::string kUser = "/home/vtx/Code/settings.vtx";
const std::string kSecond = "/home/vtx/Code/settings.lmo";
const std::string kFactory = "/home/vtx/Code/factory.lmo";

const std::string kDefaultUser =
    "Language = EN\r\nDateFormat = US\r\nBeepAudioReminder = BEEP_ONCE\r\n"
    "ChineseLiteration = BOPOMOFO\r\nJapaneseLiteration = KANA\r\n";

std::string ReadBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void WriteBytes(const std::string& path, const std::string& bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

bool Exists(const std::string& path) {
    struct stat st;
    return ::stat(path.c_str(), &st) == 0;
}

// Records the notifications of all instances in one shared list.
class CRecordingCallBack : public CInstrumentSettingsChangedCallBack {
public:
    CRecordingCallBack(std::vector<std::string>& record, std::string name)
        : m_record(record), m_name(std::move(name)) {}
    void OnSettingsLoaded() override { m_record.push_back(m_name + " loaded"); }
    void OnSettingsSaved() override { m_record.push_back(m_name + " saved"); }

private:
    std::vector<std::string>& m_record;
    std::string m_name;
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
    EXPECT_EQ(ReadBytes(kUser),
              "Language = DK\r\nDateFormat = US\r\nBeepAudioReminder = BEEP_ONCE\r\n"
              "ChineseLiteration = BOPOMOFO\r\nJapaneseLiteration = KANA\r\n");
    EXPECT_EQ(ReadBytes(kSecond), "PlasmaQcMode = TRUE\r\n");
    EXPECT_FALSE(Exists(kFactory));

    // One file that cannot be written fails the save; the other is still written.
    std::remove(kSecond.c_str());
    ASSERT_EQ(::mkdir(kSecond.c_str(), 0755), 0);
    SetSettingLanguage(eLanguageItalian);
    EXPECT_FALSE(SaveSettings());
    EXPECT_EQ(ReadBytes(kUser).substr(0, 15), "Language = IT\r\n");
    EXPECT_EQ(GetSettingLanguage(), eLanguageItalian);
}

TEST_F(InstrumentSettingsFiles, LoadReadsFactoryThenUserFilesAndCountsOnlyTheUserFiles) {
    WriteBytes(kFactory, "BeepFrequency = 2300HZ\r\n");  // incomplete: does not count
    WriteBytes(kUser,
               "Language = CH\r\nDateFormat = EU\r\nBeepAudioReminder = BEEP_60_SEC\r\n"
               "ChineseLiteration = NONE\r\nJapaneseLiteration = NONE\r\n");
    WriteBytes(kSecond, "PlasmaQcMode = TRUE\r\n");
    EXPECT_TRUE(LoadSettings());
    EXPECT_EQ(GetSettingLanguage(), eLanguageChinese);
    EXPECT_EQ(GetSettingDateFormat(), eDateFormatEU);
    EXPECT_TRUE(GetSettingsItemPlasmaQcMode().Get());
    EXPECT_EQ(GetSettingsItemBeepFrequency().Get(), eBeep2300Hz);
    EXPECT_EQ(GetSettingsItemLEDIntensityCH0().Get(), 1023);

    std::remove(kSecond.c_str());
    EXPECT_FALSE(LoadSettings());
    EXPECT_EQ(GetSettingLanguage(), eLanguageChinese);

    std::remove(kUser.c_str());
    std::remove(kFactory.c_str());
    SetSettingLanguage(eLanguageFrench);
    EXPECT_FALSE(LoadSettings());
    EXPECT_EQ(GetSettingLanguage(), eLanguageFrench);  // nothing to load: values stay
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
    EXPECT_EQ(record, (std::vector<std::string>{"first loaded", "second loaded", "first saved", "second saved",
                                                "first saved", "second saved"}));
    record.clear();
    SaveSettings();  // both are gone
    EXPECT_TRUE(record.empty());
}

TEST_F(InstrumentSettingsFiles, ResetRestoresUserFilesAndLeavesTheFactoryFileAlone) {
    const std::string factory = "BeepFrequency = 2900HZ\r\nLEDIntensityCH0 = 800\r\nLEDIntensityCH1 = 900\r\n";
    WriteBytes(kFactory, factory);
    WriteBytes(kUser,
               "Language = DE\r\nDateFormat = EU\r\nBeepAudioReminder = BEEP_10_SEC\r\n"
               "ChineseLiteration = PINYIN\r\nJapaneseLiteration = ROMAJI\r\n");
    WriteBytes(kSecond, "PlasmaQcMode = TRUE\r\n");
    ASSERT_TRUE(LoadSettings());

    EXPECT_TRUE(ResetSettings(2));
    EXPECT_EQ(ReadBytes(kUser), kDefaultUser);
    EXPECT_EQ(ReadBytes(kSecond), "PlasmaQcMode = FALSE\r\n");
    EXPECT_EQ(ReadBytes(kFactory), factory);
    EXPECT_EQ(GetSettingLanguage(), eLanguageEnglish);
    EXPECT_EQ(GetSettingsItemBeepFrequency().Get(), eBeep2900Hz);
    EXPECT_EQ(GetSettingsItemLEDIntensityCH1().Get(), 900);

    // A failed save still leaves the values reset.
    SetSettingLanguage(eLanguageGerman);
    std::remove(kUser.c_str());
    ASSERT_EQ(::mkdir(kUser.c_str(), 0755), 0);
    EXPECT_FALSE(ResetSettings(0));
    EXPECT_EQ(GetSettingLanguage(), eLanguageEnglish);
}

}  // namespace
