// Painters, drawn into bitmaps and read back pixel by pixel.
#include "ui/VisualComponents.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "foundation/common/InstrumentCommonData.h"
#include "tests/ui/UiTestSupport.h"
#include "ui/ImageResources.h"

using uitest::CCanvas;
using uitest::kUntouched;
using uitest::Rgb;

namespace {

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
        CColorRectGradient(eGradientVertical, c.start, c.end).PaintDcRect(CRect(1, 1, 2, height), canvas.Dc());
        for (int row = 0; row < height; ++row) EXPECT_TRUE(canvas.All(1, 1 + row, 2, 1, c.rows[row])) << row;
        EXPECT_TRUE(canvas.All(0, 0, 4, 1, kUntouched) && canvas.All(0, height + 1, 4, 1, kUntouched) &&
                    canvas.All(0, 1, 1, height, kUntouched) && canvas.All(3, 1, 1, height, kUntouched));
    }
}

TEST(KorvalinBackGround, MintWithLighterEllipsesForTheKorvalinOnlyAndInsideItsRectangle) {
    const CRect ellipse = CKorvalinBackGround::GetEllipseRect(0);
    const int x = ellipse.x + ellipse.width / 2, y = ellipse.y + ellipse.height / 2;
    ASSERT_TRUE(wxRect(0, 0, 800, 600).Contains(x, y));
    struct {
        int type;
        bool decoration;
        Rgb fill, ellipse;
    } const cases[] = {{0, true, {120, 238, 208}, {165, 255, 229}}, {2, true, {240, 240, 240}, {240, 240, 240}}};
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
