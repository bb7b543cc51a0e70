#include "update/locations/InstrumentLocations.h"

#include <gtest/gtest.h>

#include <climits>

TEST(InstrumentLocations, FileNamesTakeTheExeFormBelowOne) {
    for (int version : {1, 2, INT_MAX}) {
        EXPECT_EQ(GetApplicationFileName(version), "Application") << version;
        EXPECT_EQ(GetUpdateProgramFileName(version), "update") << version;
    }
    for (int version : {0, -1, INT_MIN}) {
        EXPECT_EQ(GetApplicationFileName(version), "Application.exe") << version;
        EXPECT_EQ(GetUpdateProgramFileName(version), "update.exe") << version;
    }
}
