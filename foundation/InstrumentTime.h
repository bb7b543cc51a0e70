#pragma once
// The instrument's point in time (local time) and the duration between two of them, with the fixed
// text forms in which times are shown, stored and exchanged.

#include <wx/datetime.h>

#include <string>

class CInstrumentTimeSpan {
public:
    CInstrumentTimeSpan() = default;  // zero
    explicit CInstrumentTimeSpan(const wxTimeSpan& span) : m_span(span) {}
    virtual ~CInstrumentTimeSpan() = default;
    CInstrumentTimeSpan(const CInstrumentTimeSpan&) = default;
    CInstrumentTimeSpan& operator=(const CInstrumentTimeSpan&) = default;

    virtual const wxTimeSpan& GetTimeSpan() const { return m_span; }

private:
    wxTimeSpan m_span;
};

class CInstrumentTime {
public:
    CInstrumentTime() = default;  // invalid until assigned
    explicit CInstrumentTime(const wxDateTime& dateTime) : m_dateTime(dateTime) {}
    // A local time; month 1..12. Out-of-range fields give an invalid time.
    CInstrumentTime(int day, int month, int year, int hour = 0, int minute = 0, int second = 0);
    virtual ~CInstrumentTime() = default;
    CInstrumentTime(const CInstrumentTime&) = default;
    CInstrumentTime& operator=(const CInstrumentTime&) = default;

    static CInstrumentTime Now();

    // Comparison; an invalid operand asserts and compares as false.
    virtual bool IsEqualTo(const CInstrumentTime& other) const;
    virtual bool IsEarlierThan(const CInstrumentTime& other) const;
    virtual bool IsLaterThan(const CInstrumentTime& other) const;
    // Moves this time; an invalid time asserts and stays as it is.
    virtual CInstrumentTime& Add(const CInstrumentTimeSpan& span);
    virtual CInstrumentTime& Subtract(const CInstrumentTimeSpan& span);
    // The span from other to this (positive when this is later).
    virtual CInstrumentTimeSpan Subtract(const CInstrumentTime& other) const;

    const wxDateTime& GetDateTime() const { return m_dateTime; }
    bool IsValid() const { return m_dateTime.IsValid(); }

    bool operator==(const CInstrumentTime& other) const { return IsEqualTo(other); }
    bool operator!=(const CInstrumentTime& other) const { return !IsEqualTo(other); }
    bool operator<(const CInstrumentTime& other) const { return IsEarlierThan(other); }
    bool operator>(const CInstrumentTime& other) const { return IsLaterThan(other); }
    bool operator<=(const CInstrumentTime& other) const { return !IsLaterThan(other); }
    bool operator>=(const CInstrumentTime& other) const { return !IsEarlierThan(other); }

    // strftime-style conversion of the toolkit; UTF-8 text. Empty for an invalid time.
    std::string Format(const char* strftimeFormat) const;
    // "%d/%m/%Y %H:%M" day-first, "%m/%d/%Y %I:%M %p" month-first.
    std::string FormatDateTime(bool dayFirst) const;
    // "%d/%m/%Y" | "%m/%d/%Y".
    std::string FormatDate(bool dayFirst) const;
    // "%H:%M" | "%I:%M %p"; without the colon the first ":" becomes a blank ("14 07").
    std::string FormatClock(bool dayFirst, bool colon) const;
    // "%H:%M:%S".
    std::string FormatWithSeconds() const;
    // "%d%m%Y %H%M": the form of the settings files and the user log.
    std::string FormatSettings() const;
    // Reads the settings form back as the toolkit reads it (field widths up to 2, 2, 4, 2 and 2
    // digits, any blanks before the time, trailing text ignored); false (out untouched) when the
    // toolkit refuses it or it names no existing local time.
    static bool ParseSettings(const std::string& text, CInstrumentTime& out);
    // "%Y-%m-%dT%H:%M:%S" (ISO 8601 without zone).
    std::string FormatXml() const;

    static const char* DateTimeFormat(bool dayFirst);
    static const char* DateFormat(bool dayFirst);
    static std::string ClockFormat(bool dayFirst, bool colon);
    static const char* SettingsFormat();
    static const std::string& XmlFormat();

private:
    wxDateTime m_dateTime;
};
