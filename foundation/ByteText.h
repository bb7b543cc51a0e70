#pragma once
// Bytes from outside the program (settings files, file names, traces of malformed input) become
// toolkit text here. The toolkit's own UTF-8 reader lets through code points past U+10FFFF and
// UTF-16 surrogates, which its UTF-8 writer then refuses with an assertion; so the bytes are
// checked strictly first, and bytes that are no well-formed UTF-8 are taken as Latin-1 rather
// than lost.

#include <wx/string.h>

#include <cstddef>
#include <string>

// True when the bytes are well-formed UTF-8: shortest forms only, no surrogates, at most U+10FFFF.
bool IsWellFormedUtf8(const char* data, size_t size);

wxString TextFromBytes(const char* data, size_t size);
inline wxString TextFromBytes(const std::string& bytes) { return TextFromBytes(bytes.data(), bytes.size()); }

// Settings values travel through the toolkit's text type one character per byte, so that a value
// goes back to its file exactly as it came (a byte E9 stays E9). These two never fail or assert;
// a text holding characters past U+00FF did not come from a file and goes out as UTF-8.
wxString TextCarryingBytes(const std::string& bytes);
std::string BytesCarriedByText(const wxString& text);
