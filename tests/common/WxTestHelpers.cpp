#include "tests/common/WxTestHelpers.h"

#include <wx/app.h>
#include <wx/stopwatch.h>
#include <wx/utils.h>

namespace vtxtest {

bool WaitFor(const std::function<bool()>& done, int timeoutMs) {
    wxStopWatch watch;
    for (;;) {
        if (done()) return true;
        if (watch.Time() > timeoutMs) return done();
        if (wxTheApp) {
            wxTheApp->ProcessPendingEvents();
            wxTheApp->Yield(true);
        }
        wxMilliSleep(2);
    }
}

void Pump(int ms) {
    wxStopWatch watch;
    while (watch.Time() < ms) {
        if (wxTheApp) {
            wxTheApp->ProcessPendingEvents();
            wxTheApp->Yield(true);
        }
        wxMilliSleep(2);
    }
}

}  // namespace vtxtest
