#include "app/ViewCommands.h"

#include <wx/event.h>

#include "app/InstrumentView.h"
#include "app/ViewManager.h"

bool IsViewCommandEvent(const wxEvent& event) {
    if (!event.IsCommandEvent()) return false;
    const wxEventType type = event.GetEventType();
    return type == wxEVT_BUTTON || type == wxEVT_CHECKBOX || type == wxEVT_TEXT;
}

bool PostViewCommand(CInstrumentViewInterface* view, int32_t id, int32_t param) {
    if (!view) return false;
    wxCommandEvent* event = new wxCommandEvent(wxEVT_BUTTON, id);
    event->SetInt(param);
    // QueueEvent takes the event and is the toolkit's thread-safe way in. It is queued on the
    // view itself (not on a pushed handler), so delivery goes through the view's own event
    // processing and its command table sees it.
    static_cast<wxEvtHandler*>(view)->QueueEvent(event);
    return true;
}

void CViewFunctor::Execute() { SwitchToView(m_target); }

CViewFunctorParam<eUpdateCommandLineSpecialCmdParamCmd>& GetCommandLineFunctor() {
    static CViewFunctorParam<eUpdateCommandLineSpecialCmdParamCmd> functor;
    return functor;
}
