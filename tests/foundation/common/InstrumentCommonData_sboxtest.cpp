// The reset to factory state. Its first notification resets the instrument's settings files,
// hence the sandbox.
#include "foundation/common/InstrumentCommonData.h"

#include "foundation/InstrumentSettings.h"
#include "log/InstrumentLog.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

struct CRecordingObserver : CInstrumentVirginizeObserver {
    CRecordingObserver(std::vector<std::string>& record, const char* name) : record(record), name(name) {}
    void OnVirginizeSecond(const CTraceField* trace) override {
        record.push_back(name + " second " + trace->GetName());
    }
    void OnVirginizeThird(const CTraceField*) override { record.push_back(name + " third"); }
    std::vector<std::string>& record;
    const std::string name;
};

TEST(VirginizeBroadcast, ObserversAreToldInRegistrationOrderWhileRegistered) {
    CInstrumentVirginizeInformer* informer = CSingleton<CInstrumentVirginizeInformer>::GetInstance();
    ASSERT_NE(informer, nullptr);
    std::vector<std::string> record;
    const CTraceField field("Service");
    {
        CRecordingObserver a(record, "a");
        CRecordingObserver b(record, "b");
        SetSettingLanguage(eLanguageGerman);
        EXPECT_TRUE(VirginizeInstrument(&field));
        EXPECT_EQ(GetSettingLanguage(), eLanguageEnglish);
        informer->VirginizeSecond(&field);
        informer->VirginizeThird(nullptr);
    }
    informer->VirginizeThird(nullptr);
    EXPECT_EQ(record, (std::vector<std::string>{"a second Service", "b second Service", "a third", "b third"}));
}

}  // namespace
