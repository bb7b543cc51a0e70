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

TEST_F(InstrumentFonts, SizeFaceAndWeightFollowTheLanguage) {
    EXPECT_EQ(CInstrumentFont::GetPointSize(31, eLanguageEnglish), 20);
    EXPECT_EQ(CInstrumentFont::GetPointSize(31, eLanguageJapanese), 16);
    EXPECT_EQ(CInstrumentFont::GetPointSize(29, eLanguageJapanese), 18);
    EXPECT_EQ(CInstrumentFont::GetPointSize(31, eLanguageChinese), 20);  // only Japanese is reduced
    EXPECT_EQ(CInstrumentFont::GetPointSize(30, eLanguageJapanese), 16);

    SetSettingLanguage(eLanguageEnglish);
    CInstrumentFont font(31, eFontWeightBold);
    ASSERT_TRUE(font.GetFont().IsOk());
    EXPECT_EQ(font.GetFont().GetPointSize(), 20);
    EXPECT_EQ(font.GetFont().GetWeight(), wxFONTWEIGHT_BOLD);
    EXPECT_EQ(font.GetFont().GetStyle(), wxFONTSTYLE_NORMAL);
    EXPECT_FALSE(font.GetFont().GetUnderlined());
    EXPECT_EQ(font.GetFont().GetFaceName(), "Arial");

    SetSettingLanguage(eLanguageJapanese);
    font.Recreate();
    EXPECT_EQ(font.GetFont().GetPointSize(), 16);
    EXPECT_EQ(font.GetFont().GetWeight(), wxFONTWEIGHT_NORMAL);
    EXPECT_EQ(font.GetFont().GetFaceName(), "Linux Libertine");
    CInstrumentFont small(29, eFontWeightNormal);
    EXPECT_EQ(small.GetFont().GetPointSize(), 18);

    SetSettingLanguage(eLanguageChinese);
    font.Recreate();
    EXPECT_EQ(font.GetFont().GetWeight(), wxFONTWEIGHT_NORMAL);  // the CJK faces are never bold
    EXPECT_EQ(font.GetFont().GetPointSize(), 20);
    EXPECT_EQ(font.GetFont().GetFaceName(), "WenQuanYi Micro Hei Mono");

    EXPECT_EQ(CInstrumentFont::GetEncoding(CInstrumentFont::GetFaceIndex(eLanguageJapanese)), 27);
    EXPECT_EQ(CInstrumentFont::GetEncoding(CInstrumentFont::GetFaceIndex(eLanguageChinese)), 43);
    EXPECT_EQ(CInstrumentFont::GetEncoding(CInstrumentFont::GetFaceIndex(eLanguageGerman)), 1);
}

TEST_F(InstrumentFonts, RefreshRecreatesEveryRegisteredFont) {
    SetSettingLanguage(eLanguageGerman);
    RefreshInstrumentFonts();
    const wxFont& title = GetProgramFont(eFontTypeHeaderTitle);
    ASSERT_TRUE(title.IsOk());
    EXPECT_EQ(title.GetPointSize(), 36 * 20 / 31);
    EXPECT_EQ(title.GetWeight(), wxFONTWEIGHT_BOLD);
    CInstrumentFont local(40, eFontWeightBold);

    SetSettingLanguage(eLanguageJapanese);
    EXPECT_EQ(local.GetFont().GetPointSize(), 40 * 20 / 31);  // not before the refresh
    RefreshInstrumentFonts();
    EXPECT_EQ(local.GetFont().GetPointSize(), 35 * 20 / 31);
    EXPECT_EQ(GetProgramFont(eFontTypeHeaderTitle).GetPointSize(), 31 * 20 / 31);
    EXPECT_EQ(GetProgramFont(eFontTypeHeaderTitle).GetFaceName(), "Linux Libertine");
    EXPECT_EQ(GetProgramFont(eFontTypeStatusLine).GetPointSize(), 29 * 20 / 31);

    // One singleton per type; an unknown type falls back to the body font.
    EXPECT_EQ(&GetProgramFont(eFontTypeBody), &CInstrumentFontType<eFontTypeBody>::GetFont());
    EXPECT_EQ(&GetProgramFont(static_cast<eFontTypes>(3)), &GetProgramFont(eFontTypeBody));
    EXPECT_EQ(GetProgramFont(eFontTypeSmallPrint).GetPointSize(), 19 * 20 / 31);
}

TEST_F(InstrumentFonts, FontsLeaveTheCollectionWhenDestroyed) {
    CInstrumentFontCollection* collection = CSingleton<CInstrumentFontCollection>::GetInstance();
    ASSERT_NE(collection, nullptr);
    const size_t before = collection->Count();
    {
        CInstrumentFont a(20, eFontWeightNormal), b(22, eFontWeightNormal);
        ASSERT_EQ(collection->Count(), before + 2);
        EXPECT_EQ(collection->GetItems()[before], &a);
        EXPECT_EQ(collection->GetItems()[before + 1], &b);
    }
    EXPECT_EQ(collection->Count(), before);
    RefreshInstrumentFonts();
}

}  // namespace
