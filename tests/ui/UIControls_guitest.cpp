// The update page's text field and progress bar.
#include "ui/UIControls.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/common/WxTestHelpers.h"
#include "tests/ui/UiTestSupport.h"
#include "ui/VisualComponents.h"

using uitest::CCanvas;
using uitest::Rgb;

namespace {

const Rgb kGrey{200, 200, 200}, kBarFill{58, 138, 206};

class UIControls : public ::testing::Test {
protected:
    void TearDown() override { CInstrumentProgressBase::SetReportFunction(nullptr); }
    vtxtest::CTestFrame m_frame;
    const CColorRect m_grey{0xc8c8c8};
};

TEST_F(UIControls, TextFieldCentresItsTwoLinesInBlack) {
    auto* field = new CTextField(m_frame, wxID_ANY, CRect(0, 0, 600, 120));
    field->SetBackGroundPainter(&m_grey);
    field->SetText("Upgrade successful...\nRestarting application");
    CCanvas canvas(600, 120);
    field->Render(*canvas.Dc());
    field->Destroy();
    const uitest::CInk ink = uitest::FindInk(canvas, 600, 120, kGrey);
    EXPECT_EQ(ink.lines, 2);
    EXPECT_NEAR((ink.left + ink.right) / 2.0, 300.0, 4.0);
    EXPECT_NEAR((ink.top + ink.bottom) / 2.0, 60.0, 6.0);
    EXPECT_TRUE(ink.black) << "scheme 0 draws field text in black";
}

TEST(ProgressBar, FilledWidthIsProportionalAndClamped) {
    const int cases[][4] = {
        // value, range, width, filled
        {0, 100, 200, 0},  {50, 100, 200, 100}, {1, 3, 200, 66},  {150, 100, 200, 200},
        {-5, 100, 200, 0}, {5, 0, 200, 0},      {5, -10, 200, 0}, {INT_MAX / 2, INT_MAX, 1000, 499}};
    for (const auto& c : cases)
        EXPECT_EQ(CInstrumentProgressBase::FilledWidth(c[0], c[1], c[2]), c[3]) << c[0] << " of " << c[1];
}

std::vector<std::string> g_reports;

TEST_F(UIControls, ProgressBarFillsInProportionInsideItsFrameWithOrWithoutTheFrameImage) {
    auto* bar = new CInstrumentProgressBase(m_frame, wxID_ANY, CRect(0, 0, 400, 56));
    EXPECT_TRUE(bar->HasFrameImage());
    bar->SetBackGroundPainter(&m_grey);
    const wxRect inside = CInstrumentProgressBase::InsideRect(wxSize(400, 56));
    const int y = inside.y + inside.height * 2 / 3;
    bar->SetProgress(50, 100);
    CCanvas half(400, 56);
    bar->Render(*half.Dc());
    EXPECT_EQ(half.At(inside.x + inside.width / 4, y), kBarFill);
    EXPECT_NE(half.At(inside.x + inside.width * 3 / 4, y), kBarFill);
    EXPECT_NE(half.At(200, 0), kGrey) << "the frame is drawn along the top";
    EXPECT_NE(half.At(200, 55), kGrey) << "and along the bottom";

    // Without its image the bar still fills; the missing image is reported once, from the event loop.
    g_reports.clear();
    CInstrumentProgressBase::SetReportFunction([](const std::string& message) { g_reports.push_back(message); });
    auto* bare = new CInstrumentProgressBase(m_frame, wxID_ANY, CRect(0, 0, 400, 56), 336);
    new CInstrumentProgressBase(m_frame, wxID_ANY, CRect(0, 60, 400, 56), 336);
    EXPECT_FALSE(bare->HasFrameImage());
    bare->SetBackGroundPainter(&m_grey);
    EXPECT_TRUE(g_reports.empty());
    // A second report would come with the same round of events as the first.
    EXPECT_TRUE(vtxtest::WaitFor([] { return !g_reports.empty(); }));
    EXPECT_EQ(g_reports, std::vector<std::string>{"Could not load bitmap 336"});
    for (CInstrumentProgressBase* filled : {bar, bare}) {
        filled->SetProgress(100, 100);
        CCanvas full(400, 56);
        filled->Render(*full.Dc());
        EXPECT_EQ(full.At(inside.GetRight() - 5, y), kBarFill) << filled->HasFrameImage();
    }
}

}  // namespace
