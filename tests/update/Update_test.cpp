// Pure parts of the update procedure (the progress bar and the rest are the end-to-end runs').
#include "update/Update.h"

#include <gtest/gtest.h>

#include <ctime>

namespace {

// The plain stamp is in every end-to-end run; here the stamps near the ends of a 32-bit time_t.
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
