// The update page's controls: text field, progress bar, header and body.
#include "ui/UIControls.h"

#include <gtest/gtest.h>
#include <wx/frame.h>

#include <climits>
#include <string>
#include <thread>
#include <vector>

#include "tests/common/WxTestHelpers.h"
#include "tests/ui/UiTestSupport.h"
#include "ui/ImageResources.h"
#include "ui/VisualComponents.h"

using uitest::CCanvas;
using uitest::Rgb;

namespace {

const Rgb kGrey{200, 200, 200};

// Counts and remembers what the field draws.
class CRecordingField : public CTextField {
public:
    using CTextField::CTextField;
    int paints = 0;
    std::string lastPainted;

protected:
    void PaintText(wxDC& dc, const wxRect& area, const std::string& text) override {
        ++paints;
        lastPainted = text;
        CTextField::PaintText(dc, area, text);
    }
};

class UIControls : public ::testing::Test {
protected:
    void SetUp() override {
        m_frame = new wxFrame(nullptr, wxID_ANY, "controls", wxPoint(0, 0), wxSize(800, 600), wxBORDER_NONE);
        m_frame->Show();
        vtxtest::Pump(20);
        ASSERT_EQ(m_frame->GetClientSize(), wxSize(800, 600));
    }
    void TearDown() override {
        CInstrumentProgressBase::SetReportFunction(nullptr);
        m_frame->Destroy();
        vtxtest::Pump(20);
    }
    wxFrame* m_frame = nullptr;
    const CColorRect m_grey{0xc8c8c8};
};

// Rows and columns of a canvas region that hold a pixel other than the background.
struct CInk {
    std::vector<bool> rows, cols;
    int left = INT_MAX, right = -1;
};
CInk FindInk(CCanvas& canvas, int width, int height, const Rgb& background) {
    CInk ink;
    ink.rows.assign(height, false);
    ink.cols.assign(width, false);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            if (canvas.At(x, y) != background) {
                ink.rows[y] = ink.cols[x] = true;
                ink.left = std::min(ink.left, x);
                ink.right = std::max(ink.right, x);
            }
    return ink;
}
int Bands(const std::vector<bool>& rows) {
    int bands = 0;
    for (size_t i = 0; i < rows.size(); ++i)
        if (rows[i] && (i == 0 || !rows[i - 1])) ++bands;
    return bands;
}

TEST_F(UIControls, TextFieldDrawsItsTextCentredInTheTextColour) {
    auto* field = new CTextField(m_frame, wxID_ANY, CRect(0, 0, 400, 100));
    field->SetBackGroundPainter(&m_grey);
    EXPECT_EQ(field->GetFontType(), eFontTypeStatusLine);
    {
        CCanvas canvas(400, 100);
        field->Render(*canvas.Dc());
        EXPECT_TRUE(canvas.All(0, 0, 400, 100, kGrey)) << "no text, only the background";
    }
    field->SetText("Copying files...");
    EXPECT_EQ(field->GetText(), "Copying files...");
    CCanvas canvas(400, 100);
    field->Render(*canvas.Dc());
    const CInk ink = FindInk(canvas, 400, 100, kGrey);
    ASSERT_LE(ink.left, ink.right);
    EXPECT_NEAR((ink.left + ink.right) / 2.0, 200.0, 4.0);
    EXPECT_EQ(Bands(ink.rows), 1);
    bool black = false;
    for (int y = 0; y < 100 && !black; ++y)
        for (int x = ink.left; x <= ink.right && !black; ++x) black = canvas.At(x, y) == Rgb{0, 0, 0};
    EXPECT_TRUE(black) << "scheme 0 draws field text in black";
}

TEST_F(UIControls, TextWithALineFeedIsDrawnAsTwoCentredLines) {
    auto* field = new CTextField(m_frame, wxID_ANY, CRect(0, 100, 600, 120));
    field->SetBackGroundPainter(&m_grey);
    field->SetText("Upgrade successful...\nRestarting application");
    CCanvas canvas(600, 120);
    field->Render(*canvas.Dc());
    const CInk ink = FindInk(canvas, 600, 120, kGrey);
    EXPECT_EQ(Bands(ink.rows), 2);
    EXPECT_NEAR((ink.left + ink.right) / 2.0, 300.0, 4.0);
    int first = -1, last = -1;
    for (int y = 0; y < 120; ++y)
        if (ink.rows[y]) {
            if (first < 0) first = y;
            last = y;
        }
    EXPECT_NEAR((first + last) / 2.0, 60.0, 6.0) << "the block is centred vertically";
}

TEST_F(UIControls, TextFieldRepaintsOnlyWhenItsTextChanges) {
    auto* field = new CRecordingField(m_frame, wxID_ANY, CRect(0, 0, 300, 60));
    field->SetText("first");
    ASSERT_TRUE(vtxtest::WaitFor([&] { return field->lastPainted == "first"; }));
    vtxtest::Pump(100);
    const int paints = field->paints;
    field->SetText("first");
    vtxtest::Pump(150);
    EXPECT_EQ(field->paints, paints);

    std::thread worker([field] { field->SetText("from the worker"); });
    worker.join();
    EXPECT_TRUE(vtxtest::WaitFor([&] { return field->lastPainted == "from the worker"; }));
    EXPECT_GT(field->paints, paints);
}

TEST_F(UIControls, RepaintRequestedForADestroyedFieldIsDropped) {
    auto* field = new CTextField(m_frame, wxID_ANY, CRect(0, 0, 300, 60));
    std::thread worker([field] { field->SetText("late"); });
    worker.join();
    field->Destroy();
    vtxtest::Pump(50);  // the queued request finds no window and does nothing
    SUCCEED();
}

TEST_F(UIControls, TextFieldTakesLanguageTextsThroughItsInterface) {
    auto* field = new CTextField(m_frame, wxID_ANY, CRect(0, 0, 300, 60));
    CTextBearingControl* control = field;
    control->SetControlText("Fertig...");
    EXPECT_EQ(field->GetText(), "Fertig...");
}

TEST_F(UIControls, GuardedTextTellsWhetherItChanged) {
    CTextField::CTextFieldText text;
    EXPECT_FALSE(text.Change(""));
    EXPECT_TRUE(text.Change("a"));
    EXPECT_FALSE(text.Change("a"));
    EXPECT_EQ(text.Get(), "a");
}

TEST(ProgressBar, FilledWidthIsProportionalAndClamped) {
    EXPECT_EQ(CInstrumentProgressBase::FilledWidth(0, 100, 200), 0);
    EXPECT_EQ(CInstrumentProgressBase::FilledWidth(50, 100, 200), 100);
    EXPECT_EQ(CInstrumentProgressBase::FilledWidth(1, 3, 200), 66);
    EXPECT_EQ(CInstrumentProgressBase::FilledWidth(100, 100, 200), 200);
    EXPECT_EQ(CInstrumentProgressBase::FilledWidth(150, 100, 200), 200);
    EXPECT_EQ(CInstrumentProgressBase::FilledWidth(-5, 100, 200), 0);
    EXPECT_EQ(CInstrumentProgressBase::FilledWidth(5, 0, 200), 0);
    EXPECT_EQ(CInstrumentProgressBase::FilledWidth(5, -10, 200), 0);
    EXPECT_EQ(CInstrumentProgressBase::FilledWidth(INT_MAX / 2, INT_MAX, 1000), 499);
}

TEST_F(UIControls, ProgressBarStartsAtZeroOfHundredAndKeepsWhatIsSet) {
    auto* bar = new CInstrumentProgressBase(m_frame, wxID_ANY, CRect(10, 10, 400, 56));
    EXPECT_TRUE(bar->HasFrameImage());
    EXPECT_EQ(bar->GetRange(), 100);
    EXPECT_EQ(bar->GetValue(), 0);
    std::thread worker([bar] {
        bar->SetRange(101);
        bar->SetValue(7);
    });
    worker.join();
    EXPECT_EQ(bar->GetRange(), 101);
    EXPECT_EQ(bar->GetValue(), 7);
}

TEST_F(UIControls, ProgressBarFillsInProportionInsideTheFrame) {
    auto* bar = new CInstrumentProgressBase(m_frame, wxID_ANY, CRect(0, 0, 400, 56));
    bar->SetBackGroundPainter(&m_grey);
    const wxRect inside = CInstrumentProgressBase::InsideRect(wxSize(400, 56));
    EXPECT_GT(inside.x, 0);
    EXPECT_LT(inside.GetRight(), 399);
    const int y = inside.y + inside.height * 2 / 3;
    const Rgb fill{58, 138, 206};
    bar->SetValue(50);
    CCanvas half(400, 56);
    bar->Render(*half.Dc());
    EXPECT_EQ(half.At(inside.x + inside.width / 4, y), fill);
    EXPECT_NE(half.At(inside.x + inside.width * 3 / 4, y), fill);
    EXPECT_NE(half.At(200, 0), kGrey) << "the frame is drawn along the top";
    EXPECT_NE(half.At(200, 55), kGrey) << "and along the bottom";

    bar->SetValue(100);
    CCanvas full(400, 56);
    bar->Render(*full.Dc());
    EXPECT_EQ(full.At(inside.x + inside.width * 3 / 4, y), fill);
    EXPECT_EQ(full.At(inside.GetRight() - 5, y), fill);
}

TEST_F(UIControls, ProgressBarFrameKeepsItsCornersWhenStretched) {
    // The frame's corner pixels sit at the bar's corners whatever its size.
    const wxImage art = GetResourceImage(364, 3)->GetImage();
    for (const wxSize size : {wxSize(600, 40), wxSize(120, 80)}) {
        auto* bar = new CInstrumentProgressBase(m_frame, wxID_ANY, CRect(wxPoint(0, 0), size));
        bar->SetBackGroundPainter(&m_grey);
        CCanvas canvas(size.x, size.y);
        bar->Render(*canvas.Dc());
        const Rgb artCorner{art.GetRed(3, 3), art.GetGreen(3, 3), art.GetBlue(3, 3)};
        EXPECT_EQ(canvas.At(3, 3), artCorner);
        const Rgb artOther{art.GetRed(64, 76), art.GetGreen(64, 76), art.GetBlue(64, 76)};
        EXPECT_EQ(canvas.At(size.x - 4, size.y - 4), artOther);
        bar->Destroy();
    }
}

std::vector<std::string> g_reports;
void RecordReport(const std::string& message) { g_reports.push_back(message); }

TEST_F(UIControls, MissingFrameImageIsReportedOnceAndTheBarStillWorks) {
    g_reports.clear();
    CInstrumentProgressBase::SetReportFunction(&RecordReport);
    auto* bar = new CInstrumentProgressBase(m_frame, wxID_ANY, CRect(0, 0, 200, 40), 336);
    auto* second = new CInstrumentProgressBase(m_frame, wxID_ANY, CRect(0, 50, 200, 40), 336);
    EXPECT_FALSE(bar->HasFrameImage());
    EXPECT_TRUE(g_reports.empty()) << "reported from the event loop, not during construction";
    vtxtest::Pump(50);
    ASSERT_EQ(g_reports.size(), 1u);
    EXPECT_EQ(g_reports[0], "Could not load bitmap 336");
    second->SetValue(100);
    second->SetBackGroundPainter(&m_grey);
    CCanvas canvas(200, 40);
    second->Render(*canvas.Dc());
    const wxRect inside = CInstrumentProgressBase::InsideRect(wxSize(200, 40));
    EXPECT_EQ(canvas.At(100, inside.y + inside.height * 2 / 3), (Rgb{58, 138, 206}));
}

TEST_F(UIControls, HeaderShowsTheTitleAcrossTheTopOfTheView) {
    const size_t children = m_frame->GetChildren().size();
    {
        CUIHeader header(m_frame, CRect(0, 0, 800, 600));
        EXPECT_EQ(header.GetHeaderRect(), CRect(0, 0, 800, CUIHeader::kHeaderHeight));
        CTextField* title = header.GetTitleField();
        ASSERT_NE(title, nullptr);
        EXPECT_EQ(title->GetParent(), m_frame);
        EXPECT_EQ(title->GetRect(), wxRect(0, 0, 800, CUIHeader::kHeaderHeight));
        EXPECT_EQ(title->GetFontType(), eFontTypeHeaderTitle);
        header.SetTitle("Software upgrade in progress...");
        EXPECT_EQ(header.GetTitle(), "Software upgrade in progress...");
        static_cast<CTextBearingControl*>(title)->SetControlText("Mise a jour...");
        EXPECT_EQ(header.GetTitle(), "Mise a jour...");

        title->SetBackGroundPainter(&m_grey);
        CCanvas canvas(800, CUIHeader::kHeaderHeight);
        title->Render(*canvas.Dc());
        const CInk ink = FindInk(canvas, 800, CUIHeader::kHeaderHeight - 4, kGrey);
        EXPECT_GE(ink.left, CUIHeader::kTitleMargin);
        EXPECT_LT(ink.left, CUIHeader::kTitleMargin + 8) << "the title is left-aligned";
        EXPECT_EQ(canvas.At(400, CUIHeader::kHeaderHeight - 2), uitest::FromValue(GetCurrentColor(eColorSeparator)));
        EXPECT_EQ(m_frame->GetChildren().size(), children + 1);
    }
    EXPECT_EQ(m_frame->GetChildren().size(), children) << "the header takes its title along";
}

TEST_F(UIControls, HeaderOutlivingItsWindowIsHarmless) {
    auto* parent = new wxWindow(m_frame, wxID_ANY, wxPoint(0, 0), wxSize(400, 300));
    CUIHeader header(parent, CRect(0, 0, 400, 300));
    ASSERT_NE(header.GetTitleField(), nullptr);
    parent->Destroy();
    EXPECT_EQ(header.GetTitleField(), nullptr);
    header.SetTitle("nobody sees this");
    EXPECT_EQ(header.GetTitle(), "");
}

TEST_F(UIControls, BodyIsTheViewBelowTheHeaderWithRoomForBarAndStatusLine) {
    const CUIBase body(m_frame, CRect(0, 0, 800, 600));
    EXPECT_EQ(body.GetBodyParent(), m_frame);
    const CRect rect = body.GetBodyRect();
    EXPECT_EQ(rect, CRect(0, CUIHeader::kHeaderHeight, 800, 600 - CUIHeader::kHeaderHeight));
    const CRect bar = body.GetProgressBarRect();
    const CRect status = body.GetStatusLineRect();
    EXPECT_TRUE(rect.Contains(bar));
    EXPECT_TRUE(rect.Contains(status));
    EXPECT_FALSE(bar.Intersects(status));
    EXPECT_GT(bar.height, 20);
    EXPECT_GE(status.height, 80) << "two lines of the status font";
    EXPECT_NEAR(bar.x + bar.width / 2, 400, 1);

    const CUIBase small(m_frame, CRect(0, 0, 1024, 768));
    EXPECT_EQ(small.GetBodyRect().height, 768 - CUIHeader::kHeaderHeight);
    EXPECT_TRUE(small.GetBodyRect().Contains(small.GetStatusLineRect()));
}

TEST_F(UIControls, ControlsBlendWithTheParentsBackGround) {
    // A field lower down shows the lower part of the parent's gradient.
    // The field keeps the painter and may repaint after this test: the painter must outlive it.
    static const CColorRectGradient gradient(eGradientVertical, 0x000000, 0x0000ff);
    auto* field = new CTextField(m_frame, wxID_ANY, CRect(0, 300, 50, 10));
    field->SetBackGroundPainter(&gradient);
    CCanvas canvas(50, 10);
    field->Render(*canvas.Dc());
    const CColorGradientLine red(0, 255, 600);
    EXPECT_EQ(canvas.At(10, 0).r, red.ValueAt(300));
    EXPECT_EQ(canvas.At(10, 9).r, red.ValueAt(309));
}

}  // namespace
