// Colour values, the compiled-in colour schemes and the current colours.
#include "ui/VisualComponents.h"

#include <gtest/gtest.h>

namespace {

TEST(ColorValues, RedIsTheLowByteAndTheTopByteIsIgnored) {
    const wxColour mint = ColorValueToWx(0xd0ee78);
    EXPECT_EQ(mint.Red(), 120);
    EXPECT_EQ(mint.Green(), 238);
    EXPECT_EQ(mint.Blue(), 208);
    EXPECT_EQ(mint.Alpha(), 255);
    const wxColour red = ColorValueToWx(0xab002dff);
    EXPECT_EQ(red.Red(), 255);
    EXPECT_EQ(red.Green(), 45);
    EXPECT_EQ(red.Blue(), 0);
    EXPECT_EQ(red.Alpha(), 255);
    EXPECT_EQ(WxToColorValue(wxColour(120, 238, 208)), 0xd0ee78u);
}

TEST(ColorSchemes, SpotChecksOfEveryScheme) {
    struct {
        int scheme, slot;
        TColorValue value;
    } const spots[] = {
        {0, 0, 0xd0ee78}, {0, 4, 0xffffff}, {0, 9, 0x002dff},  {0, 15, 0xffffff}, {0, 19, 0x808080},
        {1, 0, 0xc56a31}, {1, 1, 0xffd0a8}, {1, 7, 0xc56a31},  {1, 12, 0xffffff}, {1, 13, 0x000000},
        {2, 0, 0xeff2e2}, {2, 1, 0xffedd6}, {2, 4, 0xe0e2c6},  {2, 6, 0x4f4c49},  {2, 16, 0x4f4c49},
        {3, 0, 0x3d3d3d}, {3, 1, 0x333333}, {3, 4, 0x3d3d56},  {3, 11, 0xffffff}, {3, 18, 0xffffff},
        {4, 0, 0x233d00}, {4, 1, 0x218c60}, {4, 5, 0x217c4c},  {4, 7, 0x1182e8},  {4, 17, 0x1182e8},
        {5, 0, 0xffedd6}, {5, 1, 0xeff2e2}, {5, 5, 0xc0c0c0},  {5, 7, 0xc56a31},  {5, 14, 0xffffff},
        {6, 0, 0xffedd6}, {6, 1, 0x808080}, {6, 9, 0x45230c},  {6, 7, 0xc56a31},  {6, 12, 0xffffff},
        {7, 0, 0xf0f0f0}, {7, 3, 0xf0f0f0}, {7, 8, 0x808080},  {7, 19, 0xc0c0c0}, {7, 15, 0xffffff},
    };
    for (const auto& s : spots)
        EXPECT_EQ(GetSchemeColor(s.scheme, s.slot), s.value) << "scheme " << s.scheme << " slot " << s.slot;
}

TEST(ColorSchemes, SlotsSharedByAllSchemes) {
    for (int scheme = 0; scheme < kColorSchemeCount; ++scheme) {
        SCOPED_TRACE(scheme);
        EXPECT_EQ(GetSchemeColor(scheme, 10), 0x007f32u);
        EXPECT_EQ(GetSchemeColor(scheme, 15), 0xffffffu);
        EXPECT_EQ(GetSchemeColor(scheme, 20), 0x002dffu);
        EXPECT_EQ(GetSchemeColor(scheme, 21), 0xc0c0c0u);
        if (scheme >= 1 && scheme <= 6) {
            EXPECT_EQ(GetSchemeColor(scheme, 2), 0x000000u);
            EXPECT_EQ(GetSchemeColor(scheme, 3), 0x002dffu);
            EXPECT_EQ(GetSchemeColor(scheme, 19), 0x808080u);
        }
        if (scheme != 7) {
            EXPECT_EQ(GetSchemeColor(scheme, 8), 0xffffffu);
        }
        if (scheme != 6) {
            EXPECT_EQ(GetSchemeColor(scheme, 9), 0x002dffu);
        }
    }
}

TEST(ColorSchemes, FlagsAndOutOfRangeQueries) {
    const int flags[kColorSchemeCount] = {0, 0, 1, 1, 1, 1, 0, 0};
    for (int scheme = 0; scheme < kColorSchemeCount; ++scheme) EXPECT_EQ(GetSchemeFlag(scheme), flags[scheme]);
    EXPECT_EQ(GetSchemeFlag(8), 0);
    EXPECT_EQ(GetSchemeFlag(-1), 0);
    EXPECT_EQ(GetSchemeColor(8, 0), 0u);
    EXPECT_EQ(GetSchemeColor(0, 22), 0u);
    EXPECT_EQ(GetCurrentColor(22), 0u);
    EXPECT_EQ(GetCurrentColor(-1), 0u);
}

TEST(ColorSchemes, CurrentColoursStartAtSchemeZeroAndFollowTheChoice) {
    ASSERT_EQ(GetCurrentColorScheme(), 0);
    for (int slot = 0; slot < kColorSlotCount; ++slot) EXPECT_EQ(GetCurrentColor(slot), GetSchemeColor(0, slot));

    EXPECT_TRUE(ChooseColorScheme(4));
    EXPECT_EQ(GetCurrentColorScheme(), 4);
    EXPECT_EQ(GetCurrentSchemeFlag(), 1);
    for (int slot = 0; slot < kColorSlotCount; ++slot) EXPECT_EQ(GetCurrentColor(slot), GetSchemeColor(4, slot));
    EXPECT_EQ(GetCurrentWxColor(eColorBackground).Red(), 0x60);

    EXPECT_FALSE(ChooseColorScheme(8));
    EXPECT_FALSE(ChooseColorScheme(-1));
    EXPECT_EQ(GetCurrentColorScheme(), 4);
    EXPECT_EQ(GetCurrentColor(0), 0x233d00u);

    EXPECT_TRUE(ChooseColorScheme(0));
    EXPECT_EQ(GetCurrentColor(0), 0xd0ee78u);
}

}  // namespace
