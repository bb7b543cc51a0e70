#include "foundation/common/InstrumentCommonData.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "log/InstrumentLog.h"

namespace {

struct CRecordingObserver : CInstrumentVirginizeObserver {
    CRecordingObserver(std::vector<std::string>& record, std::string name) : record(record), name(std::move(name)) {}
    void OnVirginizeSecond(const CTraceField* trace) override {
        record.push_back(name + " second " + (trace ? trace->GetName() : "-"));
    }
    void OnVirginizeThird(const CTraceField*) override { record.push_back(name + " third"); }
    std::vector<std::string>& record;
    std::string name;
};

// The first notification resets the instrument's settings files, so it runs in the sandbox tests.
TEST(VirginizeBroadcast, ObserversAreToldInRegistrationOrderWhileRegistered) {
    CInstrumentVirginizeInformer* informer = CSingleton<CInstrumentVirginizeInformer>::GetInstance();
    ASSERT_NE(informer, nullptr);
    std::vector<std::string> record;
    const CTraceField field("Service");
    {
        CRecordingObserver a(record, "a");
        CRecordingObserver b(record, "b");
        informer->VirginizeSecond(&field);
        informer->VirginizeThird(nullptr);
        informer->VirginizeSecond(nullptr);
    }
    informer->VirginizeThird(nullptr);
    EXPECT_EQ(record, (std::vector<std::string>{"a second Service", "b second Service", "a third", "b third",
                                                "a second -", "b second -"}));
}

}  // namespace
