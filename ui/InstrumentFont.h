#pragma once
// The program-wide fonts. A font is a nominal size and a weight; face, encoding and point size
// follow the display language, so Japanese and Chinese texts get a face that has their glyphs.
// Every font registers in one collection, which re-creates them all after a language change.
// GUI thread only.

#include <wx/font.h>

#include "foundation/Collectors.h"

// The font types of the program. Nominal sizes are for the 1024x768 (also 800x600) touch screen
// of the update page; point size = nominal * 20 / 31:
//   0 body text      26 normal  (16 pt)
//   1 status line    29 bold    (18 pt; just below the Japanese reduction, so it keeps its size)
//   4 header title   36 bold    (23 pt, Japanese 20 pt)
//   6 small print    19 normal  (12 pt)
enum eFontTypes {
    eFontTypeBody = 0,
    eFontTypeStatusLine = 1,
    eFontTypeHeaderTitle = 4,
    eFontTypeSmallPrint = 6,
};

// Font weights as the instrument framework counts them.
enum eInstrumentFontWeight { eFontWeightNormal = 90, eFontWeightLight = 91, eFontWeightBold = 92 };

class CInstrumentFont;
class CInstrumentFontCollection;
template <>
struct CCollectorTraits<CInstrumentFont> {
    using Collector = CInstrumentFontCollection;
};

class CInstrumentFont : public CCollectorsItem<CInstrumentFont> {
public:
    CInstrumentFont(int nominalSize, int weight);
    ~CInstrumentFont() override;

    const wxFont& GetFont() const { return m_font; }
    int GetNominalSize() const { return m_nominalSize; }
    int GetWeight() const { return m_weight; }
    // Builds the toolkit font again for the current display language.
    void Recreate();

    // The rules, for a language of eInstrumentLanguage.
    static int GetFaceIndex(int language);
    static const char* GetFaceName(int faceIndex);
    static int GetEncoding(int faceIndex);
    static int GetPointSize(int nominalSize, int language);
    // Bold and light exist only for the Latin face; the CJK faces are always normal.
    static int GetEffectiveWeight(int weight, int language);
    static wxFont CreateToolkitFont(int nominalSize, int weight, int language);

private:
    wxFont m_font;
    const int m_nominalSize;
    const int m_weight;
};

class CInstrumentFontCollection : public CObjectCollectorHandler<CInstrumentFont> {
public:
    // Re-creates every registered font, in registration order.
    void Refresh();
};

// Nominal size and weight of each font type (see eFontTypes).
template <eFontTypes N>
struct CInstrumentFontTypeTraits;
template <>
struct CInstrumentFontTypeTraits<eFontTypeBody> {
    static constexpr int kNominalSize = 26;
    static constexpr int kWeight = eFontWeightNormal;
};
template <>
struct CInstrumentFontTypeTraits<eFontTypeStatusLine> {
    static constexpr int kNominalSize = 29;
    static constexpr int kWeight = eFontWeightBold;
};
template <>
struct CInstrumentFontTypeTraits<eFontTypeHeaderTitle> {
    static constexpr int kNominalSize = 36;
    static constexpr int kWeight = eFontWeightBold;
};
template <>
struct CInstrumentFontTypeTraits<eFontTypeSmallPrint> {
    static constexpr int kNominalSize = 19;
    static constexpr int kWeight = eFontWeightNormal;
};

// One font per type, created on first use.
template <eFontTypes N>
class CInstrumentFontType {
public:
    CInstrumentFontType();
    virtual ~CInstrumentFontType() = default;
    CInstrumentFontType(const CInstrumentFontType&) = delete;
    CInstrumentFontType& operator=(const CInstrumentFontType&) = delete;

    static constexpr int NominalSize() { return CInstrumentFontTypeTraits<N>::kNominalSize; }
    static constexpr int Weight() { return CInstrumentFontTypeTraits<N>::kWeight; }
    // The type's font; a null-font reference once the singleton is gone at program exit.
    static const wxFont& GetFont();
    CInstrumentFont& GetInstrumentFont() { return m_font; }

private:
    CInstrumentFont m_font;
};

extern template class CInstrumentFontType<eFontTypeBody>;
extern template class CInstrumentFontType<eFontTypeStatusLine>;
extern template class CInstrumentFontType<eFontTypeHeaderTitle>;
extern template class CInstrumentFontType<eFontTypeSmallPrint>;

// The font of a type; an unknown type gives the body font.
const wxFont& GetProgramFont(eFontTypes type);
// After a language change, before controls are re-labelled.
void RefreshInstrumentFonts();
