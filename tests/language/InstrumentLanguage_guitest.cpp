// The update page's heading drawn in every language with that language's font.
#include "language/InstrumentLanguage.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <wx/fontutil.h>

#include <string>

#include "foundation/InstrumentSettings.h"
#include "tests/common/WxTestHelpers.h"
#include "tests/ui/UiTestSupport.h"
#include "ui/InstrumentFont.h"
#include "ui/UIControls.h"
#include "ui/VisualComponents.h"

namespace {

// Characters of text that neither the font nor a fallback has a glyph for (boxes), -1 when that
// cannot be asked; Pango's functions are looked up at run time, so no headers of it are needed.
int MissingGlyphs(const wxFont& font, const std::string& text) {
    using P = void*;
    const auto fn = [](const char* name) { return dlsym(RTLD_DEFAULT, name); };
    const auto fontMap = reinterpret_cast<P (*)()>(fn("pango_cairo_font_map_get_default"));
    const auto newContext = reinterpret_cast<P (*)(P)>(fn("pango_font_map_create_context"));
    const auto newLayout = reinterpret_cast<P (*)(P)>(fn("pango_layout_new"));
    const auto setFont = reinterpret_cast<void (*)(P, P)>(fn("pango_layout_set_font_description"));
    const auto setText = reinterpret_cast<void (*)(P, const char*, int)>(fn("pango_layout_set_text"));
    const auto unknown = reinterpret_cast<int (*)(P)>(fn("pango_layout_get_unknown_glyphs_count"));
    const auto unref = reinterpret_cast<void (*)(P)>(fn("g_object_unref"));
    if (!fontMap || !newContext || !newLayout || !setFont || !setText || !unknown || !unref) return -1;
    P context = newContext(fontMap()), layout = newLayout(context);
    setFont(layout, font.GetNativeFontInfo()->description);
    setText(layout, text.c_str(), static_cast<int>(text.size()));
    const int missing = unknown(layout);
    unref(layout), unref(context);
    return missing;
}

TEST(InstrumentLanguageGui, UpgradeHeadingIsDrawnInEveryLanguageWithItsFont) {
    vtxtest::CTestFrame frame;
    const CColorRect grey(0xc8c8c8);
    ASSERT_EQ(MissingGlyphs(GetProgramFont(eFontTypeHeaderTitle), "a\xf4\x8f\xbf\xbd"), 1)
        << "U+10FFFD has none";
    for (int lang = 0; lang < 10; ++lang) {
        const std::string text = GetInstrumentLanguage().GetTextForLanguage(417, lang);
        SCOPED_TRACE(text);
        SetSettingLanguage(lang);
        RefreshInstrumentFonts();
        EXPECT_EQ(MissingGlyphs(GetProgramFont(eFontTypeHeaderTitle), text), 0);
        EXPECT_EQ(GetProgramFont(eFontTypeHeaderTitle).GetFaceName(),
                  lang == eLanguageJapanese  ? "Linux Libertine"
                  : lang == eLanguageChinese ? "WenQuanYi Micro Hei Mono"
                                             : "Arial");
        auto* field = new CTextField(frame, wxID_ANY, CRect(0, 0, 800, 80), eFontTypeHeaderTitle);
        field->SetBackGroundPainter(&grey);
        field->SetText(text);
        uitest::CCanvas canvas(800, 80);
        field->Render(*canvas.Dc());
        field->Destroy();
        const uitest::CInk ink = uitest::FindInk(canvas, 800, 80, uitest::Rgb{200, 200, 200});
        EXPECT_EQ(ink.lines, 1);
        EXPECT_TRUE(ink.black);
        // Every character takes room: none is blank or collapsed.
        EXPECT_GT(ink.right - ink.left, int(wxString::FromUTF8(text).length()) * 6);
        EXPECT_GT(ink.bottom - ink.top, 8);
    }
    SetSettingLanguage(eLanguageEnglish);
    RefreshInstrumentFonts();
}

}  // namespace
