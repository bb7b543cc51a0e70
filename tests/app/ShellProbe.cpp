// The application shell as a process (shell_process.py): the real application object, started from
// the real process arguments, with a view of its own in the update screen's place that takes the
// special command as the update screen does and reports on standard output:
//   probe: activated special=N view=X,Y,W,H
//   probe: ticks 100ms=N 1s=N gui=0|1 display=WxH frame=X,Y,W,H client=X,Y,W,H style=0x.. shown=0|1
//   probe: ended rc=N frame=0|1 server=0|1 main=0|1 workers=N
// VTX_PROBE_CLOSE_AFTER=N closes the frame after N 100 ms ticks; otherwise it runs until SIGTERM.
#include <wx/app.h>
#include <wx/display.h>

#include <cstdio>
#include <cstdlib>

#include "app/InstrumentMain.h"
#include "app/MainFrame.h"
#include "app/ServerApp.h"
#include "app/ViewManager.h"

wxIMPLEMENT_APP_NO_MAIN(CServerApp);

namespace {

wxString Text(const wxRect& r) { return wxString::Format("%d,%d,%d,%d", r.x, r.y, r.width, r.height); }

void Report(const wxString& line) {
    std::printf("probe: %s\n", line.utf8_str().data());
    std::fflush(stdout);
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
        Report(wxString::Format("activated special=%u view=%s", m_special, Text(GetRect())));
    }

private:
    bool OnTick(uint32_t id, uint32_t) {
        m_allOnGuiThread = m_allOnGuiThread && wxIsMainThread();
        for (int tick = 0; tick < eViewTickCount; ++tick) m_ticks[tick] += m_tickIds[tick] == id;
        const bool closing = m_closeAfter > 0 && m_ticks[eTick100ms] == m_closeAfter &&
                             id == m_tickIds[eTick100ms];
        if (id == m_tickIds[eTick1s] || closing) {
            const CMainFrame* frame = g_mainFrame && GetParent() == g_mainFrame ? g_mainFrame : nullptr;
            Report(wxString::Format(
                "ticks 100ms=%d 1s=%d gui=%d display=%dx%d frame=%s client=%s style=0x%lx shown=%d",
                m_ticks[eTick100ms], m_ticks[eTick1s], m_allOnGuiThread, wxGetDisplaySize().x,
                wxGetDisplaySize().y, frame ? Text(frame->GetScreenRect()) : wxString("none"),
                frame ? Text(frame->GetClientRectangle()) : wxString("none"),
                frame ? frame->GetWindowStyleFlag() : 0, frame && frame->IsShown() && IsShown()));
        }
        // Closed the way a user or the window system closes it: the frame goes, the loop ends.
        if (closing && g_mainFrame) g_mainFrame->Close(true);
        return true;
    }

    eUpdateCommandLineSpecialCmdParamCmd m_special = 0xFFFFFFFFu;  // never received
    int m_ticks[eViewTickCount] = {0, 0, 0, 0};
    int m_closeAfter = 0;
    bool m_allOnGuiThread = true;
};

TInstrumentViewItem<CProbeView> s_probeViewItem(&GetCommandLineFunctor());

}  // namespace

int main(int argc, char** argv) {
    const int rc = wxEntry(argc, argv);
    Report(wxString::Format("ended rc=%d frame=%d server=%d main=%d workers=%d", rc, g_mainFrame != nullptr,
                            g_serverView != nullptr, g_instrumentMain != nullptr,
                            GetRunningWorkerThreadCount()));
    return rc;
}
