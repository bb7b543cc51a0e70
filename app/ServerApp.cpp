#include "app/ServerApp.h"

#include <wx/display.h>
#include <wx/eventfilter.h>
#include <wx/log.h>

#include <cxxabi.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <typeinfo>
#include <vector>

#include "app/CommandLine.h"
#include "app/MainFrame.h"
#include "app/WorkerThread.h"
#include "foundation/GuiHandOff.h"
#include "log/StderrLogSink.h"
#include "update/ConsoleLines.h"

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

// What the screen shows, for the benchmarks (bench/run-bench) and the screenshots of the
// end-to-end runs (tools/screenshot). With VTX_REPORT_PAINTS in the environment, every paint of a
// window is reported on stderr as "vtx-bench paint <seconds> <class>" when it starts and as
// "vtx-bench drawn <seconds> <class>" once its drawing pass has been handled (so what it drew is
// on the display), and after the first pass also "vtx-bench first-paint <seconds>" (the forms of
// update/ConsoleLines.h, which the tools read). The seconds are CLOCK_MONOTONIC, which the
// measuring script shares. The probe only watches: each paint goes on to its window as usual.
// Without the variable nothing is installed. With it, the program log's lines carry the same
// clock's time too.
class CPaintProbe : public wxEventFilter {
public:
    int FilterEvent(wxEvent& event) override {
        if (event.GetEventType() != wxEVT_PAINT) return Event_Skip;
        const std::string name = ClassName(event.GetEventObject());
        Report(NS_ConsoleLines::kPaint, name);
        // Handled after the drawing pass that this paint belongs to, children included.
        const bool first = !m_firstSeen;
        m_firstSeen = true;
        CallOnGuiThread([name, first] {
            Report(NS_ConsoleLines::kDrawn, name);
            if (first) Report(NS_ConsoleLines::kFirstPaint, std::string());
        });
        return Event_Skip;
    }

private:
    static std::string ClassName(const wxObject* object) {
        if (!object) return "?";
        const char* mangled = typeid(*object).name();
        int status = 0;
        char* readable = abi::__cxa_demangle(mangled, nullptr, nullptr, &status);
        std::string name = status == 0 && readable ? readable : mangled;
        std::free(readable);
        return name;
    }
    static void Report(const char* prefix, const std::string& detail) {
        timespec now{};
        clock_gettime(CLOCK_MONOTONIC, &now);
        char line[512];
        const int length = std::snprintf(line, sizeof line, "%s%lld.%09ld%s%s\n", prefix,
                                         static_cast<long long>(now.tv_sec), now.tv_nsec,
                                         detail.empty() ? "" : " ", detail.c_str());
        if (length <= 0) return;
        // One write, so that the line is never split by a log line of another thread. A failed
        // write has nowhere to be reported.
        const size_t size = std::min(static_cast<size_t>(length), sizeof line - 1);
        if (::write(STDERR_FILENO, line, size) < 0) return;
    }

    bool m_firstSeen = false;
};
CPaintProbe* g_paintProbe = nullptr;

// The process arguments byte for byte, program name included; empty when they cannot be read.
std::vector<std::string> ReadProcessArguments() {
    std::ifstream in("/proc/self/cmdline", std::ios::binary);
    const std::string all((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    std::vector<std::string> arguments;
    std::string::size_type start = 0;
    while (start < all.size()) {
        std::string::size_type end = all.find('\0', start);
        if (end == std::string::npos) end = all.size();
        arguments.push_back(all.substr(start, end - start));
        start = end + 1;
    }
    return arguments;
}

// The program arguments, program name first, as bytes. The toolkit's copies are not good enough:
// they went through the locale's decoding, which drops an argument that is not valid there (bytes
// that are not UTF-8 under a UTF-8 locale) or leaves one that cannot be encoded back (any
// non-ASCII byte under the C locale), and a lost argument changes the parameter count. So the
// process's own bytes are taken, leaving out only what the toolkit consumed as its own options
// (--name=... and the like): a decodable argument that the toolkit no longer holds at that place.
std::vector<std::string> GetProgramArguments(int argc, const wxCmdLineArgsArray& argv) {
    const std::vector<std::string> process = ReadProcessArguments();
    std::vector<std::string> arguments;
    if (process.empty() || argc < 1) {
        for (int i = 0; i < argc; ++i) arguments.emplace_back(argv[i].mb_str());
        return arguments;
    }
    arguments.push_back(process[0]);
    int held = 1;
    for (size_t i = 1; i < process.size(); ++i) {
        const wxString decoded(process[i].c_str(), wxConvLocal);
        const bool undecodable = decoded.empty() && !process[i].empty();
        const bool heldHere = !undecodable && held < argc && argv[held] == decoded;
        if (heldHere) ++held;
        if (undecodable || heldHere) arguments.push_back(process[i]);
    }
    return arguments;
}
}  // namespace

CServerApp::~CServerApp() = default;

bool CServerApp::OnInit() {
    // The toolkit's own command-line parsing (wxApp::OnInit) is not wanted: any argument is fine.
    if (!g_logSink) g_logSink = new CStderrLogSink(std::getenv("VTX_REPORT_PAINTS") != nullptr);
    // The toolkit logs to the console too; its default GUI target would open message boxes. The
    // toolkit owns the active target and deletes it at exit.
    delete wxLog::SetActiveTarget(new wxLogStderr);  // NOLINT(clang-analyzer-cplusplus.NewDeleteLeaks)
    wxSetAssertHandler(&ReportToolkitAssert);
    if (std::getenv("VTX_REPORT_PAINTS") && !g_paintProbe) {
        g_paintProbe = new CPaintProbe;
        wxEvtHandler::AddFilter(g_paintProbe);
    }

    std::vector<std::string> arguments = GetProgramArguments(argc, argv);
    std::vector<char*> pointers;
    pointers.reserve(arguments.size() + 1);
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
    if (g_paintProbe) {
        wxEvtHandler::RemoveFilter(g_paintProbe);
        delete g_paintProbe;
        g_paintProbe = nullptr;
    }
    // The tick thread has ended with the main controller. A worker that is still busy (the update
    // procedure in a long command) may log until the process ends, so its sink stays then.
    if (WaitForWorkerThreads(kWorkerThreadsEndWaitMs)) {
        delete g_logSink;
        g_logSink = nullptr;
    }
}
