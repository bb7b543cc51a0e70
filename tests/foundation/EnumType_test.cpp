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

TEST(EnumType, StepsSaturateOnePastTheEndOrWrapRound) {
    CInstrumentLanguageEnum language(eLanguageEnglish);
    EXPECT_EQ(language.Previous(), eLanguageEnglish);
    language.Set(eLanguageChinese);
    EXPECT_EQ(language.Next(), 10);
    EXPECT_FALSE(language.IsValid());
    EXPECT_EQ(language.ToText(), "10");  // the number, never a member text
    EXPECT_EQ(language.Next(), 10);
    EXPECT_EQ(language.Previous(), eLanguageChinese);
    EXPECT_TRUE(language.IsValid());

    CBeepAudioReminderEnum reminder(eBeepOnce);
    EXPECT_EQ(reminder.Previous(), eBeep60Sec);
    EXPECT_EQ(reminder.Next(), eBeepOnce);
}

TEST(EnumType, SafeFlavourBehavesTheSameThroughTheBase) {
    CSafeInstrumentLanguageEnum safe(eLanguageGerman);
    CInstrumentLanguageEnum& base = safe;
    EXPECT_EQ(base.Set(-1), eLanguageGerman);
    base.Assign(eLanguageChinese);  // Assign runs Set inside the lock: must not lock twice
    EXPECT_EQ(base.Next(), 10);
    EXPECT_FALSE(base.IsValid());
    EXPECT_EQ(base.Previous(), eLanguageChinese);
    EXPECT_EQ(base.ToText(), "9");
    CSafeKorvalinType model;  // the analyser model wraps round
    EXPECT_EQ(model.Previous(), eKorvalinPlus);
}

}  // namespace
