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

TEST_F(InstrumentFonts, SizeFaceWeightAndEncodingFollowTheLanguage) {
    struct {
        int language, size, weight, points, encoding;
        bool bold;
        const char* face;
    } const cases[] = {
        {eLanguageEnglish, 31, eFontWeightBold, 20, 1, true, "Arial"},
        {eLanguageGerman, 29, eFontWeightNormal, 18, 1, false, "Arial"},
        // Sizes above 29 are reduced by 5 for Japanese only, and the CJK faces are never bold.
        {eLanguageJapanese, 31, eFontWeightBold, 16, 27, false, "Linux Libertine"},
        {eLanguageJapanese, 30, eFontWeightNormal, 16, 27, false, "Linux Libertine"},
        {eLanguageJapanese, 29, eFontWeightNormal, 18, 27, false, "Linux Libertine"},
        {eLanguageChinese, 31, eFontWeightBold, 20, 43, false, "WenQuanYi Micro Hei Mono"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << "language " << c.language << ", size " << c.size);
        EXPECT_EQ(CInstrumentFont::GetEncoding(CInstrumentFont::GetFaceIndex(c.language)), c.encoding);
        SetSettingLanguage(c.language);
        const wxFont font = CInstrumentFont(c.size, c.weight).GetFont();
        EXPECT_EQ(font.GetPointSize(), c.points);
        EXPECT_EQ(font.GetWeight(), c.bold ? wxFONTWEIGHT_BOLD : wxFONTWEIGHT_NORMAL);
        EXPECT_EQ(font.GetStyle(), wxFONTSTYLE_NORMAL);
        EXPECT_FALSE(font.GetUnderlined());
        EXPECT_EQ(font.GetFaceName(), c.face);
    }
}

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
    EXPECT_EQ(GetProgramFont(eFontTypeHeaderTitle).GetFaceName(), "Linux Libertine");
    // An unknown type falls back to the body font.
    EXPECT_EQ(&GetProgramFont(static_cast<eFontTypes>(3)), &GetProgramFont(eFontTypeBody));
}

}  // namespace
