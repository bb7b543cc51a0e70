#include "foundation/InstrumentEnums.h"

#include <gtest/gtest.h>

#include <climits>
#include <thread>
#include <vector>

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

TEST(EnumType, SaturatingStepsLandOnePastTheEndAndStayAtZero) {
    CInstrumentLanguageEnum language(eLanguageEnglish);
    EXPECT_EQ(language.Previous(), eLanguageEnglish);
    language.Set(eLanguageChinese);
    EXPECT_EQ(language.Next(), 10);
    EXPECT_FALSE(language.IsValid());
    EXPECT_EQ(language.ToText(), "10");  // the number, never a member text
    EXPECT_EQ(language.Next(), 10);
    EXPECT_EQ(language.Previous(), eLanguageChinese);
    EXPECT_TRUE(language.IsValid());
    EXPECT_EQ(CInstrumentLanguageEnum(eLanguageItalian).ToText(), "3");

    // Walking all members the way the parsers do visits each exactly once.
    int visited = 0;
    for (CMontshInYearEnum month(eJanuary); month.IsValid(); month.Next()) ++visited;
    EXPECT_EQ(visited, 12);
}

TEST(EnumType, WrappingStepsGoRound) {
    CBeepAudioReminderEnum reminder(eBeepOnce);
    EXPECT_EQ(reminder.Previous(), eBeep60Sec);
    EXPECT_EQ(reminder.Next(), eBeepOnce);
    EXPECT_EQ(reminder.Next(), eBeep10Sec);
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
}

TEST(EnumType, SafeFlavourLosesNoStepUnderConcurrency) {
    CSafeKorvalinType model;  // wraps over two members
    CSafeChineseLiterationEnum option(NS_ChineseLiteration::eChinesePinyin);  // wraps over three
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&] {
            for (int i = 0; i < 3 * 301; ++i) {
                model.Next();
                option.Next();
                (void)option.ToText();
            }
        });
    for (auto& thread : threads) thread.join();
    // 4 * 903 steps: even, and a multiple of three.
    EXPECT_EQ(model.Get(), eKorvalinStandard);
    EXPECT_EQ(option.Get(), NS_ChineseLiteration::eChinesePinyin);
}

}  // namespace
