#include "app/ViewManager.h"

#include <wx/utils.h>

CInstrumentViewItemCreator::CInstrumentViewItemCreator() : m_creator(this) {}
CInstrumentViewItemCreator::~CInstrumentViewItemCreator() = default;

CInstrumentViewItemDestroyer::CInstrumentViewItemDestroyer() : m_destroyer(this) {}
CInstrumentViewItemDestroyer::~CInstrumentViewItemDestroyer() = default;

CInstrumentViewItem::~CInstrumentViewItem() = default;

void CInstrumentViewItem::Destroy() {
    CInstrumentViewInterface* view = m_view;
    if (!view) return;
    m_view = nullptr;
    // Nothing may keep pointing at a deleted view: the switcher would otherwise hand it to the
    // next switch (which deactivates it) or to a tick.
    if (CViewSwitcher* switcher = CSingleton<CViewSwitcher>::GetInstance()) {
        if (switcher->GetActiveView() == view) switcher->SetActiveView(nullptr);
    }
    delete view;
}

CInstrumentViewInterface* GetActiveView() {
    CViewSwitcher* switcher = CSingleton<CViewSwitcher>::GetInstance();
    return switcher ? switcher->GetActiveView() : nullptr;
}

void SwitchToView(CInstrumentViewInterface* view) {
    CViewSwitcher* switcher = CSingleton<CViewSwitcher>::GetInstance();
    if (!switcher) return;
    if (CInstrumentViewInterface* old = switcher->GetActiveView()) old->Deactivate();
    switcher->SetActiveView(view);
    // The hidden screen gets its time to disappear before the next one is drawn.
    wxMilliSleep(kViewSwitchPauseMs);
    if (CInstrumentViewInterface* active = switcher->GetActiveView()) active->Activate();
}
