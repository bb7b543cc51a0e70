// The compiler's build date and time strings: whatever text comes in, the strict parsers either
// refuse it or give fields in their ranges, and the fields make a time the way the program's own
// stamp does without upsetting the toolkit.
//
// Input: the date text, a NUL, the time text; without a NUL both parsers get the whole input.

#include "foundation/InstrumentEnums.h"
#include "foundation/ProgramCompilationStamp.h"
#include "fuzz/FuzzSupport.h"

#include <cstddef>
#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    vtxfuzz::StartToolkit();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string input(reinterpret_cast<const char*>(data), size);
    const size_t nul = input.find('\0');
    const std::string dateText = input.substr(0, nul);
    const std::string timeText = nul == std::string::npos ? input : input.substr(nul + 1);

    int date[3] = {-7, -7, -7};
    const bool dateRead = GetDate(date, dateText);
    if (dateRead) {
        VTX_FUZZ_CHECK(dateText.size() == sizeof("Mmm dd yyyy") - 1);
        VTX_FUZZ_CHECK(date[eDateTokenMonth] >= 1 && date[eDateTokenMonth] <= 12);
        VTX_FUZZ_CHECK(date[eDateTokenDay] >= 0 && date[eDateTokenDay] <= 99);
        VTX_FUZZ_CHECK(date[eDateTokenYear] >= 0 && date[eDateTokenYear] <= 9999);
    }
    int time[3] = {-7, -7, -7};
    const bool timeRead = GetTime(time, timeText);
    if (timeRead) {
        VTX_FUZZ_CHECK(timeText.size() == sizeof("hh:mm:ss") - 1);
        for (int field : time) VTX_FUZZ_CHECK(field >= 0 && field <= 99);
    }
    if (!dateRead || !timeRead) return 0;

    // As the program's own stamp turns into a time: fields that name no time give an invalid one.
    const CInstrumentTime stamp(date[eDateTokenDay], date[eDateTokenMonth], date[eDateTokenYear],
                                time[eTimeTokenHour], time[eTimeTokenMinute], time[eTimeTokenSecond]);
    const bool possible = date[eDateTokenDay] >= 1 && time[eTimeTokenHour] <= 23 && time[eTimeTokenMinute] <= 59 &&
                          time[eTimeTokenSecond] <= 59 &&
                          date[eDateTokenDay] <= wxDateTime::GetNumberOfDays(
                                                     static_cast<wxDateTime::Month>(date[eDateTokenMonth] - 1),
                                                     date[eDateTokenYear]);
    VTX_FUZZ_CHECK(stamp.IsValid() == possible);
    if (possible) {
        VTX_FUZZ_CHECK(stamp.GetDay() == date[eDateTokenDay]);
        VTX_FUZZ_CHECK(stamp.GetMonth() == date[eDateTokenMonth]);
        VTX_FUZZ_CHECK(stamp.GetYear() == date[eDateTokenYear]);
    }
    return 0;
}
