#include "ui/InstrumentFont.h"

#include "foundation/InstrumentEnums.h"
#include "foundation/InstrumentSettings.h"

namespace {
const char* const kFaces[12] = {
    "Arial",           "Linux Libertine", "WenQuanYi Micro Hei Mono", "Linux Libertine",
    "Linux Libertine", "Linux Libertine", "Linux Libertine",          "Linux Libertine",
    "Linux Libertine", "Linux Libertine", "Linux Libertine",          "Linux Libertine",
};
const int kEncodings[12] = {1, 5, 43, 59, 6, 29, 8, 9, 11, 27, 0, 0};

wxFontWeight ToolkitWeight(int weight) {
    switch (weight) {
        case eFontWeightBold: return wxFONTWEIGHT_BOLD;
        case eFontWeightLight: return wxFONTWEIGHT_LIGHT;
        default: return wxFONTWEIGHT_NORMAL;
    }
}
}  // namespace

CInstrumentFont::CInstrumentFont(int nominalSize, int weight)
    : CCollectorsItem<CInstrumentFont>(this), m_nominalSize(nominalSize), m_weight(weight) {
    Recreate();
}

CInstrumentFont::~CInstrumentFont() = default;

void CInstrumentFont::Recreate() { m_font = CreateToolkitFont(m_nominalSize, m_weight, GetSettingLanguage()); }

int CInstrumentFont::GetFaceIndex(int language) {
    switch (language) {
        case eLanguageJapanese: return 9;
        case eLanguageChinese: return 2;
        default: return 0;
    }
}

const char* CInstrumentFont::GetFaceName(int faceIndex) {
    return (faceIndex >= 0 && faceIndex < 12) ? kFaces[faceIndex] : kFaces[0];
}

int CInstrumentFont::GetEncoding(int faceIndex) {
    return (faceIndex >= 0 && faceIndex < 12) ? kEncodings[faceIndex] : kEncodings[0];
}

int CInstrumentFont::GetPointSize(int nominalSize, int language) {
    // Japanese glyphs come out larger, so large Japanese text is set smaller (Chinese is not).
    const int size = (language == eLanguageJapanese && nominalSize > 29) ? nominalSize - 5 : nominalSize;
    return (size * 20) / 31;
}

int CInstrumentFont::GetEffectiveWeight(int weight, int language) {
    return GetFaceIndex(language) == 0 ? weight : static_cast<int>(eFontWeightNormal);
}

wxFont CInstrumentFont::CreateToolkitFont(int nominalSize, int weight, int language) {
    const int face = GetFaceIndex(language);
    return wxFont(wxFontInfo(GetPointSize(nominalSize, language))
                      .Family(wxFONTFAMILY_DEFAULT)
                      .Style(wxFONTSTYLE_NORMAL)
                      .Weight(ToolkitWeight(GetEffectiveWeight(weight, language)))
                      .Underlined(false)
                      .FaceName(wxString::FromUTF8(GetFaceName(face)))
                      .Encoding(static_cast<wxFontEncoding>(GetEncoding(face))));
}

void CInstrumentFontCollection::Refresh() {
    ForEachLocked([](CInstrumentFont* font) { font->Recreate(); });
}

template <eFontTypes N>
CInstrumentFontType<N>::CInstrumentFontType() : m_font(NominalSize(), Weight()) {}

template <eFontTypes N>
const wxFont& CInstrumentFontType<N>::GetFont() {
    if (CInstrumentFontType<N>* type = CSingleton<CInstrumentFontType<N>>::GetInstance())
        return type->m_font.GetFont();
    return wxNullFont;
}

template class CInstrumentFontType<eFontTypeBody>;
template class CInstrumentFontType<eFontTypeStatusLine>;
template class CInstrumentFontType<eFontTypeHeaderTitle>;
template class CInstrumentFontType<eFontTypeSmallPrint>;

const wxFont& GetProgramFont(eFontTypes type) {
    switch (type) {
        case eFontTypeStatusLine: return CInstrumentFontType<eFontTypeStatusLine>::GetFont();
        case eFontTypeHeaderTitle: return CInstrumentFontType<eFontTypeHeaderTitle>::GetFont();
        case eFontTypeSmallPrint: return CInstrumentFontType<eFontTypeSmallPrint>::GetFont();
        case eFontTypeBody:
        default: return CInstrumentFontType<eFontTypeBody>::GetFont();
    }
}

void RefreshInstrumentFonts() {
    if (CInstrumentFontCollection* collection = CSingleton<CInstrumentFontCollection>::GetInstance())
        collection->Refresh();
}
