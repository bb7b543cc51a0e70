#pragma once
// The controls of the update page: page header, page body base, text field (status line) and
// progress bar. Text and progress values may be set from any thread; the controls guard their
// own values and have the GUI thread repaint them. Drawing happens on the GUI thread only, with
// the program's fonts and the current colours.

#include <wx/bitmap.h>
#include <wx/image.h>
#include <wx/weakref.h>
#include <wx/window.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

#include "foundation/Collectors.h"
#include "foundation/GuiHandOff.h"
#include "ui/Geometry.h"
#include "ui/InstrumentFont.h"
#include "ui/TextControl.h"

class wxDC;
class wxPaintEvent;
class CColorRectBase;

// Asks the GUI thread to repaint one window. Request() may be called from any thread; from
// another thread the request goes through the window's hand-off and is dropped if the window is
// gone by the time it arrives. Requests made while one is pending are merged into it.
class CRepaintRequester {
public:
    // GUI thread; the requester is a member of the window.
    explicit CRepaintRequester(wxWindow* window) : m_window(window) {}
    void Request();

private:
    wxWindow* const m_window;
    std::atomic<bool> m_pending{false};
    CGuiHandOff m_handOff;
};

// Paints the part of a background painter that lies behind a child window, so that the child
// blends with its parent (whose client area the painter fills). A null painter means the view
// background.
void PaintParentBackGround(wxWindow* child, wxDC& dc, const CColorRectBase* painter);

// A text drawn centred in its window (by default), several lines when it holds line feeds.
class CTextField : public wxWindow, public CTextBearingControl {
public:
    // The guarded text; Change tells whether the new text differs.
    class CTextFieldText : public CSafeVar<std::string> {
    public:
        bool Change(const std::string& text);
    };

    // alignment: wxALIGN_* flags for the text block inside the field.
    CTextField(wxWindow* parent, wxWindowID id, const CRect& rect, eFontTypes font = eFontTypeStatusLine,
               int alignment = wxALIGN_CENTRE);
    ~CTextField() override;

    // Any thread. The field repaints only when the text changed.
    void SetText(const std::string& utf8);
    std::string GetText() const { return m_text.Get(); }
    void SetControlText(const std::string& utf8) override { SetText(utf8); }

    // GUI thread. The background painter is not owned; null means the view background.
    void SetBackGroundPainter(const CColorRectBase* painter);
    void SetTextColorSlot(int slot);
    void SetMargin(int pixels);
    eFontTypes GetFontType() const { return m_font; }

    // Draws the field as its paint handler does, into any device context (GUI thread).
    void Render(wxDC& dc);

protected:
    // Draws text into area (the client area less the margins) with font and colour already set.
    virtual void PaintText(wxDC& dc, const wxRect& area, const std::string& text);

private:
    void OnPaint(wxPaintEvent& event);

    CTextFieldText m_text;
    const eFontTypes m_font;
    const int m_alignment;
    int m_colorSlot;
    int m_margin = 0;
    const CColorRectBase* m_backGround = nullptr;
    CRepaintRequester m_repaint;
};

// A progress bar drawn on the light-blue frame image (364): the frame is stretched over the bar
// with its corners kept, and the inside is filled in proportion to value / range.
class CInstrumentProgressBase : public wxWindow {
public:
    enum : uint32_t { kFrameImageId = 364, kFrameImageKind = 3 };

    CInstrumentProgressBase(wxWindow* parent, wxWindowID id, const CRect& rect,
                            uint32_t frameImageId = kFrameImageId);
    ~CInstrumentProgressBase() override;

    // Any thread. Value and range together, so that no repaint shows one without the other; the
    // bar repaints once when either changed.
    void SetProgress(int value, int range);
    int GetRange() const;
    int GetValue() const;

    bool HasFrameImage() const { return m_frame.IsOk(); }
    // Draws the bar as its paint handler does, into any device context (GUI thread).
    void Render(wxDC& dc);
    void SetBackGroundPainter(const CColorRectBase* painter);
    // The filled width for an inside of the given width; nothing for a range below 1.
    static int FilledWidth(int value, int range, int width);
    // The inside of the frame in a client area of that size.
    static wxRect InsideRect(const wxSize& client);

    // Where the "Could not load bitmap N" report goes; null restores the message box. Replacing
    // it also allows one more report.
    typedef void (*TReportFunction)(const std::string& message);
    static void SetReportFunction(TReportFunction report);

private:
    struct CProgress {
        int range = 100;
        int value = 0;
    };
    void OnPaint(wxPaintEvent& event);
    void RebuildFrame(const wxSize& size);
    void ReportMissingImage(uint32_t id);

    CSafeVar<CProgress> m_progress;
    wxImage m_frame;         // GUI thread only
    wxBitmap m_frameBitmap;  // the frame at the current size; GUI thread only
    const CColorRectBase* m_backGround = nullptr;
    CRepaintRequester m_repaint;
};

// The page header: a band across the top of the view with the page title.
class CUIHeader {
public:
    // viewRect: the view's rectangle; the header is placed by its size, in the view's coordinates.
    CUIHeader(wxWindow* parent, const CRect& viewRect);
    virtual ~CUIHeader();
    CUIHeader(const CUIHeader&) = delete;
    CUIHeader& operator=(const CUIHeader&) = delete;

    // The title's text field, which the page labels; null once the parent window destroyed it.
    CTextField* GetTitleField() const { return m_title.get(); }
    CRect GetHeaderRect() const { return m_rect; }
    static CRect HeaderRect(const CRect& viewRect);

private:
    CRect m_rect;
    wxWeakRef<CTextField> m_title;
};

// The page body: the part of the view below the header, where a page places its controls.
class CUIBase {
public:
    CUIBase(wxWindow* parent, const CRect& viewRect);
    virtual ~CUIBase();
    CUIBase(const CUIBase&) = delete;
    CUIBase& operator=(const CUIBase&) = delete;

    // In the view's coordinates.
    CRect GetBodyRect() const { return m_body; }
    wxWindow* GetBodyParent() const { return m_parent; }
    static CRect BodyRect(const CRect& viewRect);

    // The standard places of a progress page's bar and status line inside the body.
    CRect GetProgressBarRect() const;
    CRect GetStatusLineRect() const;

private:
    wxWindow* m_parent;
    CRect m_body;
};
