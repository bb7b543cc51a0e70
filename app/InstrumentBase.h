#pragma once
// The drawing context that every view is built from: the default font, the client rectangle and
// the parent window. It also hands out the program's control identifiers from one counter.

#include <cstdint>

#include "foundation/Collectors.h"
#include "ui/Geometry.h"

class wxFont;
class wxWindow;

class CInstrumentBase {
public:
    enum : int {
        kFirstControlId = 500,
        // Passed by every drawing context other than the server view's: the counter goes on.
        kKeepControlIds = -1,
    };

    // Holds the three pointers, owns none of them. A first control identifier other than
    // kKeepControlIds restarts the application-wide counter there.
    CInstrumentBase(wxFont* defaultFont, CRect* clientRect, wxWindow* parent,
                    int firstControlId = kKeepControlIds);
    virtual ~CInstrumentBase();
    CInstrumentBase(const CInstrumentBase&) = delete;
    CInstrumentBase& operator=(const CInstrumentBase&) = delete;

    wxFont* GetDefaultFont() const { return m_defaultFont; }
    CRect* GetClientRect() const { return m_clientRect; }
    // Null for a context without a screen (views then have no window of their own).
    wxWindow* GetParentWindow() const { return m_parent; }

    // The counter's current value, then counts on; any thread.
    static int GetNewControlId();
    // The value that the next request returns.
    static int PeekNextControlId();

private:
    wxFont* m_defaultFont;
    CRect* m_clientRect;
    wxWindow* m_parent;
};

// The view-side instrument object: created and deleted by the main controller, read by the views.
CNullInitializedPointer<CInstrumentBase, false, false>& GetViewInstrumentBase();
