#pragma once
// The program's only top-level window, a borderless frame over the whole display, and the server
// view under it, which owns the drawing context and the main controller. The frame draws nothing
// and handles no events of its own: the active view draws everything inside its client area.

#include <wx/frame.h>

#include "ui/Geometry.h"

class CInstrumentBase;
class CInstrumentMain;

class CServerView {
public:
    // Creates the drawing context (default font "Arial" 8 pt, control identifiers from 500) over
    // parent and the client rectangle, then the main controller with it.
    CServerView(wxWindow* parent, const CRect& clientRect);
    // Deletes the main controller, then the drawing context.
    virtual ~CServerView();
    CServerView(const CServerView&) = delete;
    CServerView& operator=(const CServerView&) = delete;
};

class CMainFrame : public wxFrame {
public:
    // Creates the frame (no parent, wxID_ANY) and the server view over its client area. A frame
    // made without server view is only a window (used by the window tests).
    CMainFrame(const wxString& title, const wxPoint& position, const wxSize& size, long style,
               bool withServerView = true);
    // Deletes the server view first.
    ~CMainFrame() override;

    // The client-area origin and client size.
    CRect GetClientRectangle() const;

private:
    wxDECLARE_EVENT_TABLE();
};

// Application-wide objects; each owned by the object that creates it (frame, server view).
extern CServerView* g_serverView;
extern CInstrumentBase* g_drawingContext;
extern CInstrumentMain* g_instrumentMain;
