#pragma once
// The base of every view (one full screen): a window over the frame's client area that is shown
// when the view becomes the active one and hidden when it stops being it, and that takes all of
// its input as commands through its command table.

#include <wx/window.h>

#include <cstdint>
#include <string>

#include "app/ViewCommands.h"
#include "ui/Geometry.h"

class wxPaintEvent;
class CInstrumentBase;
class CInstrumentViewLayer;
class CInstrumentMain;

// What every view constructor receives.
struct CInstrumentViewCreatorNeeds {
    CInstrumentBase* instrument = nullptr;  // the view-side instrument object
    CInstrumentViewLayer* viewLayer = nullptr;
    CInstrumentMain* main = nullptr;
};

// The four periodic ticks, in the order the views hold their identifiers.
enum eViewTick { eTick100ms = 0, eTick1s, eTick1min, eTick2min, eViewTickCount };

class CInstrumentViewInterface : public wxWindow {
public:
    // The window covers the instrument object's client rectangle inside its parent window and
    // starts hidden. Without an instrument object or parent window the view has no window of its
    // own (it still takes commands and ticks, which is what headless tests use).
    CInstrumentViewInterface(const CInstrumentViewCreatorNeeds& needs, const std::string& name);
    ~CInstrumentViewInterface() override;

    // Shows / hides the view's window (nothing without one). GUI thread.
    virtual void Activate();
    virtual void Deactivate();

    // Looks the identifier up in the view's command table; false when nothing handled it.
    virtual bool DispatchCommand(uint32_t id, uint32_t param) = 0;

    // Offers button, check box and text events to DispatchCommand first; everything else, and
    // what no command handled, goes to the toolkit's normal processing.
    bool ProcessEvent(wxEvent& event) override;

    uint32_t GetTickId(eViewTick tick) const;
    const std::string& GetViewName() const { return m_viewName; }
    const CInstrumentViewCreatorNeeds& GetNeeds() const { return m_needs; }
    // In the parent window's coordinates; empty for a view without a window.
    const CRect& GetViewRect() const { return m_viewRect; }
    bool HasWindow() const { return m_hasWindow; }

protected:
    // Filled by the view's constructor, in eViewTick order.
    uint32_t m_tickIds[eViewTickCount] = {0, 0, 0, 0};

private:
    void OnPaint(wxPaintEvent& event);

    const CInstrumentViewCreatorNeeds m_needs;
    const std::string m_viewName;
    CRect m_viewRect;
    bool m_hasWindow = false;
};

// A view class T: the interface plus T's command table.
template <class T>
class CInstrumentViewBase : public CInstrumentViewInterface, public CViewCommandDistributor<T> {
public:
    CInstrumentViewBase(const CInstrumentViewCreatorNeeds& needs, const std::string& name)
        : CInstrumentViewInterface(needs, name) {}

    bool DispatchCommand(uint32_t id, uint32_t param) override {
        return CViewCommandDistributor<T>::DistributeCommand(id, param);
    }

protected:
    // Enters handler under a freshly drawn control identifier and returns the identifier.
    uint32_t AddViewCommand(typename CViewCommand<T>::Handler handler);
};

// Draws from the application-wide control identifier counter.
uint32_t DrawViewCommandId();

template <class T>
uint32_t CInstrumentViewBase<T>::AddViewCommand(typename CViewCommand<T>::Handler handler) {
    const uint32_t id = DrawViewCommandId();
    CViewCommandDistributor<T>::AddCommand(id, new CViewCommand<T>(static_cast<T*>(this), handler));
    return id;
}
