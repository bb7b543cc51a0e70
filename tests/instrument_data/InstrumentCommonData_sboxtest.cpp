// The reset to factory state on the instrument's settings files (sandbox only).
#include "foundation/InstrumentCommonData.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <mutex>
#include <string>
#include <vector>

#include "foundation/InstrumentSettings.h"
#include "log/InstrumentLog.h"

namespace {

std::string ReadBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void WriteBytes(const std::string& path, const std::string& bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

class CCaptureSink : public CLogInterface {
public:
    struct Entry {
        int type;
        std::string source;
        std::string text;
    };
    void Log(int type, const std::string& source, int, const std::string& text) override {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_entries.push_back({type, source, text});
    }
    void Flush() override {}
    std::vector<Entry> Entries() {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_entries;
    }

private:
    std::mutex m_mutex;
    std::vector<Entry> m_entries;
};

const std::string kUser = "/home/vtx/Code/settings.vtx";
const std::string kSecond = "/home/vtx/Code/settings.lmo";
const std::string kFactory = "/home/vtx/Code/factory.lmo";

TEST(FactoryReset, RestoresUserSettingsAndLeavesTheFactoryFile) {
    ASSERT_EQ(access("/home/vtx/Code", W_OK), 0) << "not inside the instrument sandbox";
    const std::string factory = "BeepFrequency = 2500HZ\r\nLEDIntensityCH0 = 100\r\nLEDIntensityCH1 = 200\r\n";
    WriteBytes(kFactory, factory);
    WriteBytes(kUser,
               "Language = DE\r\nDateFormat = EU\r\nBeepAudioReminder = BEEP_ONCE\r\n"
               "ChineseLiteration = BOPOMOFO\r\nJapaneseLiteration = KANA\r\n");
    WriteBytes(kSecond, "PlasmaQcMode = TRUE\r\n");
    ASSERT_TRUE(LoadSettings());
    ASSERT_EQ(GetSettingLanguage(), eLanguageGerman);

    CCaptureSink sink;
    const CTraceField field("Service");
    EXPECT_TRUE(VirginizeInstrument(&field));
    const std::string user = ReadBytes(kUser);
    EXPECT_NE(user.find("Language = EN\r\n"), std::string::npos);
    EXPECT_NE(user.find("DateFormat = US\r\n"), std::string::npos);
    EXPECT_EQ(ReadBytes(kSecond), "PlasmaQcMode = FALSE\r\n");
    EXPECT_EQ(ReadBytes(kFactory), factory);
    EXPECT_EQ(GetSettingsItemBeepFrequency().GetAsText(), "2500HZ");
    EXPECT_TRUE(sink.Entries().empty());
}

TEST(FactoryReset, FailedSaveIsLoggedOnlyWithATraceField) {
    std::remove(kSecond.c_str());
    ASSERT_EQ(::mkdir(kSecond.c_str(), 0755), 0);  // cannot be written
    SetSettingLanguage(eLanguageJapanese);

    CCaptureSink sink;
    VirginizeInstrument(nullptr);
    EXPECT_TRUE(sink.Entries().empty());
    EXPECT_EQ(GetSettingLanguage(), eLanguageEnglish);  // the values were reset all the same

    const CTraceField field("Service");
    VirginizeInstrument(&field);
    const std::vector<CCaptureSink::Entry> entries = sink.Entries();
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].type, 1);
    EXPECT_EQ(entries[0].source, "Service");
    EXPECT_EQ(entries[0].text, "Could not reset settings!");
    ::rmdir(kSecond.c_str());
}

}  // namespace
