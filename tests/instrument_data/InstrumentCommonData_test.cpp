#include "foundation/InstrumentCommonData.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <utility>
#include <vector>

#include "log/InstrumentLog.h"

namespace {

TEST(UnchangeableVariables, EqualityRules) {
    const CInstrumentVariableUnchangableDouble one(1.0);
    EXPECT_TRUE(one.IsEqual(1.0));
    EXPECT_TRUE(one.IsEqual(1.0 + std::ldexp(1.0, -52)));
    EXPECT_TRUE(one.IsEqual(1.0 - std::ldexp(1.0, -52)));
    EXPECT_FALSE(one.IsEqual(1.0 + std::ldexp(1.0, -51)));
    // The tolerance is absolute: large neighbours that differ by one unit are not equal.
    const CInstrumentVariableUnchangableDouble large(1.0e6);
    EXPECT_FALSE(large.IsEqual(std::nextafter(1.0e6, 2.0e6)));
    EXPECT_FALSE(one.IsEqual(std::nan("")));

    const CInstrumentVariableUnchangableString text(std::string("ab\0c", 4));
    EXPECT_TRUE(text.IsEqual(std::string("ab\0c", 4)));
    EXPECT_FALSE(text.IsEqual("ab"));
    EXPECT_FALSE(text.IsEqual(std::string("ab\0d", 4)));
    const CInstrumentVariableInstrumentName name("Korvalin");
    EXPECT_TRUE(name.IsEqual("Korvalin"));
    EXPECT_FALSE(name.IsEqual("korvalin"));

    const CInstrumentVariableUnchangableEnum<eInstrumentType> type(eInstrumentPellamZento);
    EXPECT_TRUE(type.IsEqual(eInstrumentPellamZento));
    EXPECT_FALSE(type.IsEqual(eInstrumentKorvalin));
}

TEST(InstrumentIdentity, TypeNames) {
    EXPECT_EQ(GetInstrumentTypeName(4), "Korvalin");
    EXPECT_EQ(GetInstrumentTypeName(1), "Unknown (1)");
    EXPECT_EQ(GetInstrumentTypeName(7), "Unknown (7)");
    EXPECT_EQ(GetInstrumentTypeName(-3), "Unknown (-3)");
    EXPECT_EQ(GetInstrumentName(), "Korvalin Analyzer");
    SetInstrumentTypeForTesting(2);
    EXPECT_EQ(GetInstrumentName(), "Lumet Tandem COAG");
    SetInstrumentTypeForTesting(0);
}

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
