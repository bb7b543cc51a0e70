#include "foundation/ProgramCompilationStamp.h"

#include "foundation/DebugTrace.h"
#include "foundation/InstrumentEnums.h"

#include <cstdlib>

namespace {
const char* const kModule = "ProgramCompilationStamp";

// Field widths; each field is followed by one separator character of any kind.
const int kTimeWidths[3] = {2, 2, 2};  // "hh:mm:ss"
const int kDateWidths[3] = {3, 2, 4};  // "Mmm dd yyyy"
const std::string::size_type kTimeLength = sizeof("hh:mm:ss") - 1;
const std::string::size_type kDateLength = sizeof("Mmm dd yyyy") - 1;

const char* const kMonths[12] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                 "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

bool IsDigit(char c) { return c >= '0' && c <= '9'; }
}  // namespace

bool GetTime(int (&result)[3], const std::string& time) {
    VtxDebugTrace(kModule, "GetTime", "Time %s", time.c_str());
    if (time.size() != kTimeLength) {
        VtxDebugTrace(kModule, "GetTime", "bad time length");
        return false;
    }
    std::string::size_type at = 0;
    for (CTimeTokenCPPEnum token(eTimeTokenHour); token.IsValid(); token.Next()) {
        const int index = token.GetValue();
        const std::string field = time.substr(at, static_cast<std::string::size_type>(kTimeWidths[index]));
        for (char c : field) {
            if (!IsDigit(c)) {
                VtxDebugTrace(kModule, "GetTime", "BAD char in time item %d", index);
                return false;
            }
        }
        result[index] = static_cast<int>(std::strtol(field.c_str(), nullptr, 10));
        if (result[index] < 0) {
            VtxDebugTrace(kModule, "GetTime", "BAD time item%d", index);
            return false;
        }
        at += static_cast<std::string::size_type>(kTimeWidths[index]) + 1;
    }
    return true;
}

bool GetDate(int (&result)[3], const std::string& date) {
    VtxDebugTrace(kModule, "GetDate", "Date %s", date.c_str());
    if (date.size() != kDateLength) {
        VtxDebugTrace(kModule, "GetDate", "bad date length");
        return false;
    }
    std::string::size_type at = 0;
    for (CDateTokenCPPEnum token(eDateTokenMonth); token.IsValid(); token.Next()) {
        const int index = token.GetValue();
        const std::string field = date.substr(at, static_cast<std::string::size_type>(kDateWidths[index]));
        if (token.Is(eDateTokenMonth)) {
            int month = 0;
            for (CMontshInYearEnum m(eJanuary); m.IsValid(); m.Next()) {
                if (field == kMonths[m.GetValue()]) {
                    month = m.GetValue() + 1;
                    break;
                }
            }
            if (month == 0) {
                VtxDebugTrace(kModule, "GetDate", "BAD date item%d", index);
                return false;
            }
            result[index] = month;
        } else {
            // The compiler writes days below 10 with a leading blank.
            for (std::string::size_type i = 0; i < field.size(); ++i) {
                if (!(IsDigit(field[i]) || (i == 0 && field[i] == ' '))) {
                    VtxDebugTrace(kModule, "GetDate", "BAD char in date item %d", index);
                    return false;
                }
            }
            result[index] = static_cast<int>(std::strtol(field.c_str(), nullptr, 10));
            if (result[index] < 0) {
                VtxDebugTrace(kModule, "GetDate", "BAD date item%d", index);
                return false;
            }
        }
        at += static_cast<std::string::size_type>(kDateWidths[index]) + 1;
    }
    return true;
}

CProgramCompilationStamp GetProgramCompilationStamp() {
    CProgramCompilationStamp stamp;
    int date[3] = {0, 0, 0};
    int time[3] = {0, 0, 0};
    if (!GetDate(date, __DATE__) || !GetTime(time, __TIME__)) return stamp;
    stamp.month = date[eDateTokenMonth];
    stamp.day = date[eDateTokenDay];
    stamp.year = date[eDateTokenYear];
    stamp.hour = time[eTimeTokenHour];
    stamp.minute = time[eTimeTokenMinute];
    stamp.second = time[eTimeTokenSecond];
    stamp.valid = true;
    return stamp;
}

CInstrumentTime GetProgramCompilationTime() {
    const CProgramCompilationStamp stamp = GetProgramCompilationStamp();
    if (!stamp.valid) return CInstrumentTime();
    return CInstrumentTime(stamp.day, stamp.month, stamp.year, stamp.hour, stamp.minute, stamp.second);
}
