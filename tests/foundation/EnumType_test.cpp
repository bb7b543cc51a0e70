#include "foundation/InstrumentEnums.h"

#include <gtest/gtest.h>

#include <climits>
#include <thread>
#include <vector>

namespace {

TEST(EnumType, OutOfRangeAssignmentFallsBackToTheDefault) {
    CInstrumentBeepFrequencyEnum beep(eBeep2700Hz);
    EXPECT_EQ(beep.Set(eBeep2300Hz), eBeep2300Hz);
    for (int bad : {4, 5, 1000, INT_MAX, -1, -4, INT_MIN}) {
        beep.Set(eBeep2900Hz);
        EXPECT_EQ(beep.Set(bad), eBeep2700Hz) << bad;
        EXPECT_EQ(beep.GetValue(), 2) << bad;
        beep.Set(eBeep2300Hz);
        beep.Assign(bad);
        EXPECT_TRUE(beep.Is(eBeep2700Hz)) << bad;
    }
}

TEST(EnumType, SaturatingStepsLandOnePastTheEndAndStayAtZero) {
    CInstrumentLanguageEnum language(eLanguageEnglish);
    EXPECT_EQ(language.Previous(), eLanguageEnglish);
    language.Set(eLanguageChinese);
    EXPECT_TRUE(language.IsValid());
    EXPECT_EQ(language.Next(), 10);
    EXPECT_FALSE(language.IsValid());
    EXPECT_EQ(language.Next(), 10);
    EXPECT_EQ(language.Previous(), eLanguageChinese);
    EXPECT_TRUE(language.IsValid());

    // Walking all members the way the parsers do visits each exactly once.
    std::vector<int> visited;
    for (CMontshInYearEnum month(eJanuary); month.IsValid(); month.Next()) visited.push_back(month.GetValue());
    EXPECT_EQ(visited.size(), 12u);
    EXPECT_EQ(visited.back(), eDecember);
}

TEST(EnumType, WrappingStepsGoRound) {
    CBeepAudioReminderEnum reminder(eBeepOnce);
    EXPECT_EQ(reminder.Previous(), eBeep60Sec);
    EXPECT_EQ(reminder.Next(), eBeepOnce);
    EXPECT_EQ(reminder.Next(), eBeep10Sec);
    CKorvalinTypeEnum model(eKorvalinPlus);
    EXPECT_EQ(model.Next(), eKorvalinStandard);
    EXPECT_TRUE(model.IsValid());
}

TEST(EnumType, TextIsTheNumberNotAMemberName) {
    CInstrumentLanguageEnum language(eLanguageItalian);
    EXPECT_EQ(language.ToText(), "3");
    language.Set(eLanguageChinese);
    language.Next();
    EXPECT_EQ(language.ToText(), "10");
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
    EXPECT_TRUE(base.Is(eLanguageChinese));
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
