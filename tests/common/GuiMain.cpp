// Main of the window test binaries: starts the toolkit on the X display (Xvfb in CI) without
// running its main loop; tests dispatch events themselves through WaitFor/Pump.
#include <gtest/gtest.h>
#include <wx/app.h>
#include <wx/init.h>
#include <wx/log.h>

#include <cstdio>

#include "tests/common/WxAssert.h"

namespace {
class CTestApp : public wxApp {
public:
    bool OnInit() override { return true; }
};
}  // namespace

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    wxApp::SetInstance(new CTestApp);
    if (!wxEntryStart(argc, argv)) {
        std::fprintf(stderr, "cannot start the toolkit (no X display?)\n");
        return 2;
    }
    delete wxLog::SetActiveTarget(new wxLogStderr);
    vtxtest::InstallWxAssertHandler();
    wxTheApp->CallOnInit();
    const int result = RUN_ALL_TESTS();
    wxTheApp->OnExit();
    wxEntryCleanup();
    return result;
}
