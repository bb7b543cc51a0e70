#include "foundation/InstrumentEnums.h"

#include <gtest/gtest.h>

#include <climits>

namespace {

TEST(EnumType, OutOfRangeAssignmentFallsBackToTheDefault) {
    CInstrumentBeepFrequencyEnum beep(eBeep2700Hz);
    EXPECT_EQ(beep.Set(eBeep2300Hz), eBeep2300Hz);
    for (int bad : {4, 1000, INT_MAX, -1, INT_MIN}) {
        beep.Set(eBeep2900Hz);
        EXPECT_EQ(beep.Set(bad), eBeep2700Hz) << bad;
        beep.Set(eBeep2300Hz);
        beep.Assign(bad);
        EXPECT_TRUE(beep.Is(eBeep2700Hz)) << bad;
    }
}

// The safe flavour through its base behaves the same; its Assign runs Set inside the lock, which
// must not lock twice.
TEST(EnumType, StepsSaturateOnePastTheEndOrWrapRound) {
    CInstrumentLanguageEnum plain(eLanguageEnglish);
    CSafeInstrumentLanguageEnum safe(eLanguageEnglish);
    for (CInstrumentLanguageEnum* language : {&plain, static_cast<CInstrumentLanguageEnum*>(&safe)}) {
        EXPECT_EQ(language->Previous(), eLanguageEnglish);
        language->Assign(eLanguageChinese);
        EXPECT_EQ(language->Next(), 10);
        EXPECT_FALSE(language->IsValid());
        EXPECT_EQ(language->ToText(), "10");  // the number, never a member text
        EXPECT_EQ(language->Next(), 10);
        EXPECT_EQ(language->Previous(), eLanguageChinese);
        EXPECT_TRUE(language->IsValid());
        EXPECT_EQ(language->Set(-1), eLanguageEnglish);
    }
    CBeepAudioReminderEnum reminder(eBeepOnce);
    EXPECT_EQ(reminder.Previous(), eBeep60Sec);
    EXPECT_EQ(reminder.Next(), eBeepOnce);
    CSafeKorvalinType model;  // the analyser model wraps round
    EXPECT_EQ(model.Previous(), eKorvalinPlus);
}

}  // namespace
