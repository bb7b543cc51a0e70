#include "app/MainFrame.h"

#include <wx/font.h>

#include "app/InstrumentBase.h"
#include "app/InstrumentMain.h"
#include "app/ServerApp.h"

CServerView* g_serverView = nullptr;
CInstrumentBase* g_drawingContext = nullptr;
CInstrumentMain* g_instrumentMain = nullptr;

// ---------------------------------------------------------------------------------------------
// CServerView

CServerView::CServerView(wxWindow* parent, const CRect& clientRect) {
    // Both live until the end of the process, longer than any view that points at them.
    static wxFont defaultFont;
    static CRect rect = clientRect;
    defaultFont = wxFont(8, wxFONTFAMILY_DEFAULT, wxFONTSTYLE_NORMAL, wxFONTWEIGHT_NORMAL, false, "Arial",
                         wxFONTENCODING_ISO8859_1);
    g_drawingContext = new CInstrumentBase(&defaultFont, &rect, parent, CInstrumentBase::kFirstControlId);
    g_instrumentMain = new CInstrumentMain(g_drawingContext);
}

CServerView::~CServerView() {
    delete g_instrumentMain;
    g_instrumentMain = nullptr;
    delete g_drawingContext;
    g_drawingContext = nullptr;
}

// ---------------------------------------------------------------------------------------------
// CMainFrame

wxBEGIN_EVENT_TABLE(CMainFrame, wxFrame)
wxEND_EVENT_TABLE()

CMainFrame::CMainFrame(const wxString& title, const wxPoint& position, const wxSize& size, long style,
                       bool withServerView)
    : wxFrame(nullptr, wxID_ANY, title, position, size, style, wxFrameNameStr) {
    if (withServerView) g_serverView = new CServerView(this, GetClientRectangle());
}

CMainFrame::~CMainFrame() {
    delete g_serverView;
    g_serverView = nullptr;
    // Whoever deleted the frame, the application must not delete it a second time.
    if (g_mainFrame == this) g_mainFrame = nullptr;
}

CRect CMainFrame::GetClientRectangle() const { return CRect(GetClientAreaOrigin(), GetClientSize()); }
