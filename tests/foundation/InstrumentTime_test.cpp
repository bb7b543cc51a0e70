#include "foundation/InstrumentTime.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <ctime>
#include <string>

namespace {

// Local times throughout, so the results do not depend on the machine's time zone.
TEST(InstrumentTime, FormatsOfTheLogPrefixAndTheSettings) {
    const CInstrumentTime moment(2, 10, 2017, 14, 7, 5), midnight(1, 1, 2020, 0, 0, 0);
    EXPECT_EQ(moment.FormatDateTime(true), "02/10/2017 14:07");
    EXPECT_EQ(moment.FormatDateTime(false), "10/02/2017 02:07 PM");
    EXPECT_EQ(moment.FormatSettings(), "02102017 1407");
    EXPECT_EQ(midnight.FormatDateTime(false), "01/01/2020 12:00 AM");
    EXPECT_EQ(midnight.FormatSettings(), "01012020 0000");
    // Log prefixes of a clock near or past the ends of a 32-bit time_t.
    for (const int year : {1901, 2038, 2040})
        EXPECT_EQ(CInstrumentTime(18, 1, year, 14, 7, 0).FormatDateTime(true),
                  "18/01/" + std::to_string(year) + " 14:07");
    EXPECT_EQ(moment.FormatClock(true, false) + "|" + moment.FormatClock(false, true) + "|" +
                  moment.FormatDate(false) + "|" + moment.FormatWithSeconds() + "|" + moment.FormatXml(),
              "14 07|02:07 PM|10/02/2017|14:07:05|2017-10-02T14:07:05");
    CInstrumentTime later(moment);
    EXPECT_EQ(later.Add(CInstrumentTimeSpan(wxTimeSpan::Hours(10))).FormatSettings(), "03102017 0007");
    EXPECT_TRUE(later.IsLaterThan(moment) && moment.IsEarlierThan(later) && !moment.IsEqualTo(later));
    EXPECT_EQ(later.Subtract(CInstrumentTimeSpan(wxTimeSpan::Hours(10))), moment);
}

TEST(InstrumentTime, SettingsFormReadsAsTheToolkitReadsIt) {
    CInstrumentTime parsed;
    // The toolkit's leniency: shorter fields, blanks or none before the time, trailing text.
    for (const auto& [text, time] : std::initializer_list<std::pair<const char*, CInstrumentTime>>{
             {"02102017 1407", {2, 10, 2017, 14, 7}},
             {"29022016 2359", {29, 2, 2016, 23, 59}},
             {"2102017 1407", {21, 2, 17, 14, 7}},
             {"021020171407", {2, 10, 2017, 14, 7}},
             {"02102017  1407", {2, 10, 2017, 14, 7}},
             {"02102017 14070", {2, 10, 2017, 14, 7}}}) {
        EXPECT_TRUE(CInstrumentTime::ParseSettings(text, parsed) && parsed == time) << text;
    }
    const CInstrumentTime before = parsed;
    for (const std::string bad : {"", "02-10-2017 1407", "02102017 2407", "02102017 1460", "31022017 1200",
                                  "00102017 1200", "02132017 1200", " 2102017 1407", "0210201a 1407"}) {
        EXPECT_FALSE(CInstrumentTime::ParseSettings(bad, parsed)) << bad;
        EXPECT_EQ(parsed, before) << bad;
    }
    EXPECT_FALSE(CInstrumentTime::ParseSettings(std::string("02102017 1407").replace(8, 1, 1, '\0'), parsed));
    // White space before the time is what the toolkit takes for it in the locale: in UTF-8 an em space,
    // not a no-break space.
    const std::string ctype = setlocale(LC_CTYPE, nullptr);
    ASSERT_TRUE(setlocale(LC_CTYPE, "C.UTF-8"));
    EXPECT_TRUE(CInstrumentTime::ParseSettings("02102017\u20031407", parsed) &&
                parsed == CInstrumentTime(2, 10, 2017, 14, 7));
    EXPECT_FALSE(CInstrumentTime::ParseSettings("02102017\u00a01407", parsed));
    setlocale(LC_CTYPE, ctype.c_str());

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

}  // namespace
