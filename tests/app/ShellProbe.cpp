// The application shell as a process: the real application object, started from the real process
// arguments, with a view of its own in the place of the update screen. The view takes the special
// command the way the update screen does and reports on standard output (shell_process.py reads it):
//   probe: activated special=N view=X,Y,W,H
//   probe: ticks 100ms=N 1s=N 1min=N 2min=N gui=0|1 display=WxH frame=.. client=.. style=0x.. shown=0|1
//   probe: ended rc=N frame=0|1 server=0|1 main=0|1 workers=N
// VTX_PROBE_CLOSE_AFTER=N closes the frame after N 100 ms ticks; otherwise it runs until SIGTERM.
#include <wx/app.h>
#include <wx/display.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "app/InstrumentMain.h"
#include "app/MainFrame.h"
#include "app/ServerApp.h"
#include "app/ViewManager.h"

wxIMPLEMENT_APP_NO_MAIN(CServerApp);

namespace {

std::string Text(const wxRect& r) {
    return wxString::Format("%d,%d,%d,%d", r.x, r.y, r.width, r.height).ToStdString();
}

__attribute__((format(printf, 1, 2))) void Report(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    std::printf("probe: ");
    std::vprintf(format, arguments);
    std::printf("\n");
    std::fflush(stdout);
    va_end(arguments);
}

class CProbeView : public CInstrumentViewBase<CProbeView>,
                   public CViewParamCallBack<eUpdateCommandLineSpecialCmdParamCmd> {
public:
    explicit CProbeView(const CInstrumentViewCreatorNeeds& needs)
        : CInstrumentViewBase<CProbeView>(needs, "Probe") {
        for (uint32_t& id : m_tickIds) id = AddViewCommand(&CProbeView::OnTick);
        GetCommandLineFunctor().SetParamReceiver(this);
        if (const char* after = std::getenv("VTX_PROBE_CLOSE_AFTER")) m_closeAfter = std::atoi(after);
    }
    ~CProbeView() override { GetCommandLineFunctor().SetParamReceiver(nullptr); }
    void ReceiveParam(eUpdateCommandLineSpecialCmdParamCmd command) override { m_special = command; }
    // Runs inside the frame's construction, before the frame is shown.
    void Activate() override {
        CInstrumentViewBase<CProbeView>::Activate();
        Report("activated special=%u view=%s", m_special, Text(GetRect()).c_str());
    }

private:
    bool OnTick(uint32_t id, uint32_t) {
        m_allOnGuiThread = m_allOnGuiThread && wxIsMainThread();
        for (int tick = 0; tick < eViewTickCount; ++tick) m_ticks[tick] += m_tickIds[tick] == id;
        const bool closing =
            m_closeAfter > 0 && m_ticks[eTick100ms] == m_closeAfter && id == m_tickIds[eTick100ms];
        if (id == m_tickIds[eTick1s] || closing) {
            const CMainFrame* frame = g_mainFrame && GetParent() == g_mainFrame ? g_mainFrame : nullptr;
            const wxSize display = wxGetDisplaySize();
            Report(
                "ticks 100ms=%d 1s=%d 1min=%d 2min=%d gui=%d display=%dx%d frame=%s client=%s style=0x%lx "
                "shown=%d",
                m_ticks[0], m_ticks[1], m_ticks[2], m_ticks[3], m_allOnGuiThread, display.x, display.y,
                frame ? Text(frame->GetScreenRect()).c_str() : "none",
                frame ? Text(frame->GetClientRectangle()).c_str() : "none",
                frame ? frame->GetWindowStyleFlag() : 0, frame && frame->IsShown() && IsShown());
        }
        // Closed the way a user or the window system closes it: the frame goes, the loop ends.
        if (closing && g_mainFrame) g_mainFrame->Close(true);
        return true;
    }

    eUpdateCommandLineSpecialCmdParamCmd m_special = 0xFFFFFFFFu;  // never received
    int m_ticks[eViewTickCount] = {0, 0, 0, 0};
    bool m_allOnGuiThread = true;
    int m_closeAfter = 0;
};

TInstrumentViewItem<CProbeView> s_probeViewItem(&GetCommandLineFunctor());

}  // namespace

int main(int argc, char** argv) {
    const int rc = wxEntry(argc, argv);
    Report("ended rc=%d frame=%d server=%d main=%d workers=%d", rc, g_mainFrame != nullptr,
           g_serverView != nullptr, g_instrumentMain != nullptr, GetRunningWorkerThreadCount());
    return rc;
}
