#include "foundation/InstrumentTime.h"

#include "foundation/Collectors.h"
#include "tests/common/WxAssert.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

// Local times throughout, so the results do not depend on the machine's time zone.
const CInstrumentTime kMoment(2, 10, 2017, 14, 7, 5);

TEST(InstrumentTime, DisplayFormsFollowTheDateFormat) {
    ASSERT_TRUE(kMoment.IsValid());
    EXPECT_EQ(kMoment.FormatDateTime(true), "02/10/2017 14:07");
    EXPECT_EQ(kMoment.FormatDateTime(false), "10/02/2017 02:07 PM");
    EXPECT_EQ(kMoment.FormatDate(true), "02/10/2017");
    EXPECT_EQ(kMoment.FormatDate(false), "10/02/2017");
    EXPECT_EQ(kMoment.FormatClock(true, true), "14:07");
    EXPECT_EQ(kMoment.FormatClock(false, true), "02:07 PM");
    EXPECT_EQ(kMoment.FormatClock(true, false), "14 07");
    EXPECT_EQ(kMoment.FormatClock(false, false), "02 07 PM");
}

TEST(InstrumentTime, FixedFormsIgnoreTheDateFormat) {
    EXPECT_EQ(kMoment.FormatWithSeconds(), "14:07:05");
    EXPECT_EQ(kMoment.FormatSettings(), "02102017 1407");
    EXPECT_EQ(kMoment.FormatXml(), "2017-10-02T14:07:05");
    EXPECT_EQ(CInstrumentTime::XmlFormat(), "%Y-%m-%dT%H:%M:%S");
    EXPECT_EQ(&CInstrumentTime::XmlFormat(), &CInstrumentTime::XmlFormat());

    const CInstrumentTime midnight(1, 1, 2020, 0, 0, 0);
    EXPECT_EQ(midnight.FormatDateTime(false), "01/01/2020 12:00 AM");
    EXPECT_EQ(midnight.FormatSettings(), "01012020 0000");
    EXPECT_EQ(CInstrumentTime(31, 12, 1999, 9, 5, 0).FormatClock(false, true), "09:05 AM");
}

TEST(InstrumentTime, SettingsFormReadsBackStrictly) {
    CInstrumentTime parsed;
    ASSERT_TRUE(CInstrumentTime::ParseSettings("02102017 1407", parsed));
    EXPECT_EQ(parsed, CInstrumentTime(2, 10, 2017, 14, 7, 0));
    EXPECT_EQ(parsed.FormatSettings(), "02102017 1407");

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
    EXPECT_EQ(parsed.GetMonth(), 2);
}

TEST(InstrumentTime, ArithmeticAndOrder) {
    CInstrumentTime later = kMoment + CInstrumentTimeSpan::Minutes(90);
    EXPECT_EQ(later.FormatWithSeconds(), "15:37:05");
    EXPECT_TRUE(kMoment < later);
    EXPECT_TRUE(later > kMoment);
    EXPECT_TRUE(kMoment <= kMoment);
    EXPECT_FALSE(kMoment != CInstrumentTime(kMoment.GetDateTime()));
    EXPECT_EQ((later - kMoment).GetSeconds(), 90 * 60);
    EXPECT_EQ((kMoment - later).GetMinutes(), -90);
    later.Subtract(CInstrumentTimeSpan::Hours(1)).Add(CInstrumentTimeSpan::Seconds(1));
    EXPECT_EQ(later.FormatWithSeconds(), "14:37:06");
    const CInstrumentTime nextDay = kMoment + CInstrumentTimeSpan::Days(30);
    EXPECT_EQ(nextDay.FormatDate(true), "01/11/2017");
    EXPECT_EQ((CInstrumentTimeSpan::Milliseconds(1500) + CInstrumentTimeSpan::Seconds(1)).GetMilliseconds(), 2500);
    EXPECT_TRUE(CInstrumentTimeSpan::Seconds(59) < CInstrumentTimeSpan::Minutes(1));
}

TEST(InstrumentTime, ImpossibleFieldsGiveAnInvalidTime) {
    EXPECT_FALSE(CInstrumentTime(30, 2, 2017).IsValid());
    EXPECT_FALSE(CInstrumentTime(1, 13, 2017).IsValid());
    EXPECT_FALSE(CInstrumentTime(1, 1, 2017, 24).IsValid());
    EXPECT_FALSE(CInstrumentTime().IsValid());
    EXPECT_TRUE(CInstrumentTime::Now().IsValid());
}

TEST(InstrumentTime, OperationsOnAnInvalidTimeAssertAndDoNothing) {
    const CInstrumentTime invalid;
    CInstrumentTime copy = invalid;  // copying and asking are not operations on the value
    EXPECT_FALSE(copy.IsValid());
    {
        vtxtest::ExpectWxAsserts asserts;
        EXPECT_EQ(invalid.FormatSettings(), "");
        EXPECT_EQ(asserts.Count(), 1);
        EXPECT_NE(asserts.LastCondition().find("IsValid"), std::string::npos);
    }
    {
        vtxtest::ExpectWxAsserts asserts;
        EXPECT_FALSE(invalid < kMoment);
        EXPECT_FALSE(kMoment == invalid);
        copy.Add(CInstrumentTimeSpan::Minutes(1));
        EXPECT_FALSE(copy.IsValid());
        EXPECT_EQ((kMoment - invalid).GetMilliseconds(), 0);
        EXPECT_EQ(asserts.Count(), 4);
    }
}

TEST(InstrumentTime, SharedBetweenThreadsInASafeVar) {
    CSafeVar<CInstrumentTime> shared;
    EXPECT_FALSE(shared.Get().IsValid());
    std::thread writer([&shared] {
        for (int i = 0; i < 200; ++i) shared.Set(kMoment + CInstrumentTimeSpan::Minutes(i));
    });
    for (int i = 0; i < 200; ++i) {
        const CInstrumentTime seen = shared.Get();
        if (seen.IsValid()) {
            EXPECT_FALSE(seen < kMoment);
        }
    }
    writer.join();
    EXPECT_EQ(shared.Get().FormatSettings(), "02102017 1726");
}

}  // namespace
