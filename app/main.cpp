// The program's entry: everything happens inside the toolkit's entry and the application object.
// The application factory is registered here rather than in the app library, so that the test
// programs, which link that library and bring their own application object, never create this one.
#include <wx/app.h>

#include <cstdio>
#include <cstdlib>

#include "app/ServerApp.h"
#include "app/WorkerThread.h"
#include "update/ConsoleLines.h"

wxIMPLEMENT_APP_NO_MAIN(CServerApp);

// The build's version (made at build time, cmake/BuildVersion.cmake).
extern const char kVtxBuildVersion[];

int main(int argc, char** argv) {
    // The console's first line says which build runs, as `dpkg -s vtx-update` names the installed
    // one: before the toolkit starts, so that even a start that fails shows it.
    std::fprintf(stderr, "%s%s\n", NS_ConsoleLines::kBuild, kVtxBuildVersion);
    std::fflush(stderr);
    const int status = wxEntry(argc, argv);
    // A worker still busy when the main loop ends (the frame closed during a long copy) goes on
    // using the program's function-level singletons, text tables and log sink; the destructors
    // that run at a normal exit would pull them away under it. Such a process ends without them.
    if (GetRunningWorkerThreadCount() > 0) {
        std::fflush(nullptr);
        std::_Exit(status);
    }
    return status;
}
