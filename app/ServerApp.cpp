#include "app/ServerApp.h"

#include <wx/display.h>
#include <wx/log.h>

#include <csignal>
#include <string>
#include <vector>

#include "app/CommandLine.h"
#include "app/MainFrame.h"
#include "app/WorkerThread.h"
#include "log/StderrLogSink.h"

CMainFrame* g_mainFrame = nullptr;

namespace {
// The program log's sink: installed before any thread starts, removed after they have ended.
CStderrLogSink* g_logSink = nullptr;

const CTraceField& ToolkitField() {
    static const CTraceField field("wxWidgets");
    return field;
}

// A failed toolkit assertion is a program error worth a line, never a dialog on the instrument.
void ReportToolkitAssert(const wxString& file, int line, const wxString& function, const wxString& condition,
                         const wxString& message) {
    std::string text = "assertion \"" + std::string(condition.utf8_str()) + "\" failed in " +
                       std::string(function.utf8_str()) + " (" + std::string(file.utf8_str()) + ":" +
                       std::to_string(line) + ")";
    if (!message.empty()) text += ": " + std::string(message.utf8_str());
    LogInternalError(&ToolkitField(), text);
}
}  // namespace

CServerApp::~CServerApp() = default;

bool CServerApp::OnInit() {
    // The toolkit's own command-line parsing (wxApp::OnInit) is not wanted: any argument is fine.
    if (!g_logSink) g_logSink = new CStderrLogSink;
    // The toolkit logs to the console too; its default GUI target would open message boxes.
    delete wxLog::SetActiveTarget(new wxLogStderr);
    wxSetAssertHandler(&ReportToolkitAssert);
    SetSignalHandler(SIGTERM, &CServerApp::OnStopSignal);
    SetSignalHandler(SIGINT, &CServerApp::OnStopSignal);

    std::vector<std::string> arguments;
    for (int i = 0; i < argc; ++i) arguments.emplace_back(argv[i].mb_str());
    std::vector<char*> pointers;
    for (std::string& argument : arguments) pointers.push_back(&argument[0]);
    pointers.push_back(nullptr);
    AddProgramArguments(static_cast<int>(arguments.size()), pointers.data());

    const wxSize display = wxGetDisplaySize();
    g_mainFrame = new CMainFrame(wxEmptyString, wxPoint(0, 0), display, wxBORDER_NONE);
    g_mainFrame->Show(true);
    return true;
}

void CServerApp::CleanUp() {
    if (g_mainFrame) {
        CMainFrame* frame = g_mainFrame;
        g_mainFrame = nullptr;
        delete frame;
    }
    // The tick thread has ended with the main controller. A worker that is still busy (the update
    // procedure in a long command) may log until the process ends, so its sink stays then.
    if (WaitForWorkerThreads(kWorkerThreadsEndWaitMs)) {
        delete g_logSink;
        g_logSink = nullptr;
    }
}

void CServerApp::OnStopSignal(int) {
    if (wxTheApp) wxTheApp->ExitMainLoop();
}
