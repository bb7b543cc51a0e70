// The reset to factory state on the instrument's settings files (sandbox only).
#include "foundation/common/InstrumentCommonData.h"

#include "foundation/InstrumentSettings.h"
#include "log/InstrumentLog.h"
#include "tests/foundation/TestFiles.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <mutex>
#include <string>
#include <vector>

using vtxtest::ReadFile;
using vtxtest::WriteFile;

namespace {

// Each entry as "type [source] text".
class CCaptureSink : public CLogInterface {
public:
    void Log(int type, const std::string& source, int, const std::string& text) override {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_entries.push_back(std::to_string(type) + " [" + source + "] " + text);
    }
    void Flush() override {}
    std::vector<std::string> Entries() {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_entries;
    }

private:
    std::mutex m_mutex;
    std::vector<std::string> m_entries;
};

// The reset itself is the settings' own; here: that the broadcast reaches it, and who hears of a failure.
TEST(FactoryReset, ResetsTheSettingsFilesAndLogsAFailedSaveOnlyWithATraceField) {
    ASSERT_EQ(access("/home/vtx/Code", W_OK), 0) << "not inside the instrument sandbox";
    const std::string kUser = "/home/vtx/Code/settings.vtx", kSecond = "/home/vtx/Code/settings.lmo";
    WriteFile(kUser, "Language = DE\r\n");
    WriteFile(kSecond, "PlasmaQcMode = TRUE\r\n");
    LoadSettings();
    ASSERT_EQ(GetSettingLanguage(), eLanguageGerman);

    CCaptureSink sink;
    const CTraceField field("Service");
    EXPECT_TRUE(VirginizeInstrument(&field));
    EXPECT_EQ(ReadFile(kUser).substr(0, 15), "Language = EN\r\n");
    EXPECT_EQ(ReadFile(kSecond), "PlasmaQcMode = FALSE\r\n");
    EXPECT_TRUE(sink.Entries().empty());

    // A file that cannot be written: the values are reset all the same.
    std::remove(kSecond.c_str());
    ASSERT_EQ(::mkdir(kSecond.c_str(), 0755), 0);
    SetSettingLanguage(eLanguageJapanese);
    VirginizeInstrument(nullptr);
    EXPECT_EQ(GetSettingLanguage(), eLanguageEnglish);
    EXPECT_TRUE(sink.Entries().empty());
    VirginizeInstrument(&field);
    EXPECT_EQ(sink.Entries(), std::vector<std::string>{"1 [Service] Could not reset settings!"});
    ::rmdir(kSecond.c_str());
}

}  // namespace
