// Main of the headless test binaries: the toolkit's base library only, its log on stderr.
#include <gtest/gtest.h>
#include <wx/init.h>
#include <wx/log.h>

#include "tests/common/WxAssert.h"

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    wxInitializer init;
    delete wxLog::SetActiveTarget(new wxLogStderr);
    vtxtest::InstallWxAssertHandler();
    return RUN_ALL_TESTS();
}
