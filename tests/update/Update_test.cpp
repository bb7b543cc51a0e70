// Pure parts of the update procedure: the texts service engineers read. The progress bar is the
// end-to-end runs' (empty during the operating-system update, full at the end).
#include "update/Update.h"

#include <gtest/gtest.h>

#include <ctime>

namespace {

// The plain stamp and the log's place on the stick are in every end-to-end run, and the place is
// fuzz_stick_log_path's oracle for any path; here the stamps near the ends of a 32-bit time_t.
TEST(UpdateThread, StampsNearTheEndsOfA32BitTimeAndAMissingProcedure) {
    // Local time, a day inside the range in any time zone.
    for (const char* stamp : {"18012038_1412", "15121901_1412"}) {
        struct tm t = {};
        strptime(stamp, "%d%m%Y_%H%M", &t);
        t.tm_isdst = -1;
        EXPECT_EQ(FormatBackupTimeStamp(mktime(&t)), stamp);
    }
    EXPECT_EQ(UpdateThreadMain(nullptr), 1ul);
}

}  // namespace
