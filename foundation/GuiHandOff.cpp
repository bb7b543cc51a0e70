#include "foundation/GuiHandOff.h"

#include <wx/app.h>

void CallOnGuiThread(const std::function<void()>& call) {
    if (!call) return;
    // CallAfter queues (a copy) through the toolkit's thread-safe event queue.
    if (wxAppConsole* app = wxAppConsole::GetInstance()) app->CallAfter(call);
}

CGuiHandOff::CGuiHandOff() : m_alive(std::make_shared<bool>(true)) {}

CGuiHandOff::~CGuiHandOff() { *m_alive = false; }

void CGuiHandOff::Post(std::function<void()> call) {
    if (!call) return;
    CallOnGuiThread([alive = m_alive, call = std::move(call)] {
        if (*alive) call();
    });
}
