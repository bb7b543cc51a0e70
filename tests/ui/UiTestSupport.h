#pragma once
// Pixel helpers of the ui window tests: paint into a bitmap, read the pixels back.

#include <wx/bitmap.h>
#include <wx/dcmemory.h>
#include <wx/image.h>

#include <cstdint>
#include <ostream>

namespace uitest {

struct Rgb {
    int r, g, b;
    bool operator==(const Rgb& o) const { return r == o.r && g == o.g && b == o.b; }
    bool operator!=(const Rgb& o) const { return !(*this == o); }
};
inline std::ostream& operator<<(std::ostream& os, const Rgb& c) {
    return os << "(" << c.r << ", " << c.g << ", " << c.b << ")";
}
inline Rgb FromValue(uint32_t v) { return Rgb{int(v & 0xff), int((v >> 8) & 0xff), int((v >> 16) & 0xff)}; }

// A 24-bit bitmap pre-filled with one colour, selected into a memory DC while alive.
class CCanvas {
public:
    CCanvas(int width, int height, const wxColour& fill = wxColour(1, 2, 3)) : m_bitmap(width, height, 24) {
        m_dc.SelectObject(m_bitmap);
        m_dc.SetBackground(wxBrush(fill));
        m_dc.Clear();
    }
    ~CCanvas() { m_dc.SelectObject(wxNullBitmap); }
    wxMemoryDC* Dc() { return &m_dc; }
    // Ends painting and reads the pixels.
    const wxImage& Image() {
        if (!m_image.IsOk()) {
            m_dc.SelectObject(wxNullBitmap);
            m_image = m_bitmap.ConvertToImage();
            if (getenv("UITEST_DUMP")) { static int n = 0; m_image.SaveFile(wxString::Format("/tmp/fd/dump%d.bmp", n++), wxBITMAP_TYPE_BMP); }
        }
        return m_image;
    }
    Rgb At(int x, int y) {
        const wxImage& img = Image();
        return Rgb{img.GetRed(x, y), img.GetGreen(x, y), img.GetBlue(x, y)};
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

const Rgb kUntouched{1, 2, 3};

}  // namespace uitest
