#include "app/MainFrame.h"

#include "app/InstrumentBase.h"
#include "app/InstrumentMain.h"
#include "app/ServerApp.h"

CServerView* g_serverView = nullptr;
CInstrumentBase* g_drawingContext = nullptr;
CInstrumentMain* g_instrumentMain = nullptr;

// ---------------------------------------------------------------------------------------------
// CServerView

CServerView::CServerView(wxWindow* parent, const CRect& clientRect)
    : m_defaultFont(8, wxFONTFAMILY_DEFAULT, wxFONTSTYLE_NORMAL, wxFONTWEIGHT_NORMAL, false, "Arial",
                    wxFONTENCODING_ISO8859_1),
      m_clientRect(clientRect) {
    g_drawingContext = new CInstrumentBase(&m_defaultFont, &m_clientRect, parent, CInstrumentBase::kFirstControlId);
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
