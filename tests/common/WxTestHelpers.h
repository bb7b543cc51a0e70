#pragma once
// Helpers of the window tests, which run under Xvfb.
#include <wx/frame.h>

#include <functional>

namespace vtxtest {

// Dispatches toolkit events until done() holds or timeoutMs passes; true when done() held.
bool WaitFor(const std::function<bool()>& done, int timeoutMs = 30000);

// Dispatches the pending toolkit events for about ms milliseconds.
void Pump(int ms = 50);

// A shown borderless 800 x 600 frame at the origin for the controls under test, destroyed (with
// them) at the end of the scope, its pending events served.
class CTestFrame {
public:
    CTestFrame();
    ~CTestFrame();
    wxFrame* operator->() const { return m_frame; }
    operator wxFrame*() const { return m_frame; }

private:
    wxFrame* m_frame;
};

}  // namespace vtxtest
