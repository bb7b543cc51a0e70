#pragma once
// The application object: reads the command line, opens the borderless full-display frame (which
// brings up the whole instrument) and takes it down again after the main loop. Start-up never
// fails and never shows a message box: failures go to the program log on standard error.

#include <wx/app.h>

class CMainFrame;

class CServerApp : public wxApp {
public:
    CServerApp() = default;
    ~CServerApp() override;

    // Always true.
    bool OnInit() override;
    // Deletes the frame and clears its pointer. The toolkit's own clean-up is not run from here:
    // the frame is taken down here and nowhere else.
    void CleanUp() override;
};

// Owned by CServerApp (created in OnInit, deleted in CleanUp).
extern CMainFrame* g_mainFrame;

// How long CleanUp waits for worker threads before it removes the program log's sink; a thread
// still running then keeps the sink until the process ends.
enum : unsigned { kWorkerThreadsEndWaitMs = 1000 };
