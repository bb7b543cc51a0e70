#include "foundation/ByteText.h"

#include <wx/strconv.h>

bool IsWellFormedUtf8(const char* data, size_t size) {
    const auto* p = reinterpret_cast<const unsigned char*>(data);
    const unsigned char* const end = p + size;
    while (p < end) {
        const unsigned char lead = *p++;
        if (lead < 0x80) continue;
        size_t more;
        // The second byte's range carries the rules against overlong forms, surrogates and code
        // points past U+10FFFF.
        unsigned char low = 0x80, high = 0xBF;
        if (lead >= 0xC2 && lead <= 0xDF) {
            more = 1;
        } else if (lead >= 0xE0 && lead <= 0xEF) {
            more = 2;
            if (lead == 0xE0) low = 0xA0;
            if (lead == 0xED) high = 0x9F;
        } else if (lead >= 0xF0 && lead <= 0xF4) {
            more = 3;
            if (lead == 0xF0) low = 0x90;
            if (lead == 0xF4) high = 0x8F;
        } else {
            return false;
        }
        if (static_cast<size_t>(end - p) < more) return false;
        if (*p < low || *p > high) return false;
        ++p;
        for (size_t i = 1; i < more; ++i, ++p)
            if (*p < 0x80 || *p > 0xBF) return false;
    }
    return true;
}

wxString TextFromBytes(const char* data, size_t size) {
    if (size == 0) return wxString();
    if (IsWellFormedUtf8(data, size)) return wxString::FromUTF8(data, size);
    return wxString(data, wxConvISO8859_1, size);
}

wxString TextCarryingBytes(const std::string& bytes) {
    wxString text;
    text.reserve(bytes.size());
    // As a code point: a char above 0x7F would go through the locale's decoding instead.
    for (const char byte : bytes) text += wxUniChar(static_cast<unsigned>(static_cast<unsigned char>(byte)));
    return text;
}

std::string BytesCarriedByText(const wxString& text) {
    std::string bytes;
    bytes.reserve(text.length());
    for (const wxUniChar c : text) {
        if (c.GetValue() > 0xFF) return text.utf8_string();
        bytes += static_cast<char>(c.GetValue());
    }
    return bytes;
}
