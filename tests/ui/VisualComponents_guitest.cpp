// Painters, drawn into bitmaps and read back pixel by pixel.
#include "ui/VisualComponents.h"

#include <gtest/gtest.h>

#include <vector>

#include "foundation/InstrumentCommonData.h"
#include "tests/common/WxAssert.h"
#include "tests/ui/UiTestSupport.h"
#include "ui/ImageResources.h"

using uitest::CCanvas;
using uitest::kUntouched;
using uitest::Rgb;

namespace {

// Remembers the rectangles it was asked to paint.
class CRecordingPainter : public CColorRectBase {
public:
    void PaintDcRect(const CRect& rect, wxDC* dc) const override { calls.push_back({rect, dc}); }
    mutable std::vector<std::pair<CRect, wxDC*>> calls;
};

TEST(ColorRectPainters, SolidFillCoversExactlyTheRectangle) {
    CCanvas canvas(10, 10);
    CColorRect(0x002dff).PaintDcRect(CRect(2, 3, 4, 5), canvas.Dc());
    EXPECT_TRUE(canvas.All(2, 3, 4, 5, Rgb{255, 45, 0}));
    for (const wxPoint& p : {wxPoint(1, 3), wxPoint(6, 3), wxPoint(2, 2), wxPoint(2, 8)})
        EXPECT_EQ(canvas.At(p.x, p.y), kUntouched) << p.x << "," << p.y;
}

TEST(ColorRectPainters, NullDeviceContextPaintsNothingAndDoesNotAssert) {
    CRecordingPainter inner;
    const CRect rect(0, 0, 5, 5);
    vtxtest::ExpectWxAsserts asserts;
    CColorRect(0xffffff).PaintDcRect(rect, nullptr);
    CColorRectGradient(eGradientVertical, 0, 0xffffff).PaintDcRect(rect, nullptr);
    CColorRectGradient(eGradientDiagonal, 0, 0xffffff).PaintDcRect(rect, nullptr);
    CColorRectBoundary(0xffffff, &inner, 1).PaintDcRect(rect, nullptr);
    CColorRectBmp(nullptr).PaintDcRect(rect, nullptr);
    CKorvalinBackGround().PaintDcRect(rect, nullptr);
    EXPECT_EQ(asserts.Count(), 0);
    EXPECT_TRUE(inner.calls.empty());
}

TEST(ColorRectGradient, RowsStepFromTheStartColourTruncatingTowardZero) {
    struct {
        TColorValue start, end;
        std::vector<Rgb> rows;
    } const cases[] = {
        {0x000000, 0x0000ff, {{0, 0, 0}, {63, 0, 0}, {127, 0, 0}, {191, 0, 0}}},
        // Falling channels: -63.75 per row truncates toward zero, so 255, 192, 128, 64.
        {0xff1000, 0x002000, {{0, 16, 255}, {0, 20, 192}, {0, 24, 128}, {0, 28, 64}}},
        {0x112233, 0xffffff, {{0x33, 0x22, 0x11}}},  // height 1: the start colour
        {0x112233, 0xffffff, {}},                    // height 0: nothing
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.rows.size());
        const int height = static_cast<int>(c.rows.size());
        CCanvas canvas(4, height + 2);
        CColorRectGradient(eGradientVertical, c.start, c.end)
            .PaintDcRect(CRect(1, 1, 2, height), canvas.Dc());
        for (int row = 0; row < height; ++row) EXPECT_TRUE(canvas.All(1, 1 + row, 2, 1, c.rows[row])) << row;
        EXPECT_TRUE(canvas.All(0, 0, 4, 1, kUntouched) && canvas.All(0, height + 1, 4, 1, kUntouched) &&
                    canvas.All(0, 1, 1, height, kUntouched) && canvas.All(3, 1, 1, height, kUntouched));
    }
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

TEST(ColorRectBoundary, BorderAroundTheInnerPainter) {
    CCanvas canvas(10, 10);
    const CColorRect inner(0x0000ff);
    CColorRectBoundary(0xff0000, &inner, 2).PaintDcRect(CRect(0, 0, 10, 10), canvas.Dc());
    EXPECT_TRUE(canvas.All(2, 2, 6, 6, Rgb{255, 0, 0}));
    const Rgb blue{0, 0, 255};
    EXPECT_TRUE(canvas.All(0, 0, 10, 2, blue) && canvas.All(0, 8, 10, 2, blue));
    EXPECT_TRUE(canvas.All(0, 2, 2, 6, blue) && canvas.All(8, 2, 2, 6, blue));
}

TEST(ColorRectBoundary, BorderWiderThanHalfLeavesTheInnerPainterAnEmptyRectangle) {
    CCanvas canvas(10, 10);
    CRecordingPainter inner;
    CColorRectBoundary(0x00ff00, &inner, 6).PaintDcRect(CRect(0, 0, 10, 10), canvas.Dc());
    ASSERT_EQ(inner.calls.size(), 1u);
    EXPECT_EQ(inner.calls[0].first.width, 0);
    EXPECT_EQ(inner.calls[0].first.height, 0);
    EXPECT_EQ(inner.calls[0].second, canvas.Dc());
    EXPECT_TRUE(canvas.All(0, 0, 10, 10, Rgb{0, 255, 0}));
}

TEST(ColorRectBmp, ScalesTheImageAndSkipsAnInvalidSource) {
    CCanvas canvas(40, 44);
    CImageImplementationWX notLoaded;
    CColorRectBmp(&notLoaded).PaintDcRect(CRect(0, 0, 40, 44), canvas.Dc());
    CColorRectBmp(nullptr).PaintDcRect(CRect(0, 0, 40, 44), canvas.Dc());
    CImageImplementationWX frame;
    ASSERT_TRUE(frame.Load(364, 3));
    CColorRectBmp(&frame).PaintDcRect(CRect(3, 2, 34, 40), canvas.Dc());
    // The centre of the half-size copy is the centre of the frame's light inside.
    const Rgb centre = canvas.At(3 + 17, 2 + 20);
    const wxImage source = frame.GetImage();
    EXPECT_NEAR(centre.r, source.GetRed(34, 40), 6);
    EXPECT_NEAR(centre.g, source.GetGreen(34, 40), 6);
    EXPECT_NEAR(centre.b, source.GetBlue(34, 40), 6);
    EXPECT_NE(canvas.At(3 + 17, 2), kUntouched);
    EXPECT_TRUE(canvas.All(0, 0, 40, 2, kUntouched) && canvas.All(0, 0, 3, 44, kUntouched));
    EXPECT_TRUE(canvas.All(0, 42, 40, 2, kUntouched) && canvas.All(37, 0, 3, 44, kUntouched));
}

TEST(KorvalinBackGround, MintWithLighterEllipsesForTheKorvalinOnlyAndInsideItsRectangle) {
    const CRect ellipse = CKorvalinBackGround::GetEllipseRect(0);
    const int x = ellipse.x + ellipse.width / 2, y = ellipse.y + ellipse.height / 2;
    ASSERT_TRUE(wxRect(0, 0, 800, 600).Contains(x, y));
    struct {
        int type;
        bool decoration;
        Rgb fill, ellipse;
    } const cases[] = {{0, true, {120, 238, 208}, {165, 255, 229}},
                       {0, false, {120, 238, 208}, {120, 238, 208}},
                       {2, true, {240, 240, 240}, {240, 240, 240}}};
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << "type " << c.type << ", decoration " << c.decoration);
        SetInstrumentTypeForTesting(c.type);
        CCanvas canvas(800, 600);
        CKorvalinBackGround(c.decoration).PaintDcRect(CRect(0, 0, 800, 600), canvas.Dc());
        EXPECT_EQ(canvas.At(300, 300), c.fill);
        EXPECT_EQ(canvas.At(x, y), c.ellipse);
    }
    EXPECT_TRUE(CSingleton<CImageResourceManager>::GetInstance()->IsCached(336)) << "the logo was looked for";
    SetInstrumentTypeForTesting(0);
    CCanvas canvas(100, 100);
    CKorvalinBackGround(true).PaintDcRect(CRect(20, 20, 30, 30), canvas.Dc());
    EXPECT_EQ(canvas.At(19, 19), kUntouched);
    EXPECT_EQ(canvas.At(50, 50), kUntouched);
    EXPECT_EQ(canvas.At(5, 5), kUntouched);  // inside the first ellipse, outside the rectangle
    EXPECT_NE(canvas.At(30, 30), kUntouched);
}

}  // namespace
