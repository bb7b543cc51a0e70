#include "foundation/InstrumentTime.h"

#include "tests/common/WxAssert.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <string>

namespace {

// Local times throughout, so the results do not depend on the machine's time zone.
const CInstrumentTime kMoment(2, 10, 2017, 14, 7, 5);

TEST(InstrumentTime, FormatsOfTheLogPrefixAndTheSettings) {
    ASSERT_TRUE(kMoment.IsValid());
    const CInstrumentTime midnight(1, 1, 2020, 0, 0, 0);
    const struct {
        std::string actual, expected;
    } cases[] = {
        {kMoment.FormatDateTime(true), "02/10/2017 14:07"},
        {kMoment.FormatDateTime(false), "10/02/2017 02:07 PM"},
        {kMoment.FormatSettings(), "02102017 1407"},
        {midnight.FormatDateTime(false), "01/01/2020 12:00 AM"},
        {midnight.FormatSettings(), "01012020 0000"},
    };
    for (const auto& c : cases) EXPECT_EQ(c.actual, c.expected);
}

TEST(InstrumentTime, SettingsFormReadsBackStrictly) {
    CInstrumentTime parsed;
    ASSERT_TRUE(CInstrumentTime::ParseSettings("02102017 1407", parsed));
    EXPECT_EQ(parsed, CInstrumentTime(2, 10, 2017, 14, 7, 0));

    const CInstrumentTime before = parsed;
    for (const char* bad : {"", "2102017 1407", "021020171407", "02102017  1407", "02102017 14070",
                            "02-10-2017 1407", "02102017 2407", "02102017 1460", "31022017 1200",
                            "00102017 1200", "02132017 1200", " 2102017 1407", "0210201a 1407"}) {
        EXPECT_FALSE(CInstrumentTime::ParseSettings(bad, parsed)) << bad;
        EXPECT_EQ(parsed, before) << bad;
    }
    EXPECT_FALSE(CInstrumentTime::ParseSettings(std::string("02102017\0" "1407", 13), parsed));
    ASSERT_TRUE(CInstrumentTime::ParseSettings("29022016 2359", parsed));
    EXPECT_EQ(parsed.GetDay(), 29);

    // A time that does not exist in local time (the hour skipped by summer time) is refused, not
    // moved to another hour.
    const char* zone = std::getenv("TZ");
    const std::string saved = zone ? zone : "";
    setenv("TZ", "Europe/Berlin", 1);
    tzset();
    EXPECT_FALSE(CInstrumentTime::ParseSettings("26032017 0230", parsed));
    EXPECT_TRUE(CInstrumentTime::ParseSettings("26032017 0330", parsed));
    zone ? setenv("TZ", saved.c_str(), 1) : unsetenv("TZ");
    tzset();
}

TEST(InstrumentTime, ArithmeticAndImpossibleFields) {
    CInstrumentTime later = kMoment + CInstrumentTimeSpan::Minutes(90);
    EXPECT_EQ((kMoment - later).GetMinutes(), -90);
    later.Subtract(CInstrumentTimeSpan::Hours(1)).Add(CInstrumentTimeSpan::Seconds(1));
    EXPECT_EQ(later.FormatWithSeconds(), "14:37:06");
    EXPECT_FALSE(CInstrumentTime(30, 2, 2017).IsValid());
    EXPECT_FALSE(CInstrumentTime(1, 1, 2017, 24).IsValid());
}

TEST(InstrumentTime, OperationsOnAnInvalidTimeAssertAndDoNothing) {
    const CInstrumentTime invalid;
    CInstrumentTime copy = invalid;  // copying and asking are not operations on the value
    EXPECT_FALSE(copy.IsValid());
    vtxtest::ExpectWxAsserts asserts;
    EXPECT_EQ(invalid.FormatSettings(), "");
    EXPECT_NE(asserts.LastCondition().find("IsValid"), std::string::npos);
    EXPECT_FALSE(invalid < kMoment);
    EXPECT_FALSE(kMoment == invalid);
    copy.Add(CInstrumentTimeSpan::Minutes(1));
    EXPECT_FALSE(copy.IsValid());
    EXPECT_EQ((kMoment - invalid).GetMilliseconds(), 0);
    EXPECT_EQ(asserts.Count(), 5);
}

}  // namespace
