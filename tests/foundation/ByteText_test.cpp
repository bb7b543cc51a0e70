// Bytes from files and traces becoming toolkit text.
#include "foundation/ByteText.h"

#include <gtest/gtest.h>

#include <string>

using namespace std::string_literals;

TEST(ByteText, WellFormedUtf8AtTheEdgesOfEachLength) {
    for (const std::string& good :
         {""s, "a\0b"s, "\xc2\x80"s, "\xdf\xbf"s, "\xe0\xa0\x80"s, "\xed\x9f\xbf"s, "\xee\x80\x80"s,
          "\xef\xbf\xbf"s, "\xf0\x90\x80\x80"s, "\xf4\x8f\xbf\xbf"s}) {
        EXPECT_TRUE(IsWellFormedUtf8(good.data(), good.size())) << good;
        EXPECT_EQ(TextFromBytes(good).utf8_string(), good);
    }
    // Overlong forms, surrogates, past U+10FFFF, stray or missing continuation bytes.
    for (const std::string& bad : {"\x80"s, "\xc0\x80"s, "\xc1\xbf"s, "\xe0\x9f\xbf"s, "\xed\xa0\x80"s,
                                   "\xf0\x8f\xbf\xbf"s, "\xf4\x90\x80\x80"s, "\xf5\x80\x80\x80"s, "\xff"s,
                                   "\xe2\x82"s, "\xe2\x28\xa1"s, "\xf0\x90\x80\x28"s, "ok\xc3"s}) {
        EXPECT_FALSE(IsWellFormedUtf8(bad.data(), bad.size())) << bad;
        // Taken as Latin-1, one character per byte, and written back without complaint.
        const wxString text = TextFromBytes(bad);
        EXPECT_EQ(text.length(), bad.size());
        EXPECT_EQ(static_cast<unsigned>(text[0].GetValue()), static_cast<unsigned char>(bad[0]));
        EXPECT_FALSE(text.utf8_string().empty());
    }
}
