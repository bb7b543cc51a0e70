#pragma once
// Colours and painters. Views and controls are not drawn by the toolkit's widgets but by small
// painter objects, each filling a rectangle of a device context in one fixed way. Painters hold
// no state between paints and own nothing they point to. Painting happens on the GUI thread.

#include <wx/bitmap.h>
#include <wx/colour.h>
#include <wx/dcmemory.h>

#include <cstdint>

#include "ui/Geometry.h"

class wxDC;
class CImageImplementationBase;

// ---- colour values and schemes ----

// 0x00BBGGRR: red in the low byte; the top byte is ignored.
typedef uint32_t TColorValue;

wxColour ColorValueToWx(TColorValue value);
TColorValue WxToColorValue(const wxColour& colour);

enum {
    kColorSchemeCount = 8,
    kColorSlotCount = 22,
};

// Slots with a meaning to the painters and the update screen's controls.
enum eColorSlot {
    eColorBackgroundTop = 0,  // background gradient, top
    eColorBackground = 1,     // background gradient bottom; the solid background
    eColorFieldText = 6,      // text drawn on the view background
    eColorFieldTextAlt = 7,
    eColorWarning = 9,
    eColorOk = 10,
    eColorSeparator = 19,  // rules between page parts
    eColorError = 20,
    eColorDisabled = 21,
};

// The compiled-in table; out-of-range arguments answer 0.
TColorValue GetSchemeColor(int scheme, int slot);
// One flag per scheme (0, 0, 1, 1, 1, 1, 0, 0); its meaning lies with the controls that read it.
int GetSchemeFlag(int scheme);

// Copies scheme n's colours into the current colours; false (nothing changes) outside 0 to 7.
bool ChooseColorScheme(int scheme);
// The chosen scheme; 0 until one is chosen.
int GetCurrentColorScheme();
int GetCurrentSchemeFlag();
// The current colours (scheme 0's until a scheme is chosen); an unknown slot answers 0.
TColorValue GetCurrentColor(int slot);
wxColour GetCurrentWxColor(int slot);

// ---- painters ----

class CColorRectBase {
public:
    CColorRectBase() = default;
    virtual ~CColorRectBase();
    CColorRectBase(const CColorRectBase&) = delete;
    CColorRectBase& operator=(const CColorRectBase&) = delete;

    // Paints rect; a null device context paints nothing.
    virtual void PaintDcRect(const CRect& rect, wxDC* dc) const = 0;
};

// A solid rectangle.
class CColorRect : public CColorRectBase {
public:
    explicit CColorRect(TColorValue color) : m_color(color) {}
    void PaintDcRect(const CRect& rect, wxDC* dc) const override;
    virtual void SetColor(TColorValue color) { m_color = color; }
    TColorValue GetColor() const { return m_color; }

private:
    TColorValue m_color;
};

// One channel of a gradient: ValueAt(i) = truncate(i * step) + start.
class CColorGradientLine {
public:
    // step = (end - start) / steps; no steps gives a flat line.
    CColorGradientLine(int32_t start, int32_t end, int steps);
    int32_t ValueAt(int index) const;
    int32_t GetStart() const { return m_start; }
    double GetStep() const { return m_step; }

private:
    int32_t m_start;
    double m_step;
};

// The colour value at index i of three channel lines.
TColorValue GradientColorAt(const CColorGradientLine& red, const CColorGradientLine& green,
                            const CColorGradientLine& blue, int index);

enum eColorGradientKind {
    eGradientVertical = 0,
    eGradientDiagonal = 1,  // unfinished: paints the start colour and asserts
};

// Vertical gradient, drawn as one-pixel rows: the first row is the start colour, the last stops
// one step short of the end colour.
class CColorRectGradient : public CColorRectBase {
public:
    CColorRectGradient(int kind, TColorValue start, TColorValue end)
        : m_kind(kind), m_start(start), m_end(end) {}
    void PaintDcRect(const CRect& rect, wxDC* dc) const override;
    virtual void SetColors(TColorValue start, TColorValue end) {
        m_start = start;
        m_end = end;
    }
    int GetKind() const { return m_kind; }
    TColorValue GetStartColor() const { return m_start; }
    TColorValue GetEndColor() const { return m_end; }

private:
    int m_kind;
    TColorValue m_start;
    TColorValue m_end;
};

// A border of the given width with another painter inside.
class CColorRectBoundary : public CColorRectBase {
public:
    CColorRectBoundary(TColorValue borderColor, const CColorRectBase* inner, int borderWidth)
        : m_borderColor(borderColor), m_inner(inner), m_borderWidth(borderWidth) {}
    void PaintDcRect(const CRect& rect, wxDC* dc) const override;

private:
    TColorValue m_borderColor;
    const CColorRectBase* m_inner;
    int m_borderWidth;
};

// An image scaled to the rectangle. The image's size is taken when the painter is built.
class CColorRectBmp : public CColorRectBase {
public:
    explicit CColorRectBmp(const CImageImplementationBase* source);
    void PaintDcRect(const CRect& rect, wxDC* dc) const override;
    int GetImageWidth() const { return m_width; }
    int GetImageHeight() const { return m_height; }

private:
    const CImageImplementationBase* m_source;
    int m_width;
    int m_height;
};

// The default view background: the instrument type's colour, optional decoration and the logo.
class CKorvalinBackGround : public CColorRectBase {
public:
    explicit CKorvalinBackGround(bool drawDecoration = true) : m_drawDecoration(drawDecoration) {}
    void PaintDcRect(const CRect& rect, wxDC* dc) const override;

    enum { kEllipseCount = 6 };
    // The decoration's ellipses, in screen coordinates.
    static CRect GetEllipseRect(int index);
    static const CPoint kLogoPosition;

private:
    unsigned char m_drawDecoration;
};

// A painter addressed by the source position (a region of a cached background).
class CBackGroundPainter {
public:
    CBackGroundPainter() = default;
    virtual ~CBackGroundPainter();
    CBackGroundPainter(const CBackGroundPainter&) = delete;
    CBackGroundPainter& operator=(const CBackGroundPainter&) = delete;

    // Copies the region (srcX, srcY, width, height) to (0, 0) of dc; a null dc paints nothing.
    virtual void PaintBackGround(int srcX, int srcY, int width, int height, wxDC* dc) const = 0;
};

// The cached background of a field: a bitmap in a memory device context.
class CFieldColorRectBase : public CBackGroundPainter {
public:
    CFieldColorRectBase() = default;
    ~CFieldColorRectBase() override;

    // Renders painter into a new cached bitmap of the given size; false when none can be made.
    bool CacheBackGround(const CColorRectBase* painter, int width, int height);
    bool IsCached() const;
    void PaintBackGround(int srcX, int srcY, int width, int height, wxDC* dc) const override;

private:
    mutable wxMemoryDC m_memoryDc;
    wxBitmap m_bitmap;
};

// The view background, chosen once per run from the instrument and the current colours: a
// gradient for the auto printer, a solid colour for instrument type 1, else CKorvalinBackGround.
// Never null; lives until program exit.
const CColorRectBase* GetViewBackGround();
