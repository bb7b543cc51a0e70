#include "tests/common/WxTestHelpers.h"

#include <wx/app.h>
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

void Pump(int ms) { WaitFor([] { return false; }, ms); }

}  // namespace vtxtest
