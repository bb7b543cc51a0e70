// A worker sets the status line and the bar as fast as it can while the GUI thread repaints them:
// no crash, no torn text, no data race under ThreadSanitizer, and the last values shown.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "tests/common/WxTestHelpers.h"
#include "ui/UIControls.h"

namespace {

// clang-format off
const std::vector<std::string> kTexts = {"Copying files...", "", "Upgrade successful...\nRestarting application",
                                         std::string(300, 'x'), "\xe8\xbd\xaf\xe4\xbb\xb6...", "Done..."};
// clang-format on
bool Known(const std::string& text) { return std::find(kTexts.begin(), kTexts.end(), text) != kTexts.end(); }

class CCheckingField : public CTextField {
public:
    using CTextField::CTextField;
    int paints = 0, torn = 0;
    std::string lastPainted;

protected:
    void PaintText(wxDC& dc, const wxRect& area, const std::string& text) override {
        ++paints;
        torn += !Known(text);
        lastPainted = text;
        CTextField::PaintText(dc, area, text);
    }
};

TEST(ControlsStress, WorkerSetsWhileTheGuiThreadPaints) {
    vtxtest::CTestFrame frame;
    auto* field = new CCheckingField(frame, wxID_ANY, CRect(20, 300, 760, 110));
    auto* bar = new CInstrumentProgressBase(frame, wxID_ANY, CRect(100, 200, 600, 56));

    // On screen before the worker starts, or a fast worker ends before anything was painted.
    ASSERT_TRUE(vtxtest::WaitFor([&] {
        field->Refresh(false);
        return field->paints > 0;
    }));

    constexpr int kRounds = 5000;
    std::atomic<bool> done{false};
    std::thread worker([&] {
        for (int i = 0; i < kRounds; ++i) {
            field->SetText(kTexts[i % kTexts.size()]);
            bar->SetProgress(i % 101, 100 + i % 3);
        }
        done.store(true);
    });
    int tornHeld = 0;
    while (!done.load()) {
        tornHeld += !Known(field->GetText());
        EXPECT_TRUE(bar->GetValue() >= 0 && bar->GetValue() <= 100);
        for (wxWindow* window : std::initializer_list<wxWindow*>{field, bar}) {
            window->Refresh(false);
            window->Update();
        }
        vtxtest::Pump(1);
    }
    worker.join();

    const std::string last = kTexts[(kRounds - 1) % kTexts.size()];
    EXPECT_EQ(field->GetText(), last);
    EXPECT_EQ(bar->GetValue(), (kRounds - 1) % 101);
    EXPECT_EQ(bar->GetRange(), 100 + (kRounds - 1) % 3);
    // The last change is always followed by a repaint that shows it.
    EXPECT_TRUE(vtxtest::WaitFor([&] { return field->lastPainted == last; }));
    EXPECT_EQ(tornHeld, 0);
    EXPECT_EQ(field->torn, 0);
    EXPECT_GT(field->paints, 0);

    // The same text again costs no repaint.
    vtxtest::Pump(100);
    const int paints = field->paints;
    std::thread([field, last] { field->SetText(last); }).join();
    vtxtest::Pump(100);
    EXPECT_EQ(field->paints, paints);
    // A repaint asked for from another thread, for a field destroyed before it is served, is dropped.
    std::thread([field] { field->SetText("Done..."); }).join();
}

}  // namespace
