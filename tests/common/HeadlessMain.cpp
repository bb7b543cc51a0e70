// Main of the headless test binaries (the toolkit's base library, its log on stderr); with
// VTX_SANDBOX_ONLY it refuses before any test unless the instrument's paths are the sandbox's.
#include <gtest/gtest.h>
#include <wx/init.h>
#include <wx/log.h>

#include <cstdio>

#include "tests/common/SandboxGuard.h"
#include "tests/common/WxAssert.h"

int main(int argc, char** argv) {
#ifdef VTX_SANDBOX_ONLY
    std::string why;
    if (!vtxtest::InsideInstrumentSandbox(why)) {
        std::fprintf(stderr, "%s: refused, runs only inside tools/instrument-sandbox (%s)\n", argv[0],
                     why.c_str());
        return 2;
    }
#endif
    ::testing::InitGoogleTest(&argc, argv);
    wxInitializer init;
    delete wxLog::SetActiveTarget(new wxLogStderr);
    vtxtest::InstallWxAssertHandler();
    return RUN_ALL_TESTS();
}
