#pragma once
// When the program was built: the compiler's build date ("Oct  2 2017") and build time
// ("14:07:44") strings parsed strictly into numbers. A malformed string fails with a debug trace
// instead of being guessed at.

#include "foundation/InstrumentTime.h"

#include <string>

// Hour, minute, second. Fields parsed before a failure stay in the result; the rest are untouched.
bool GetTime(int (&result)[3], const std::string& time);
// Month (1..12), day, year.
bool GetDate(int (&result)[3], const std::string& date);

// The program's own build moment, from the compiler's date and time of this module.
struct CProgramCompilationStamp {
    bool valid = false;  // both strings parsed
    int month = 0;       // 1..12
    int day = 0;
    int year = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;
};
CProgramCompilationStamp GetProgramCompilationStamp();
// The same as a local time; invalid when the strings could not be parsed.
CInstrumentTime GetProgramCompilationTime();
