// Colour values: 0x00BBGGRR.
#include "ui/VisualComponents.h"

#include <gtest/gtest.h>

TEST(ColorValues, RedIsTheLowByteAndTheTopByteIsIgnored) {
    EXPECT_EQ(ColorValueToWx(0xd0ee78), wxColour(120, 238, 208, 255));
    EXPECT_EQ(ColorValueToWx(0xab002dff), wxColour(255, 45, 0, 255));
    EXPECT_EQ(WxToColorValue(wxColour(120, 238, 208)), 0xd0ee78u);
    EXPECT_EQ(GetSchemeColor(8, 0) | GetSchemeColor(0, 22) | GetCurrentColor(22) | GetCurrentColor(-1), 0u);
}
