// Painters, drawn into bitmaps and read back pixel by pixel.
#include "ui/VisualComponents.h"

#include <gtest/gtest.h>

#include <vector>

#include "foundation/InstrumentCommonData.h"
#include "tests/common/WxAssert.h"
#include "tests/ui/UiTestSupport.h"
#include "ui/ImageResources.h"

using uitest::CCanvas;
using uitest::FromValue;
using uitest::kUntouched;
using uitest::Rgb;

namespace {

// Remembers the rectangles it was asked to paint.
class CRecordingPainter : public CColorRectBase {
public:
    void PaintDcRect(const CRect& rect, wxDC* dc) const override {
        rects.push_back(rect);
        dcs.push_back(dc);
    }
    mutable std::vector<CRect> rects;
    mutable std::vector<wxDC*> dcs;
};

TEST(ColorRectPainters, SolidFillCoversExactlyTheRectangle) {
    CCanvas canvas(10, 10);
    CColorRect(0x002dff).PaintDcRect(CRect(2, 3, 4, 5), canvas.Dc());
    EXPECT_TRUE(canvas.All(2, 3, 4, 5, Rgb{255, 45, 0}));
    EXPECT_EQ(canvas.At(1, 3), kUntouched);
    EXPECT_EQ(canvas.At(6, 3), kUntouched);
    EXPECT_EQ(canvas.At(2, 2), kUntouched);
    EXPECT_EQ(canvas.At(2, 8), kUntouched);
}

TEST(ColorRectPainters, SetColorTakesEffectOnTheNextPaint) {
    CColorRect rect(0x000000);
    rect.SetColor(0xd0ee78);
    CCanvas canvas(3, 3);
    rect.PaintDcRect(CRect(0, 0, 3, 3), canvas.Dc());
    EXPECT_EQ(canvas.At(1, 1), (Rgb{120, 238, 208}));
}

TEST(ColorRectPainters, NullDeviceContextPaintsNothing) {
    CRecordingPainter inner;
    CColorRect(0xffffff).PaintDcRect(CRect(0, 0, 5, 5), nullptr);
    CColorRectGradient(eGradientVertical, 0, 0xffffff).PaintDcRect(CRect(0, 0, 5, 5), nullptr);
    CColorRectBoundary(0xffffff, &inner, 1).PaintDcRect(CRect(0, 0, 5, 5), nullptr);
    CColorRectBmp(nullptr).PaintDcRect(CRect(0, 0, 5, 5), nullptr);
    CKorvalinBackGround().PaintDcRect(CRect(0, 0, 5, 5), nullptr);
    {
        // Not even the diagonal kind's assertion.
        vtxtest::ExpectWxAsserts asserts;
        CColorRectGradient(eGradientDiagonal, 0, 0xffffff).PaintDcRect(CRect(0, 0, 5, 5), nullptr);
        EXPECT_EQ(asserts.Count(), 0);
    }
    EXPECT_TRUE(inner.rects.empty());
}

TEST(ColorRectGradient, VerticalRowsTruncateTowardZeroFromTheStartColour) {
    CCanvas canvas(3, 6);
    CColorRectGradient(eGradientVertical, 0x000000, 0x0000ff).PaintDcRect(CRect(1, 1, 1, 4), canvas.Dc());
    EXPECT_EQ(canvas.At(1, 1), (Rgb{0, 0, 0}));
    EXPECT_EQ(canvas.At(1, 2), (Rgb{63, 0, 0}));
    EXPECT_EQ(canvas.At(1, 3), (Rgb{127, 0, 0}));
    EXPECT_EQ(canvas.At(1, 4), (Rgb{191, 0, 0}));
    EXPECT_EQ(canvas.At(1, 0), kUntouched);
    EXPECT_EQ(canvas.At(1, 5), kUntouched);
    EXPECT_EQ(canvas.At(0, 2), kUntouched);
    EXPECT_EQ(canvas.At(2, 2), kUntouched);
}

TEST(ColorRectGradient, FallingChannelsTruncateTowardZeroToo) {
    // Blue 255 -> 0 over 4 rows: steps of -63.75 give 255, 192, 128, 64 (truncation of negative
    // offsets rounds up); green 16 -> 32 rises by 4 per row.
    CCanvas canvas(2, 4);
    CColorRectGradient(eGradientVertical, 0xff1000, 0x002000).PaintDcRect(CRect(0, 0, 2, 4), canvas.Dc());
    EXPECT_EQ(canvas.At(0, 0), (Rgb{0, 16, 255}));
    EXPECT_EQ(canvas.At(1, 1), (Rgb{0, 20, 192}));
    EXPECT_EQ(canvas.At(0, 2), (Rgb{0, 24, 128}));
    EXPECT_EQ(canvas.At(1, 3), (Rgb{0, 28, 64}));
}

TEST(ColorRectGradient, HeightOnePaintsTheStartColourAndHeightZeroNothing) {
    CCanvas canvas(4, 3);
    CColorRectGradient gradient(eGradientVertical, 0x112233, 0xffffff);
    gradient.PaintDcRect(CRect(0, 1, 4, 1), canvas.Dc());
    gradient.PaintDcRect(CRect(0, 2, 4, 0), canvas.Dc());
    gradient.PaintDcRect(CRect(0, 2, 4, -3), canvas.Dc());
    EXPECT_TRUE(canvas.All(0, 1, 4, 1, Rgb{0x33, 0x22, 0x11}));
    EXPECT_TRUE(canvas.All(0, 0, 4, 1, kUntouched));
    EXPECT_TRUE(canvas.All(0, 2, 4, 1, kUntouched));
}

TEST(ColorRectGradient, SetColorsChangesBothEnds) {
    CColorRectGradient gradient(eGradientVertical, 0, 0);
    gradient.SetColors(0x0000ff, 0x000000);
    EXPECT_EQ(gradient.GetStartColor(), 0x0000ffu);
    EXPECT_EQ(gradient.GetEndColor(), 0u);
    CCanvas canvas(1, 2);
    gradient.PaintDcRect(CRect(0, 0, 1, 2), canvas.Dc());
    EXPECT_EQ(canvas.At(0, 0), (Rgb{255, 0, 0}));
    EXPECT_EQ(canvas.At(0, 1), (Rgb{128, 0, 0}));  // -127.5 truncates to -127
}

TEST(ColorRectGradient, DiagonalKindFillsTheStartColourAndAssertsOnce) {
    CCanvas canvas(8, 6);
    vtxtest::ExpectWxAsserts asserts;
    CColorRectGradient(eGradientDiagonal, 0x002dff, 0xffffff).PaintDcRect(CRect(1, 1, 6, 4), canvas.Dc());
    EXPECT_EQ(asserts.Count(), 1);
    EXPECT_EQ(asserts.LastCondition(), "0");
    EXPECT_EQ(asserts.LastFunction(), "PaintDcRect");
    EXPECT_EQ(asserts.LastFile(), "VisualComponents");
    EXPECT_EQ(asserts.LastLine(), 123);
    EXPECT_TRUE(canvas.All(1, 1, 6, 4, Rgb{255, 45, 0}));
    EXPECT_EQ(canvas.At(0, 0), kUntouched);
    EXPECT_EQ(canvas.At(7, 5), kUntouched);
}

TEST(ColorGradientLine, StepIsTheSignedDifferenceOverTheSteps) {
    const CColorGradientLine up(0, 255, 4);
    EXPECT_DOUBLE_EQ(up.GetStep(), 63.75);
    EXPECT_EQ(up.ValueAt(0), 0);
    EXPECT_EQ(up.ValueAt(3), 191);
    EXPECT_EQ(up.ValueAt(4), 255);
    const CColorGradientLine down(200, 100, 3);
    EXPECT_EQ(down.ValueAt(1), 167);  // 200 + trunc(-33.33)
    EXPECT_EQ(CColorGradientLine(7, 9, 0).ValueAt(5), 7);
}

TEST(ColorGradientLine, ColourPacksRedLowGreenMiddleBlueHigh) {
    const CColorGradientLine red(0x12, 0x12, 1), green(0x34, 0x34, 1), blue(0x56, 0x56, 1);
    EXPECT_EQ(GradientColorAt(red, green, blue, 0), 0x563412u);
}

TEST(ColorRectBoundary, BorderAroundTheInnerPainter) {
    CCanvas canvas(10, 10);
    CColorRect inner(0x0000ff);
    CColorRectBoundary(0xff0000, &inner, 2).PaintDcRect(CRect(0, 0, 10, 10), canvas.Dc());
    EXPECT_TRUE(canvas.All(2, 2, 6, 6, Rgb{255, 0, 0}));
    EXPECT_TRUE(canvas.All(0, 0, 10, 2, Rgb{0, 0, 255}));
    EXPECT_TRUE(canvas.All(0, 8, 10, 2, Rgb{0, 0, 255}));
    EXPECT_TRUE(canvas.All(0, 2, 2, 6, Rgb{0, 0, 255}));
    EXPECT_TRUE(canvas.All(8, 2, 2, 6, Rgb{0, 0, 255}));
}

TEST(ColorRectBoundary, BorderWiderThanHalfLeavesTheInnerPainterAnEmptyRectangle) {
    CCanvas canvas(10, 10);
    CRecordingPainter inner;
    CColorRectBoundary(0x00ff00, &inner, 6).PaintDcRect(CRect(0, 0, 10, 10), canvas.Dc());
    ASSERT_EQ(inner.rects.size(), 1u);
    EXPECT_EQ(inner.rects[0].width, 0);
    EXPECT_EQ(inner.rects[0].height, 0);
    EXPECT_EQ(inner.dcs[0], canvas.Dc());
    EXPECT_TRUE(canvas.All(0, 0, 10, 10, Rgb{0, 255, 0}));
}

TEST(ColorRectBoundary, WithoutInnerPainterOnlyTheBorderColourIsPainted) {
    CCanvas canvas(6, 6);
    CColorRectBoundary(0x00ff00, nullptr, 1).PaintDcRect(CRect(0, 0, 6, 6), canvas.Dc());
    EXPECT_TRUE(canvas.All(0, 0, 6, 6, Rgb{0, 255, 0}));
}

TEST(ColorRectBmp, InvalidOrMissingSourceLeavesTheRectangleUntouched) {
    CCanvas canvas(8, 8);
    CImageImplementationWX notLoaded;
    const CColorRectBmp painter(&notLoaded);
    EXPECT_EQ(painter.GetImageWidth(), 0);
    painter.PaintDcRect(CRect(0, 0, 8, 8), canvas.Dc());
    CColorRectBmp(nullptr).PaintDcRect(CRect(0, 0, 8, 8), canvas.Dc());
    EXPECT_TRUE(canvas.All(0, 0, 8, 8, kUntouched));
}

TEST(ColorRectBmp, ScalesTheImageToTheRectangle) {
    CImageImplementationWX frame;
    ASSERT_TRUE(frame.Load(364, 3));
    const CColorRectBmp painter(&frame);
    EXPECT_EQ(painter.GetImageWidth(), 68);
    EXPECT_EQ(painter.GetImageHeight(), 80);
    CCanvas canvas(40, 44);
    painter.PaintDcRect(CRect(3, 2, 34, 40), canvas.Dc());
    const wxImage source = frame.GetImage();
    // The centre of the half-size copy is the centre of the frame's light inside.
    const Rgb centre = canvas.At(3 + 17, 2 + 20);
    const Rgb expected{source.GetRed(34, 40), source.GetGreen(34, 40), source.GetBlue(34, 40)};
    EXPECT_NEAR(centre.r, expected.r, 6);
    EXPECT_NEAR(centre.g, expected.g, 6);
    EXPECT_NEAR(centre.b, expected.b, 6);
    EXPECT_EQ(canvas.At(2, 2), kUntouched);
    EXPECT_EQ(canvas.At(37, 2), kUntouched);
    EXPECT_EQ(canvas.At(3, 42), kUntouched);
    EXPECT_NE(canvas.At(3 + 17, 2), kUntouched);
}

TEST(FieldColorRect, CopiesTheRequestedRegionOfTheCachedBackground) {
    CFieldColorRectBase field;
    EXPECT_FALSE(field.IsCached());
    EXPECT_FALSE(field.CacheBackGround(nullptr, 0, 5));
    const CColorRectGradient gradient(eGradientVertical, 0x000000, 0x0000ff);
    ASSERT_TRUE(field.CacheBackGround(&gradient, 4, 4));
    EXPECT_TRUE(field.IsCached());
    CCanvas canvas(4, 4);
    field.PaintBackGround(0, 2, 4, 2, canvas.Dc());
    field.PaintBackGround(0, 0, 4, 2, nullptr);
    EXPECT_TRUE(canvas.All(0, 0, 4, 1, Rgb{127, 0, 0}));
    EXPECT_TRUE(canvas.All(0, 1, 4, 1, Rgb{191, 0, 0}));
    EXPECT_TRUE(canvas.All(0, 2, 4, 2, kUntouched));
}

// Restores the instrument type when a test ends.
class KorvalinBackGround : public ::testing::Test {
protected:
    void TearDown() override { SetInstrumentTypeForTesting(0); }
};

TEST_F(KorvalinBackGround, MintFillWithLighterDecorationForTheKorvalin) {
    SetInstrumentTypeForTesting(0);
    CCanvas canvas(800, 600);
    CKorvalinBackGround(true).PaintDcRect(CRect(0, 0, 800, 600), canvas.Dc());
    EXPECT_EQ(canvas.At(300, 300), (Rgb{120, 238, 208}));
    const CRect ellipse = CKorvalinBackGround::GetEllipseRect(0);
    const wxPoint centre(ellipse.x + ellipse.width / 2, ellipse.y + ellipse.height / 2);
    ASSERT_TRUE(wxRect(0, 0, 800, 600).Contains(centre));
    EXPECT_EQ(canvas.At(centre.x, centre.y), (Rgb{165, 255, 229}));
    // Logo 336 is not embedded: the painter asked for it and the cache remembers the failure.
    CImageResourceManager* cache = CSingleton<CImageResourceManager>::GetInstance();
    ASSERT_NE(cache, nullptr);
    EXPECT_TRUE(cache->IsCached(336));
    EXPECT_EQ(cache->Get(336, 0), nullptr);
}

TEST_F(KorvalinBackGround, WithoutDecorationAndForOtherTypesPlainColours) {
    SetInstrumentTypeForTesting(0);
    const CRect ellipse = CKorvalinBackGround::GetEllipseRect(0);
    const wxPoint centre(ellipse.x + ellipse.width / 2, ellipse.y + ellipse.height / 2);
    {
        CCanvas canvas(800, 600);
        CKorvalinBackGround(false).PaintDcRect(CRect(0, 0, 800, 600), canvas.Dc());
        EXPECT_EQ(canvas.At(centre.x, centre.y), (Rgb{120, 238, 208}));
    }
    SetInstrumentTypeForTesting(2);
    CCanvas canvas(800, 600);
    CKorvalinBackGround(true).PaintDcRect(CRect(0, 0, 800, 600), canvas.Dc());
    EXPECT_EQ(canvas.At(centre.x, centre.y), (Rgb{240, 240, 240}));
    EXPECT_EQ(canvas.At(300, 300), (Rgb{240, 240, 240}));
}

TEST_F(KorvalinBackGround, StaysInsideItsRectangle) {
    SetInstrumentTypeForTesting(0);
    CCanvas canvas(100, 100);
    CKorvalinBackGround(true).PaintDcRect(CRect(20, 20, 30, 30), canvas.Dc());
    EXPECT_EQ(canvas.At(19, 19), kUntouched);
    EXPECT_EQ(canvas.At(50, 50), kUntouched);
    EXPECT_EQ(canvas.At(5, 5), kUntouched);  // inside the first ellipse, outside the rectangle
    EXPECT_NE(canvas.At(30, 30), kUntouched);
}

TEST(ViewBackGround, ChosenOnceForTheKorvalin) {
    ASSERT_EQ(GetInstrumentType(), 0);
    const CColorRectBase* first = GetViewBackGround();
    ASSERT_NE(first, nullptr);
    EXPECT_NE(dynamic_cast<const CKorvalinBackGround*>(first), nullptr);
    SetInstrumentTypeForTesting(1);
    EXPECT_EQ(GetViewBackGround(), first);
    SetInstrumentTypeForTesting(0);
}

}  // namespace
