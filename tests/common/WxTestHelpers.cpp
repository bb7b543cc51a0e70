#include "tests/common/WxTestHelpers.h"

#include <wx/app.h>
#include <wx/frame.h>
#include <wx/stopwatch.h>
#include <wx/utils.h>

namespace vtxtest {

bool WaitFor(const std::function<bool()>& done, int timeoutMs) {
    wxStopWatch watch;
    while (!done()) {
        if (watch.Time() > timeoutMs) return done();
        if (wxTheApp) {
            wxTheApp->ProcessPendingEvents();
            wxTheApp->Yield(true);
        }
        wxMilliSleep(2);
    }
    return true;
}

void Pump(int ms) {
    WaitFor([] { return false; }, ms);
}

CTestFrame::CTestFrame()
    : m_frame(new wxFrame(nullptr, wxID_ANY, "test", wxPoint(0, 0), wxSize(800, 600), wxBORDER_NONE)) {
    m_frame->Show();
    Pump(20);
}

CTestFrame::~CTestFrame() {
    m_frame->Destroy();
    Pump(20);
}

}  // namespace vtxtest
