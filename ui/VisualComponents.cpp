#include "ui/VisualComponents.h"

#include <wx/brush.h>
#include <wx/dc.h>
#include <wx/debug.h>
#include <wx/gdicmn.h>
#include <wx/pen.h>

#include <atomic>
#include <cmath>
#include <utility>

#include "foundation/common/InstrumentCommonData.h"
#include "ui/ImageResources.h"

// ---- colour values and schemes ----

wxColour ColorValueToWx(TColorValue value) {
    return wxColour(static_cast<unsigned char>(value & 0xff), static_cast<unsigned char>((value >> 8) & 0xff),
                    static_cast<unsigned char>((value >> 16) & 0xff), wxALPHA_OPAQUE);
}

TColorValue WxToColorValue(const wxColour& colour) {
    if (!colour.IsOk()) return 0;
    return static_cast<TColorValue>(colour.Red()) | (static_cast<TColorValue>(colour.Green()) << 8) |
           (static_cast<TColorValue>(colour.Blue()) << 16);
}

namespace {

constexpr TColorValue kSchemes[kColorSchemeCount][kColorSlotCount] = {
    {0xd0ee78, 0xd0ee78, 0xd0ee78, 0xd0ee78, 0xffffff, 0xffffff, 0x000000, 0x000000,
     0xffffff, 0x002dff, 0x007f32, 0x000000, 0x000000, 0x000000, 0x000000, 0xffffff,
     0xffffff, 0x000000, 0x000000, 0x808080, 0x002dff, 0xc0c0c0},
    {0xc56a31, 0xffd0a8, 0x000000, 0x002dff, 0xffffff, 0xc0c0c0, 0xffffff, 0xc56a31,
     0xffffff, 0x002dff, 0x007f32, 0x000000, 0xffffff, 0x000000, 0xffffff, 0xffffff,
     0xffffff, 0x000000, 0x000000, 0x808080, 0x002dff, 0xc0c0c0},
    {0xeff2e2, 0xffedd6, 0x000000, 0x002dff, 0xe0e2c6, 0xe0e2c6, 0x4f4c49, 0x4f4c49,
     0xffffff, 0x002dff, 0x007f32, 0x4f4c49, 0x4f4c49, 0x4f4c49, 0x4f4c49, 0xffffff,
     0x4f4c49, 0x4f4c49, 0x4f4c49, 0x808080, 0x002dff, 0xc0c0c0},
    {0x3d3d3d, 0x333333, 0x000000, 0x002dff, 0x3d3d56, 0x3d3d56, 0xffffff, 0xffffff,
     0xffffff, 0x002dff, 0x007f32, 0xffffff, 0xffffff, 0xffffff, 0xffffff, 0xffffff,
     0xffffff, 0xffffff, 0xffffff, 0x808080, 0x002dff, 0xc0c0c0},
    {0x233d00, 0x218c60, 0x000000, 0x002dff, 0x217c4c, 0x217c4c, 0x1182e8, 0x1182e8,
     0xffffff, 0x002dff, 0x007f32, 0x1182e8, 0x1182e8, 0x1182e8, 0x1182e8, 0xffffff,
     0x1182e8, 0x1182e8, 0x1182e8, 0x808080, 0x002dff, 0xc0c0c0},
    {0xffedd6, 0xeff2e2, 0x000000, 0x002dff, 0xc0c0c0, 0xc0c0c0, 0x000000, 0xc56a31,
     0xffffff, 0x002dff, 0x007f32, 0x000000, 0xffffff, 0x000000, 0xffffff, 0xffffff,
     0xffffff, 0x000000, 0x000000, 0x808080, 0x002dff, 0xc0c0c0},
    {0xffedd6, 0x808080, 0x000000, 0x002dff, 0xc0c0c0, 0xc0c0c0, 0x000000, 0xc56a31,
     0xffffff, 0x45230c, 0x007f32, 0x000000, 0xffffff, 0x000000, 0xffffff, 0xffffff,
     0xffffff, 0x000000, 0x000000, 0x808080, 0x002dff, 0xc0c0c0},
    {0xf0f0f0, 0xf0f0f0, 0xf0f0f0, 0xf0f0f0, 0xffffff, 0xffffff, 0x000000, 0x000000,
     0x808080, 0x002dff, 0x007f32, 0x000000, 0x000000, 0x000000, 0x000000, 0xffffff,
     0xffffff, 0x000000, 0x000000, 0xc0c0c0, 0x002dff, 0xc0c0c0},
};

constexpr int kSchemeFlags[kColorSchemeCount] = {0, 0, 1, 1, 1, 1, 0, 0};

// The current colours, readable from any thread; they hold scheme 0 before any choice.
template <size_t... I>
struct CCurrentColors {
    constexpr explicit CCurrentColors(std::index_sequence<I...>) : slots{kSchemes[0][I]...} {}
    std::atomic<TColorValue> slots[sizeof...(I)];
};
CCurrentColors g_currentColors(std::make_index_sequence<kColorSlotCount>{});
std::atomic<int> g_currentScheme{0};

bool ValidScheme(int scheme) { return scheme >= 0 && scheme < kColorSchemeCount; }
bool ValidSlot(int slot) { return slot >= 0 && slot < kColorSlotCount; }

}  // namespace

TColorValue GetSchemeColor(int scheme, int slot) {
    return ValidScheme(scheme) && ValidSlot(slot) ? kSchemes[scheme][slot] : 0;
}

int GetSchemeFlag(int scheme) { return ValidScheme(scheme) ? kSchemeFlags[scheme] : 0; }

bool ChooseColorScheme(int scheme) {
    if (!ValidScheme(scheme)) return false;
    g_currentScheme.store(scheme, std::memory_order_relaxed);
    for (int slot = 0; slot < kColorSlotCount; ++slot)
        g_currentColors.slots[slot].store(kSchemes[scheme][slot], std::memory_order_relaxed);
    return true;
}

int GetCurrentColorScheme() { return g_currentScheme.load(std::memory_order_relaxed); }

int GetCurrentSchemeFlag() { return GetSchemeFlag(GetCurrentColorScheme()); }

TColorValue GetCurrentColor(int slot) {
    return ValidSlot(slot) ? g_currentColors.slots[slot].load(std::memory_order_relaxed) : 0;
}

wxColour GetCurrentWxColor(int slot) { return ColorValueToWx(GetCurrentColor(slot)); }

// ---- painters ----

namespace {

// A solid brush from the shared list; null when the list is gone or cannot make one.
const wxBrush* SharedBrush(const wxColour& colour) {
    if (!wxTheBrushList) return nullptr;
    const wxBrush* brush = wxTheBrushList->FindOrCreateBrush(colour, wxBRUSHSTYLE_SOLID);
    return brush && brush->IsOk() ? brush : nullptr;
}

// Fills without an outline; false when no brush was to be had.
bool FillRect(wxDC& dc, const wxRect& rect, const wxColour& colour) {
    const wxBrush* brush = SharedBrush(colour);
    if (!brush) return false;
    dc.SetPen(*wxStockGDI::GetPen(wxStockGDI::PEN_TRANSPARENT));
    dc.SetBrush(*brush);
    dc.DrawRectangle(rect);
    return true;
}

int Channel(TColorValue value, int shift) { return static_cast<int>((value >> shift) & 0xff); }

}  // namespace

CColorRectBase::~CColorRectBase() = default;

void CColorRect::PaintDcRect(const CRect& rect, wxDC* dc) const {
    if (!dc) return;
    FillRect(*dc, rect, ColorValueToWx(m_color));
}

CColorGradientLine::CColorGradientLine(int32_t start, int32_t end, int steps)
    : m_start(start), m_step(steps != 0 ? static_cast<double>(end - start) / steps : 0.0) {}

int32_t CColorGradientLine::ValueAt(int index) const {
    return static_cast<int32_t>(std::trunc(index * m_step)) + m_start;
}

TColorValue GradientColorAt(const CColorGradientLine& red, const CColorGradientLine& green,
                            const CColorGradientLine& blue, int index) {
    return static_cast<TColorValue>(red.ValueAt(index)) |
           ((static_cast<TColorValue>(green.ValueAt(index)) & 0xffff) << 8) |
           (static_cast<TColorValue>(blue.ValueAt(index)) << 16);
}

void CColorRectGradient::PaintDcRect(const CRect& rect, wxDC* dc) const {
    if (!dc) return;
    if (m_kind == eGradientDiagonal) {
        // The diagonal gradient was never finished: it shows its start colour and says so.
        const int steps = static_cast<int>(rect.width * 1.2);
        const CColorGradientLine red(Channel(m_start, 0), Channel(m_end, 0), steps);
        const CColorGradientLine green(Channel(m_start, 8), Channel(m_end, 8), steps);
        const CColorGradientLine blue(Channel(m_start, 16), Channel(m_end, 16), steps);
        FillRect(*dc, rect, ColorValueToWx(GradientColorAt(red, green, blue, 0)));
        // Reported as the instrument's builds have always reported it: condition, place and line.
#if wxDEBUG_LEVEL
        if (wxTheAssertHandler) wxOnAssert("VisualComponents", 123, "PaintDcRect", "0");
#endif
        return;
    }

    const int height = rect.height;
    if (height < 1) return;
    long double step[3];
    int start[3];
    for (int c = 0; c < 3; ++c) {
        start[c] = Channel(m_start, 8 * c);
        step[c] = static_cast<long double>(Channel(m_end, 8 * c) - start[c]) / height;
    }
    for (int y = 0; y < height; ++y) {
        int value[3];
        for (int c = 0; c < 3; ++c) value[c] = static_cast<int>(std::trunc(step[c] * y)) + start[c];
        const wxColour colour(static_cast<unsigned char>(value[0]), static_cast<unsigned char>(value[1]),
                              static_cast<unsigned char>(value[2]));
        if (!FillRect(*dc, wxRect(rect.x, rect.y + y, rect.width, 1), colour)) return;
    }
}

void CColorRectBoundary::PaintDcRect(const CRect& rect, wxDC* dc) const {
    if (!dc) return;
    if (!FillRect(*dc, rect, ColorValueToWx(m_borderColor))) return;
    wxRect inner(rect);
    inner.Inflate(-m_borderWidth, -m_borderWidth);
    if (m_inner) m_inner->PaintDcRect(CRect(inner), dc);
}

CColorRectBmp::CColorRectBmp(const CImageImplementationBase* source)
    : m_source(source), m_width(source ? source->GetWidth() : 0), m_height(source ? source->GetHeight() : 0) {}

void CColorRectBmp::PaintDcRect(const CRect& rect, wxDC* dc) const {
    if (!dc || !dc->IsOk() || !m_source || !m_source->IsValid()) return;
    if (rect.width < 1 || rect.height < 1) return;
    const wxImage image = m_source->GetImage();
    if (!image.IsOk()) return;
    const wxImage scaled = image.Scale(rect.width, rect.height, wxIMAGE_QUALITY_NORMAL);
    const wxBitmap bitmap(scaled, wxBITMAP_SCREEN_DEPTH);
    if (!bitmap.IsOk()) return;
    wxMemoryDC source;
    source.SelectObjectAsSource(bitmap);
    if (!source.IsOk()) return;
    dc->Blit(rect.x, rect.y, rect.width, rect.height, &source, 0, 0, wxCOPY, true);
    source.SelectObject(wxNullBitmap);
}

// The decoration: soft bubbles around the page edges of the 800 x 600 and 1024 x 768 layouts,
// kept clear of the logo and the page's text.
CRect CKorvalinBackGround::GetEllipseRect(int index) {
    static const CRect kEllipses[kEllipseCount] = {
        CRect(-140, -110, 420, 250), CRect(-90, 430, 330, 260), CRect(250, 560, 420, 200),
        CRect(620, 470, 420, 300),   CRect(860, 140, 300, 360), CRect(380, -150, 180, 190),
    };
    return index >= 0 && index < kEllipseCount ? kEllipses[index] : CRect();
}

const CPoint CKorvalinBackGround::kLogoPosition(508, 6);

void CKorvalinBackGround::PaintDcRect(const CRect& rect, wxDC* dc) const {
    if (!dc) return;
    const bool korvalin = GetInstrumentType() == eInstrumentKorvalin;
    const wxColour fill = korvalin ? wxColour(120, 238, 208) : wxColour(240, 240, 240);
    const wxColour decoration = korvalin ? wxColour(165, 255, 229) : wxColour(240, 240, 240);

    wxDCClipper clip(*dc, rect);
    if (!FillRect(*dc, rect, fill)) return;
    if (m_drawDecoration) {
        const wxBrush* brush = SharedBrush(decoration);
        const wxPen* pen = wxThePenList ? wxThePenList->FindOrCreatePen(decoration, 2, wxPENSTYLE_TRANSPARENT)
                                        : nullptr;
        if (brush && pen) {
            dc->SetBrush(*brush);
            dc->SetPen(*pen);
            for (int i = 0; i < kEllipseCount; ++i) dc->DrawEllipse(GetEllipseRect(i));
        }
    }
    const uint32_t logo = korvalin ? 336 : 355;
    if (const CImageImplementationBase* image = GetResourceImage(logo, 0))
        image->Draw(dc, CRect(kLogoPosition, CSize(image->GetWidth(), image->GetHeight())));
}

CBackGroundPainter::~CBackGroundPainter() = default;

CFieldColorRectBase::~CFieldColorRectBase() {
    if (m_memoryDc.IsOk()) m_memoryDc.SelectObject(wxNullBitmap);
}

bool CFieldColorRectBase::CacheBackGround(const CColorRectBase* painter, int width, int height) {
    if (m_memoryDc.IsOk()) m_memoryDc.SelectObject(wxNullBitmap);
    m_bitmap = wxBitmap();
    if (width < 1 || height < 1) return false;
    wxBitmap bitmap(width, height, wxBITMAP_SCREEN_DEPTH);
    if (!bitmap.IsOk()) return false;
    m_bitmap = bitmap;
    m_memoryDc.SelectObject(m_bitmap);
    if (!m_memoryDc.IsOk()) {
        m_bitmap = wxBitmap();
        return false;
    }
    if (painter) painter->PaintDcRect(CRect(0, 0, width, height), &m_memoryDc);
    return true;
}

bool CFieldColorRectBase::IsCached() const { return m_bitmap.IsOk() && m_memoryDc.IsOk(); }

void CFieldColorRectBase::PaintBackGround(int srcX, int srcY, int width, int height, wxDC* dc) const {
    if (!dc || !dc->IsOk() || !IsCached()) return;
    dc->Blit(0, 0, width, height, &m_memoryDc, srcX, srcY, wxCOPY, false);
}

// ---- the view background ----

namespace {

const CColorRectBase* ChooseViewBackGround() {
    if (GetInstrumentName() == "AutoPrinter") {
        static const CColorRectGradient gradient(eGradientVertical, GetCurrentColor(eColorBackgroundTop),
                                                 GetCurrentColor(eColorBackground));
        return &gradient;
    }
    if (GetInstrumentType() == eInstrumentPellamZento) {
        static const CColorRect solid(GetCurrentColor(eColorBackground));
        return &solid;
    }
    static const CKorvalinBackGround korvalin(true);
    return &korvalin;
}

}  // namespace

const CColorRectBase* GetViewBackGround() {
    static const CColorRectBase* const chosen = ChooseViewBackGround();
    return chosen;
}
