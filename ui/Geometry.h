#pragma once
// The program's rectangle, point and size (pixels), built from and converted to the toolkit's.

#include <wx/gdicmn.h>

class CPoint : public wxPoint {
public:
    CPoint() = default;
    CPoint(int x, int y) : wxPoint(x, y) {}
    CPoint(const wxPoint& p) : wxPoint(p) {}  // NOLINT: converting on purpose
};

class CSize : public wxSize {
public:
    CSize() = default;
    CSize(int w, int h) : wxSize(w, h) {}
    CSize(const wxSize& s) : wxSize(s) {}  // NOLINT: converting on purpose
};

// Origin and size; the client area handed to every view is one of these.
class CRect : public wxRect {
public:
    CRect() = default;
    CRect(int x, int y, int w, int h) : wxRect(x, y, w, h) {}
    CRect(const wxPoint& origin, const wxSize& size) : wxRect(origin, size) {}
    CRect(const wxRect& r) : wxRect(r) {}  // NOLINT: converting on purpose
};
