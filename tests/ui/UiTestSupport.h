#pragma once
// Pixel helpers of the window tests: paint into a bitmap, read the pixels back.

#include <wx/bitmap.h>
#include <wx/dcmemory.h>
#include <wx/image.h>

#include <algorithm>
#include <climits>
#include <ostream>

namespace uitest {

struct Rgb {
    int r, g, b;
    bool operator==(const Rgb& o) const { return r == o.r && g == o.g && b == o.b; }
    bool operator!=(const Rgb& o) const { return !(*this == o); }
};
inline std::ostream& operator<<(std::ostream& os, const Rgb& c) { return os << c.r << "," << c.g << "," << c.b; }
const Rgb kUntouched{1, 2, 3};

// A 24-bit bitmap filled with kUntouched, selected into a memory DC until the pixels are read.
class CCanvas {
public:
    CCanvas(int width, int height) : m_bitmap(width, height, 24) {
        m_dc.SelectObject(m_bitmap);
        m_dc.SetBackground(wxBrush(wxColour(1, 2, 3)));
        m_dc.Clear();
    }
    ~CCanvas() { m_dc.SelectObject(wxNullBitmap); }
    wxMemoryDC* Dc() { return &m_dc; }
    Rgb At(int x, int y) {
        if (!m_image.IsOk()) {
            m_dc.SelectObject(wxNullBitmap);
            m_image = m_bitmap.ConvertToImage();
        }
        return Rgb{m_image.GetRed(x, y), m_image.GetGreen(x, y), m_image.GetBlue(x, y)};
    }
    // True when every pixel of the rectangle has colour c.
    bool All(int x0, int y0, int w, int h, const Rgb& c) {
        for (int y = y0; y < y0 + h; ++y)
            for (int x = x0; x < x0 + w; ++x)
                if (At(x, y) != c) return false;
        return true;
    }

private:
    wxBitmap m_bitmap;
    wxMemoryDC m_dc;
    wxImage m_image;
};

// The pixels of a canvas region that differ from the background: bounding box, number of
// separate bands of rows (text lines), and whether any of them is black.
struct CInk {
    int left = INT_MAX, right = -1, top = INT_MAX, bottom = -1, lines = 0;
    bool black = false;
};
inline CInk FindInk(CCanvas& canvas, int width, int height, const Rgb& background) {
    CInk ink;
    for (int y = 0, above = 0; y < height; ++y) {
        int here = 0;
        for (int x = 0; x < width; ++x) {
            const Rgb c = canvas.At(x, y);
            if (c == background) continue;
            here = 1;
            ink.black = ink.black || c == Rgb{0, 0, 0};
            ink.left = std::min(ink.left, x), ink.right = std::max(ink.right, x);
            ink.top = std::min(ink.top, y), ink.bottom = y;
        }
        ink.lines += here && !above;
        above = here;
    }
    return ink;
}

}  // namespace uitest
