#include "foundation/InstrumentTime.h"

#include "foundation/InstrumentEnums.h"

#include <wx/debug.h>
#include <wx/wxcrt.h>

#include <cctype>

namespace {
const char* const kInvalid = "invalid wxDateTime";

std::string ToUtf8(const wxString& text) { return text.utf8_string(); }
}  // namespace

// ---------------------------------------------------------------------------------------------
// CInstrumentTime

CInstrumentTime::CInstrumentTime(int day, int month, int year, int hour, int minute, int second) {
    // wxDateTime asserts on impossible fields; an impossible time is an invalid one here.
    if (month < 1 || month > 12 || day < 1 || hour < 0 || hour > 23 || minute < 0 || minute > 59 || second < 0 ||
        second > 59)
        return;
    const wxDateTime::Month m = static_cast<wxDateTime::Month>(month - 1);
    if (day > wxDateTime::GetNumberOfDays(m, year)) return;
    m_dateTime.Set(static_cast<wxDateTime::wxDateTime_t>(day), m, year,
                   static_cast<wxDateTime::wxDateTime_t>(hour), static_cast<wxDateTime::wxDateTime_t>(minute),
                   static_cast<wxDateTime::wxDateTime_t>(second));
}

CInstrumentTime CInstrumentTime::Now() { return CInstrumentTime(wxDateTime::Now()); }

bool CInstrumentTime::IsEqualTo(const CInstrumentTime& other) const {
    wxCHECK_MSG(IsValid() && other.IsValid(), false, kInvalid);
    return m_dateTime.IsEqualTo(other.m_dateTime);
}
bool CInstrumentTime::IsEarlierThan(const CInstrumentTime& other) const {
    wxCHECK_MSG(IsValid() && other.IsValid(), false, kInvalid);
    return m_dateTime.IsEarlierThan(other.m_dateTime);
}
bool CInstrumentTime::IsLaterThan(const CInstrumentTime& other) const {
    wxCHECK_MSG(IsValid() && other.IsValid(), false, kInvalid);
    return m_dateTime.IsLaterThan(other.m_dateTime);
}

CInstrumentTime& CInstrumentTime::Add(const CInstrumentTimeSpan& span) {
    wxCHECK_MSG(IsValid(), *this, kInvalid);
    m_dateTime.Add(span.GetTimeSpan());
    return *this;
}
CInstrumentTime& CInstrumentTime::Subtract(const CInstrumentTimeSpan& span) {
    wxCHECK_MSG(IsValid(), *this, kInvalid);
    m_dateTime.Subtract(span.GetTimeSpan());
    return *this;
}
CInstrumentTimeSpan CInstrumentTime::Subtract(const CInstrumentTime& other) const {
    wxCHECK_MSG(IsValid() && other.IsValid(), CInstrumentTimeSpan(), kInvalid);
    return CInstrumentTimeSpan(m_dateTime.Subtract(other.m_dateTime));
}
// ---------------------------------------------------------------------------------------------
// Text forms

const char* CInstrumentTime::DateTimeFormat(bool dayFirst) {
    return dayFirst ? "%d/%m/%Y %H:%M" : "%m/%d/%Y %I:%M %p";
}
const char* CInstrumentTime::DateFormat(bool dayFirst) { return dayFirst ? "%d/%m/%Y" : "%m/%d/%Y"; }
std::string CInstrumentTime::ClockFormat(bool dayFirst, bool colon) {
    std::string format = dayFirst ? "%H:%M" : "%I:%M %p";
    if (!colon) {
        const std::string::size_type at = format.find(':');
        if (at != std::string::npos) format[at] = ' ';
    }
    return format;
}
const char* CInstrumentTime::SettingsFormat() { return "%d%m%Y %H%M"; }

const std::string& CInstrumentTime::XmlFormat() {
    static const std::string format = [] {
        const char* date[3] = {};
        date[eXmlDateYear] = "%Y";
        date[eXmlDateMonth] = "%m";
        date[eXmlDateDay] = "%d";
        const char* time[3] = {};
        time[eXmlTimeHour] = "%H";
        time[eXmlTimeMinute] = "%M";
        time[eXmlTimeSecond] = "%S";
        std::string f;
        f.append(date[eXmlDateYear])
            .append("-")
            .append(date[eXmlDateMonth])
            .append("-")
            .append(date[eXmlDateDay]);
        f.append("T");
        f.append(time[eXmlTimeHour])
            .append(":")
            .append(time[eXmlTimeMinute])
            .append(":")
            .append(time[eXmlTimeSecond]);
        return f;
    }();
    return format;
}

std::string CInstrumentTime::Format(const char* strftimeFormat) const {
    wxCHECK_MSG(IsValid(), std::string(), kInvalid);
    wxCHECK_MSG(strftimeFormat != nullptr, std::string(), "no format");
    return ToUtf8(m_dateTime.Format(wxString::FromUTF8(strftimeFormat), wxDateTime::Local));
}
std::string CInstrumentTime::FormatDateTime(bool dayFirst) const { return Format(DateTimeFormat(dayFirst)); }
std::string CInstrumentTime::FormatDate(bool dayFirst) const { return Format(DateFormat(dayFirst)); }
std::string CInstrumentTime::FormatClock(bool dayFirst, bool colon) const {
    return Format(ClockFormat(dayFirst, colon).c_str());
}
std::string CInstrumentTime::FormatWithSeconds() const { return Format("%H:%M:%S"); }
std::string CInstrumentTime::FormatSettings() const { return Format(SettingsFormat()); }
std::string CInstrumentTime::FormatXml() const { return Format(XmlFormat().c_str()); }

namespace {
// The fields day, month, year, hour and minute as the toolkit reads "%d%m%Y %H%M": up to 2, 2 and
// 4 digits, any white space (also none; whatever the toolkit takes for white space, Unicode's
// included), then up to 2 and 2 digits.
bool ReadSettingsFields(const wxString& text, int fields[5]) {
    static const size_t kWidths[5] = {2, 2, 4, 2, 2};
    wxString::const_iterator at = text.begin();
    for (int i = 0; i < 5; ++i) {
        while (i == 3 && at != text.end() && wxIsspace(*at)) ++at;
        size_t digits = 0;
        fields[i] = 0;
        for (; digits < kWidths[i] && at != text.end() && *at >= '0' && *at <= '9'; ++digits, ++at)
            fields[i] = fields[i] * 10 + static_cast<int>((*at).GetValue() - '0');
        if (digits == 0) return false;
    }
    return true;
}
}  // namespace

bool CInstrumentTime::ParseSettings(const std::string& text, CInstrumentTime& out) {
    // As the toolkit reads the form, with its leniency about field widths, blanks and trailing text.
    wxDateTime parsed;
    const wxString wide = wxString::FromUTF8(text.c_str());
    if (!parsed.ParseFormat(wide, wxString(SettingsFormat())) || !parsed.IsValid()) return false;
    // But the toolkit moves a time that does not exist locally (the hour skipped when summer time
    // begins) on to one that does; such a text names no time.
    int fields[5];
    const wxDateTime::Tm tm = parsed.GetTm(wxDateTime::Local);
    if (!ReadSettingsFields(wide, fields) || fields[0] != tm.mday || fields[1] != tm.mon + 1 ||
        fields[2] != tm.year || fields[3] != tm.hour || fields[4] != tm.min)
        return false;
    out = CInstrumentTime(parsed);
    return true;
}
