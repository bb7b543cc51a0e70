#include "ui/InstrumentFont.h"

#include <gtest/gtest.h>

#include "foundation/InstrumentSettings.h"

namespace {

class InstrumentFonts : public ::testing::Test {
protected:
    void SetUp() override { m_language = GetSettingLanguage(); }
    void TearDown() override {
        SetSettingLanguage(m_language);
        RefreshInstrumentFonts();
    }
    int m_language = 0;
};

TEST_F(InstrumentFonts, RefreshRecreatesEveryRegisteredFontAndForgetsDestroyedOnes) {
    SetSettingLanguage(eLanguageGerman);
    RefreshInstrumentFonts();
    EXPECT_EQ(GetProgramFont(eFontTypeHeaderTitle).GetPointSize(), 36 * 20 / 31);
    const size_t before = CSingleton<CInstrumentFontCollection>::GetInstance()->Count();
    CInstrumentFont local(40, eFontWeightBold);
    { CInstrumentFont gone(20, eFontWeightNormal); }
    EXPECT_EQ(CSingleton<CInstrumentFontCollection>::GetInstance()->Count(), before + 1);

    SetSettingLanguage(eLanguageJapanese);
    EXPECT_EQ(local.GetFont().GetPointSize(), 40 * 20 / 31);  // not before the refresh
    RefreshInstrumentFonts();
    EXPECT_EQ(local.GetFont().GetPointSize(), 35 * 20 / 31);
    EXPECT_EQ(GetProgramFont(eFontTypeHeaderTitle).GetPointSize(), 31 * 20 / 31);
    EXPECT_EQ(local.GetFont().GetWeight(), wxFONTWEIGHT_NORMAL) << "no bold CJK face";
    // Chinese has a face of its own and, unlike Japanese, keeps the size.
    SetSettingLanguage(eLanguageChinese);
    RefreshInstrumentFonts();
    EXPECT_EQ(local.GetFont().GetPointSize(), 40 * 20 / 31);
    EXPECT_EQ(local.GetFont().GetFaceName(), "WenQuanYi Micro Hei Mono");
    // An unknown type falls back to the body font.
    EXPECT_EQ(&GetProgramFont(static_cast<eFontTypes>(3)), &GetProgramFont(eFontTypeBody));
}

}  // namespace
