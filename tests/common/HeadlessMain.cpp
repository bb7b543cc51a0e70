// Main of the headless test binaries: the toolkit's base library only, its log on stderr. Built
// with VTX_SANDBOX_ONLY for the sandbox test binaries, which refuse before any test has run when
// the instrument's paths are not the sandbox's.
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
        std::fprintf(stderr, "%s: refused, runs only inside tools/instrument-sandbox (%s)\n", argv[0], why.c_str());
        return 2;
    }
#endif
    ::testing::InitGoogleTest(&argc, argv);
    wxInitializer init;
    delete wxLog::SetActiveTarget(new wxLogStderr);
    vtxtest::InstallWxAssertHandler();
    return RUN_ALL_TESTS();
}
