// The yardstick for the update program's start-up, memory and idle figures: the least that a
// program of the same toolkit does to put a borderless frame over the whole display and paint it.
// It reports its paints on stderr in the same lines as the update program's probe
// (VTX_REPORT_PAINTS), always, and stays up until SIGTERM or SIGINT.
#include <wx/app.h>
#include <wx/dcclient.h>
#include <wx/frame.h>
#include <wx/log.h>

#include <time.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>

#include "update/ConsoleLines.h"

namespace {

void Report(const char* prefix, const char* detail) {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    char line[128];
    const int length = std::snprintf(line, sizeof line, "%s%lld.%09ld%s%s\n", prefix,
                                     static_cast<long long>(now.tv_sec), now.tv_nsec, *detail ? " " : "",
                                     detail);
    if (length > 0 && ::write(STDERR_FILENO, line, static_cast<size_t>(length)) < 0) return;
}

class CMinimalApp : public wxApp {
public:
    bool OnInit() override {
        delete wxLog::SetActiveTarget(new wxLogStderr);
        SetSignalHandler(SIGTERM, &CMinimalApp::OnStop);
        SetSignalHandler(SIGINT, &CMinimalApp::OnStop);
        wxFrame* frame =
            new wxFrame(nullptr, wxID_ANY, wxEmptyString, wxPoint(0, 0), wxGetDisplaySize(), wxBORDER_NONE);
        frame->SetBackgroundStyle(wxBG_STYLE_PAINT);
        frame->Bind(wxEVT_PAINT, [this, frame](wxPaintEvent&) {
            wxPaintDC dc(frame);
            dc.SetBackground(*wxWHITE_BRUSH);
            dc.Clear();
            Report(NS_ConsoleLines::kPaint, "wxFrame");
            if (!m_painted) {
                m_painted = true;
                CallAfter([] { Report(NS_ConsoleLines::kFirstPaint, ""); });
            }
        });
        frame->Show(true);
        return true;
    }

private:
    static void OnStop(int) {
        if (wxTheApp) wxTheApp->ExitMainLoop();
    }

    bool m_painted = false;
};

}  // namespace

wxIMPLEMENT_APP(CMinimalApp);
