// Labelling the update page's real text fields, and re-labelling them after a language change.
#include "language/InstrumentLanguage.h"

#include <gtest/gtest.h>
#include <wx/frame.h>

#include <string>

#include "foundation/InstrumentSettings.h"
#include "language/LanguageTables.h"
#include "tests/common/WxTestHelpers.h"
#include "ui/InstrumentFont.h"
#include "ui/UIControls.h"

namespace {

// Remembers what the field last drew, to see a new label reach the screen.
class CPaintedField : public CTextField {
public:
    using CTextField::CTextField;
    std::string lastPainted;

protected:
    void PaintText(wxDC& dc, const wxRect& area, const std::string& text) override {
        lastPainted = text;
        CTextField::PaintText(dc, area, text);
    }
};

// Remembered labels are never forgotten, so the fields live as long as the test program runs
// RefreshAllTexts: the whole suite.
class InstrumentLanguageGui : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        s_language = GetSettingLanguage();
        SetSettingLanguage(eLanguageEnglish);
        RefreshInstrumentFonts();
        s_frame = new wxFrame(nullptr, wxID_ANY, "language", wxPoint(0, 0), wxSize(800, 600), wxBORDER_NONE);
        s_header = new CUIHeader(s_frame, CRect(0, 0, 800, 600));
        s_status = new CPaintedField(s_frame, wxID_ANY, CRect(40, 300, 720, 80));
        s_label = new CPaintedField(s_frame, wxID_ANY, CRect(40, 400, 720, 80), eFontTypeBody);
        s_frame->Show();
        vtxtest::Pump(20);
    }
    static void TearDownTestSuite() {
        SetSettingLanguage(s_language);
        RefreshInstrumentFonts();
        delete s_header;
        s_frame->Destroy();
        vtxtest::Pump(20);
    }

    static int s_language;
    static wxFrame* s_frame;
    static CUIHeader* s_header;
    static CPaintedField* s_status;
    static CPaintedField* s_label;
    const CInstrumentLanguage::CColonAdder m_colon;
};
int InstrumentLanguageGui::s_language = 0;
wxFrame* InstrumentLanguageGui::s_frame = nullptr;
CUIHeader* InstrumentLanguageGui::s_header = nullptr;
CPaintedField* InstrumentLanguageGui::s_status = nullptr;
CPaintedField* InstrumentLanguageGui::s_label = nullptr;

TEST_F(InstrumentLanguageGui, LanguageChangeRelabelsFieldsAndFonts) {
    CInstrumentLanguage& language = GetInstrumentLanguage();
    ASSERT_NE(s_header->GetTitleField(), nullptr);
    language.SetControlTextAndRemember(s_header->GetTitleField(), 417);
    language.SetControlTextAndRemember(s_status, 418);
    EXPECT_EQ(s_header->GetTitle(), "Software upgrade in progress");
    EXPECT_EQ(s_status->GetText(), "Copying files");
    EXPECT_TRUE(vtxtest::WaitFor([] { return s_status->lastPainted == "Copying files"; }));

    SetSettingLanguage(eLanguageJapanese);
    language.RefreshAllTexts();
    const std::string japanese = NS_LanguageTexts::TEXTS_JA[418];
    EXPECT_EQ(s_header->GetTitle(), NS_LanguageTexts::TEXTS_JA[417]);
    EXPECT_EQ(s_status->GetText(), japanese);
    // The fonts were re-created for the new language before the fields were told.
    EXPECT_EQ(GetProgramFont(eFontTypeStatusLine).GetFaceName(), "Linux Libertine");
    EXPECT_TRUE(vtxtest::WaitFor([&] { return s_status->lastPainted == japanese; })) << s_status->lastPainted;

    SetSettingLanguage(eLanguageGerman);
    language.RefreshAllTexts();
    EXPECT_EQ(s_header->GetTitle(), "Software upgrade in Arbeit");
    EXPECT_EQ(s_status->GetText(), "Kopiere Daten");
    EXPECT_EQ(GetProgramFont(eFontTypeStatusLine).GetFaceName(), "Arial");
    SetSettingLanguage(eLanguageEnglish);
    language.RefreshAllTexts();
}

TEST_F(InstrumentLanguageGui, ReapplyRestoresAFieldsLabel) {
    CInstrumentLanguage& language = GetInstrumentLanguage();
    language.SetControlTextAndRemember(s_label, 1, &m_colon);
    EXPECT_EQ(s_label->GetText(), "Language:");
    s_label->SetText("something else");
    EXPECT_TRUE(language.ReapplyText(s_label));
    EXPECT_EQ(s_label->GetText(), "Language:");
    EXPECT_TRUE(vtxtest::WaitFor([] { return s_label->lastPainted == "Language:"; })) << s_label->lastPainted;

    // A field that was only labelled, not remembered, cannot be re-applied.
    CPaintedField* unremembered = new CPaintedField(s_frame, wxID_ANY, CRect(40, 500, 720, 60));
    language.SetControlText(unremembered, 2);
    unremembered->SetText("changed");
    EXPECT_FALSE(language.ReapplyText(unremembered));
    EXPECT_EQ(unremembered->GetText(), "changed");
    unremembered->Destroy();
}

}  // namespace
