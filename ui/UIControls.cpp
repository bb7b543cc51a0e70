#include "ui/UIControls.h"

#include <wx/brush.h>
#include <wx/dcbuffer.h>
#include <wx/msgdlg.h>
#include <wx/pen.h>
#include <wx/thread.h>

#include <algorithm>

#include "ui/ImageResources.h"
#include "ui/InstrumentLayout.h"
#include "ui/VisualComponents.h"

// ---- repaint requests ----

void CRepaintRequester::Request() {
    if (wxIsMainThread()) {
        m_window->Refresh(false);
        return;
    }
    // One queued request covers every change made before it is handled: the handler clears the
    // flag before the repaint reads the values.
    if (m_pending.exchange(true, std::memory_order_acq_rel)) return;
    m_handOff.Post([this] {
        m_pending.store(false, std::memory_order_release);
        m_window->Refresh(false);
    });
}

void PaintParentBackGround(wxWindow* child, wxDC& dc, const CColorRectBase* painter) {
    if (!painter) painter = GetViewBackGround();
    if (!child || !painter) return;
    wxWindow* parent = child->GetParent();
    const wxPoint offset = parent ? child->GetPosition() : wxPoint(0, 0);
    // The parent's area, but never less than what the child covers (a parent may not know its
    // final size yet).
    wxSize area = parent ? parent->GetClientSize() : wxSize(0, 0);
    const wxSize own = child->GetClientSize();
    area.x = std::max(area.x, offset.x + own.x);
    area.y = std::max(area.y, offset.y + own.y);
    // Paint in the parent's coordinates so that gradients and decorations line up with it.
    const wxPoint origin = dc.GetDeviceOrigin();
    dc.SetDeviceOrigin(origin.x - offset.x, origin.y - offset.y);
    painter->PaintDcRect(CRect(0, 0, area.x, area.y), &dc);
    dc.SetDeviceOrigin(origin.x, origin.y);
}

// ---- text field ----

bool CTextField::CTextFieldText::Change(const std::string& text) {
    return Apply([&text](std::string& current) {
        if (current == text) return false;
        current = text;
        return true;
    });
}

CTextField::CTextField(wxWindow* parent, wxWindowID id, const CRect& rect, eFontTypes font, int alignment)
    : m_font(font), m_alignment(alignment), m_colorSlot(eColorFieldText), m_repaint(this) {
    SetBackgroundStyle(wxBG_STYLE_PAINT);
    Create(parent, id, rect.GetPosition(), rect.GetSize(), wxBORDER_NONE | wxFULL_REPAINT_ON_RESIZE);
    Bind(wxEVT_PAINT, &CTextField::OnPaint, this);
}

CTextField::~CTextField() = default;

void CTextField::SetText(const std::string& utf8) {
    if (m_text.Change(utf8)) m_repaint.Request();
}

void CTextField::SetBackGroundPainter(const CColorRectBase* painter) {
    m_backGround = painter;
    Refresh(false);
}

void CTextField::SetTextColorSlot(int slot) {
    m_colorSlot = slot;
    Refresh(false);
}

void CTextField::SetMargin(int pixels) {
    m_margin = std::max(0, pixels);
    Refresh(false);
}

void CTextField::OnPaint(wxPaintEvent&) {
    wxAutoBufferedPaintDC dc(this);
    Render(dc);
}

void CTextField::Render(wxDC& dc) {
    PaintParentBackGround(this, dc, m_backGround);
    wxRect area(wxPoint(0, 0), GetClientSize());
    area.Deflate(m_margin, 0);
    dc.SetFont(GetProgramFont(m_font));
    dc.SetTextForeground(GetCurrentWxColor(m_colorSlot));
    dc.SetBackgroundMode(wxTRANSPARENT);
    PaintText(dc, area, m_text.Get());
}

void CTextField::PaintText(wxDC& dc, const wxRect& area, const std::string& text) {
    if (text.empty() || area.IsEmpty()) return;
    // DrawLabel breaks at line feeds and aligns every line for itself.
    dc.DrawLabel(wxString::FromUTF8(text), area, m_alignment);
}

// ---- progress bar ----

namespace {

// The frame image's corners (radius and border) in its own pixels, and how far its inside lies
// from the edge.
constexpr int kFrameCorner = 12;
constexpr int kFrameInset = 5;

const wxColour kFillColour(58, 138, 206);
const wxColour kFillGloss(120, 182, 236);

std::atomic<bool> g_missingImageReported{false};
std::atomic<CInstrumentProgressBase::TReportFunction> g_reportFunction{nullptr};

int CornerFor(const wxSize& size) { return std::max(0, std::min({kFrameCorner, size.x / 2, size.y / 2})); }

void FillRounded(wxDC& dc, const wxRect& rect, const wxColour& colour) {
    if (rect.IsEmpty() || !wxTheBrushList) return;
    const wxBrush* brush = wxTheBrushList->FindOrCreateBrush(colour, wxBRUSHSTYLE_SOLID);
    if (!brush || !brush->IsOk()) return;
    dc.SetPen(*wxStockGDI::GetPen(wxStockGDI::PEN_TRANSPARENT));
    dc.SetBrush(*brush);
    const int radius = std::min({4, rect.width / 2, rect.height / 2});
    if (radius > 0)
        dc.DrawRoundedRectangle(rect, radius);
    else
        dc.DrawRectangle(rect);
}

}  // namespace

CInstrumentProgressBase::CInstrumentProgressBase(wxWindow* parent, wxWindowID id, const CRect& rect,
                                                 uint32_t frameImageId)
    : m_repaint(this) {
    SetBackgroundStyle(wxBG_STYLE_PAINT);
    Create(parent, id, rect.GetPosition(), rect.GetSize(), wxBORDER_NONE | wxFULL_REPAINT_ON_RESIZE);
    Bind(wxEVT_PAINT, &CInstrumentProgressBase::OnPaint, this);
    if (const CImageImplementationBase* image = GetResourceImage(frameImageId, kFrameImageKind))
        if (image->IsValid()) m_frame = image->GetImage();
    if (!m_frame.IsOk()) ReportMissingImage(frameImageId);
}

CInstrumentProgressBase::~CInstrumentProgressBase() = default;

void CInstrumentProgressBase::SetProgress(int value, int range) {
    const bool changed = m_progress.Apply([value, range](CProgress& p) {
        if (p.value == value && p.range == range) return false;
        p.value = value;
        p.range = range;
        return true;
    });
    if (changed) m_repaint.Request();
}

int CInstrumentProgressBase::GetRange() const {
    return m_progress.Apply([](const CProgress& p) { return p.range; });
}

int CInstrumentProgressBase::GetValue() const {
    return m_progress.Apply([](const CProgress& p) { return p.value; });
}

void CInstrumentProgressBase::SetBackGroundPainter(const CColorRectBase* painter) {
    m_backGround = painter;
    Refresh(false);
}

int CInstrumentProgressBase::FilledWidth(int value, int range, int width) {
    if (range < 1 || width < 1 || value < 1) return 0;
    if (value >= range) return width;
    return static_cast<int>(static_cast<long long>(width) * value / range);
}

wxRect CInstrumentProgressBase::InsideRect(const wxSize& client) {
    const int inset = (CornerFor(client) * kFrameInset + kFrameCorner / 2) / kFrameCorner;
    wxRect inside(wxPoint(0, 0), client);
    inside.Deflate(inset, inset);
    if (inside.width < 0) inside.width = 0;
    if (inside.height < 0) inside.height = 0;
    return inside;
}

void CInstrumentProgressBase::SetReportFunction(TReportFunction report) {
    g_reportFunction.store(report);
    g_missingImageReported.store(false);
}

void CInstrumentProgressBase::ReportMissingImage(uint32_t id) {
    if (g_missingImageReported.exchange(true)) return;
    const std::string message = "Could not load bitmap " + std::to_string(id);
    const TReportFunction report = g_reportFunction.load();
    // Shown from the event loop, not from inside the construction of the page.
    CallOnGuiThread([message, report]() {
        if (report)
            report(message);
        else
            wxMessageBox(wxString::FromUTF8(message));
    });
}

// Nine pieces: the corners keep their size, the edges stretch along, the middle both ways.
void CInstrumentProgressBase::RebuildFrame(const wxSize& size) {
    m_frameBitmap = wxBitmap();
    if (!m_frame.IsOk() || size.x < 1 || size.y < 1) return;
    const int srcW = m_frame.GetWidth();
    const int srcH = m_frame.GetHeight();
    const int srcC = std::min({kFrameCorner, srcW / 2, srcH / 2});
    const int dstC = CornerFor(size);
    const int srcX[4] = {0, srcC, srcW - srcC, srcW};
    const int srcY[4] = {0, srcC, srcH - srcC, srcH};
    const int dstX[4] = {0, dstC, size.x - dstC, size.x};
    const int dstY[4] = {0, dstC, size.y - dstC, size.y};

    wxImage frame(size.x, size.y, true);
    for (int row = 0; row < 3; ++row) {
        for (int col = 0; col < 3; ++col) {
            const wxRect src(srcX[col], srcY[row], srcX[col + 1] - srcX[col], srcY[row + 1] - srcY[row]);
            const wxSize dst(dstX[col + 1] - dstX[col], dstY[row + 1] - dstY[row]);
            if (src.IsEmpty() || dst.x < 1 || dst.y < 1) continue;
            wxImage piece = m_frame.GetSubImage(src);
            if (piece.GetSize() != dst) piece.Rescale(dst.x, dst.y, wxIMAGE_QUALITY_NORMAL);
            frame.Paste(piece, dstX[col], dstY[row]);
        }
    }
    m_frameBitmap = wxBitmap(frame, wxBITMAP_SCREEN_DEPTH);
}

void CInstrumentProgressBase::OnPaint(wxPaintEvent&) {
    wxAutoBufferedPaintDC dc(this);
    Render(dc);
}

void CInstrumentProgressBase::Render(wxDC& dc) {
    PaintParentBackGround(this, dc, m_backGround);
    const wxSize size = GetClientSize();
    if (size.x < 1 || size.y < 1) return;
    if (m_frame.IsOk() && (!m_frameBitmap.IsOk() || m_frameBitmap.GetSize() != size)) RebuildFrame(size);
    if (m_frameBitmap.IsOk()) {
        dc.DrawBitmap(m_frameBitmap, 0, 0, false);
    } else {
        // Without the artwork the bar still shows its progress inside a plain frame.
        FillRounded(dc, wxRect(wxPoint(0, 0), size), kFillColour);
        wxRect inside(wxPoint(0, 0), size);
        inside.Deflate(2, 2);
        FillRounded(dc, inside, wxColour(225, 238, 250));
    }

    const CProgress progress = m_progress.Get();
    const wxRect inside = InsideRect(size);
    const int filled = FilledWidth(progress.value, progress.range, inside.width);
    if (filled < 1 || inside.height < 1) return;
    const wxRect bar(inside.x, inside.y, filled, inside.height);
    FillRounded(dc, bar, kFillColour);
    wxRect gloss(bar);
    gloss.Deflate(2, 2);
    gloss.height = gloss.height / 3;
    FillRounded(dc, gloss, kFillGloss);
}

// ---- page header and body ----

namespace {

// The page's sizes, from the layout values of the selected display variant.
int Metric(eLayoutMetric metric) { return GetInstrumentViewLayer().GetMetric(metric); }

// The title: left-aligned in the header font, with a rule along the bottom of the band.
class CUIHeaderTitle : public CTextField {
public:
    CUIHeaderTitle(wxWindow* parent, const CRect& rect)
        : CTextField(parent, wxID_ANY, rect, eFontTypeHeaderTitle, wxALIGN_LEFT | wxALIGN_CENTRE_VERTICAL) {
        SetMargin(Metric(eLayoutTitleMargin));
    }

protected:
    void PaintText(wxDC& dc, const wxRect& area, const std::string& text) override {
        CTextField::PaintText(dc, area, text);
        const wxSize size = GetClientSize();
        const CColorRect rule(GetCurrentColor(eColorSeparator));
        rule.PaintDcRect(CRect(area.x, size.y - 3, area.width, 2), &dc);
    }
};

}  // namespace

CUIHeader::CUIHeader(wxWindow* parent, const CRect& viewRect) : m_rect(HeaderRect(viewRect)) {
    if (parent) m_title = new CUIHeaderTitle(parent, m_rect);
}

CUIHeader::~CUIHeader() {
    // A parent that is going destroys the title itself; otherwise the header takes it along.
    CTextField* title = m_title.get();
    if (title && !(title->GetParent() && title->GetParent()->IsBeingDeleted())) title->Destroy();
}

CRect CUIHeader::HeaderRect(const CRect& viewRect) {
    return CRect(0, 0, viewRect.width, std::min(Metric(eLayoutHeaderHeight), std::max(0, viewRect.height)));
}

CUIBase::CUIBase(wxWindow* parent, const CRect& viewRect) : m_parent(parent), m_body(BodyRect(viewRect)) {}

CUIBase::~CUIBase() = default;

CRect CUIBase::BodyRect(const CRect& viewRect) {
    const CRect header = CUIHeader::HeaderRect(viewRect);
    return CRect(0, header.GetBottom() + 1, viewRect.width, std::max(0, viewRect.height - header.height));
}

CRect CUIBase::GetProgressBarRect() const {
    const int width = m_body.width * 3 / 4;
    const int height = std::min(Metric(eLayoutProgressBarHeight), m_body.height / 4);
    return CRect(m_body.x + (m_body.width - width) / 2, m_body.y + m_body.height * 2 / 5 - height / 2, width,
                 height);
}

CRect CUIBase::GetStatusLineRect() const {
    const CRect bar = GetProgressBarRect();
    const int top = bar.GetBottom() + 1 + 32;
    const int height = std::max(0, std::min(Metric(eLayoutStatusLineHeight), m_body.GetBottom() + 1 - top));
    const int margin = Metric(eLayoutBodyMargin);
    return CRect(m_body.x + margin, top, std::max(0, m_body.width - 2 * margin), height);
}
