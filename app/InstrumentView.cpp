#include "app/InstrumentView.h"

#include <wx/dcbuffer.h>
#include <wx/event.h>

#include "app/InstrumentBase.h"
#include "ui/VisualComponents.h"

CInstrumentViewInterface::CInstrumentViewInterface(const CInstrumentViewCreatorNeeds& needs,
                                                   const std::string& name)
    : m_needs(needs), m_viewName(name) {
    wxWindow* parent = needs.instrument ? needs.instrument->GetParentWindow() : nullptr;
    if (!parent) return;
    if (const CRect* rect = needs.instrument->GetClientRect()) m_viewRect = *rect;
    // Created hidden: a view appears only when it becomes the active one.
    Hide();
    SetBackgroundStyle(wxBG_STYLE_PAINT);
    m_hasWindow = Create(parent, wxID_ANY, m_viewRect.GetPosition(), m_viewRect.GetSize(), wxBORDER_NONE,
                         wxString::FromUTF8(name.c_str()));
    if (m_hasWindow) Bind(wxEVT_PAINT, &CInstrumentViewInterface::OnPaint, this);
}

CInstrumentViewInterface::~CInstrumentViewInterface() = default;

void CInstrumentViewInterface::Activate() {
    if (m_hasWindow) Show(true);
}

void CInstrumentViewInterface::Deactivate() {
    if (m_hasWindow) Show(false);
}

bool CInstrumentViewInterface::ProcessEvent(wxEvent& event) {
    if (IsViewCommandEvent(event)) {
        const wxCommandEvent& command = static_cast<const wxCommandEvent&>(event);
        if (DispatchCommand(static_cast<uint32_t>(command.GetId()), static_cast<uint32_t>(command.GetInt())))
            return true;
    }
    return wxWindow::ProcessEvent(event);
}

uint32_t CInstrumentViewInterface::GetTickId(eViewTick tick) const {
    return tick >= 0 && tick < eViewTickCount ? m_tickIds[tick] : 0;
}

void CInstrumentViewInterface::OnPaint(wxPaintEvent&) {
    // The controls paint the same background behind themselves, so they blend with the view.
    wxAutoBufferedPaintDC dc(this);
    const wxSize size = GetClientSize();
    if (const CColorRectBase* background = GetViewBackGround())
        background->PaintDcRect(CRect(0, 0, size.x, size.y), &dc);
}

uint32_t DrawViewCommandId() { return static_cast<uint32_t>(CInstrumentBase::GetNewControlId()); }
