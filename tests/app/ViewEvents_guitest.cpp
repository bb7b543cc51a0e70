// The ticks of the main controller, posted from another thread, reach the active view as command
// events, on the GUI thread, in their multiples.
#include "app/InstrumentBase.h"
#include "app/InstrumentMain.h"
#include "app/MainFrame.h"
#include "tests/app/AppTestViews.h"
#include "tests/common/WxTestHelpers.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

using namespace vtxtest;

// Waits for count ticks, then gives them; all of them reached view 2 on the GUI thread.
std::vector<uint32_t> Delivered(size_t count) {
    EXPECT_TRUE(WaitFor([&] { return GetViewEntries("tick").size() >= count; }));
    Pump(30);
    std::vector<uint32_t> values;
    for (const SViewEntry& entry : GetViewEntries("tick")) {
        EXPECT_TRUE(entry.onMainThread && entry.view == 2);
        values.push_back(entry.id);
    }
    return values;
}

TEST(ViewEvents, TicksReachOnlyTheActiveViewOnTheGuiThreadInTheirMultiples) {
    // The test views as windows of a borderless frame, the way the program has them.
    auto* frame = new CMainFrame(wxEmptyString, wxPoint(0, 0), wxSize(640, 480), wxBORDER_NONE, false);
    frame->Show(true);
    CRect rect = frame->GetClientRectangle();
    wxFont font(8, wxFONTFAMILY_DEFAULT, wxFONTSTYLE_NORMAL, wxFONTWEIGHT_NORMAL);
    auto* context = new CInstrumentBase(&font, &rect, frame);
    CInstrumentViewCreatorNeeds needs;
    needs.instrument = context;
    Manager().CreateAllViews(needs);
    SwitchToView(g_firstTestViewItem.GetTypedView());
    SwitchToView(g_secondTestViewItem.GetTypedView());
    EXPECT_FALSE(g_firstTestViewItem.GetTypedView()->IsShown());
    EXPECT_TRUE(g_secondTestViewItem.GetTypedView()->IsShown());
    ClearViewEntries();

    SetTickCounter(0);
    std::thread([] {
        for (int i = 0; i < 1200; ++i) PostDueTicks();
    }).join();
    std::vector<uint32_t> expected;
    for (int call = 1; call <= 1200; ++call) {
        expected.push_back(eTick100ms);
        if (call % 10 == 0) expected.push_back(eTick1s);
        if (call % 600 == 0) expected.push_back(eTick1min);
        if (call % 1200 == 0) expected.push_back(eTick2min);
    }
    EXPECT_EQ(Delivered(expected.size()), expected);

    // From anywhere in the count, each 1200th call posts all four, in order.
    SetTickCounter(2 * 1200 - 1);
    ClearViewEntries();
    EXPECT_TRUE(PostDueTicks());
    EXPECT_EQ(Delivered(4), (std::vector<uint32_t>{eTick100ms, eTick1s, eTick1min, eTick2min}));
    EXPECT_FALSE(PostViewCommand(nullptr, 0, 0));

    // Only button, check-box and text events with an identifier of the table reach a command.
    ClearViewEntries();
    CSecondTestView* view = g_secondTestViewItem.GetTypedView();
    for (const wxEventType type : {wxEVT_BUTTON, wxEVT_CHECKBOX, wxEVT_TEXT, wxEVT_MENU}) {
        for (const int id : {static_cast<int>(view->GetTickId(eTick1s)), 0}) {
            wxCommandEvent event(type, id);
            view->ProcessWindowEvent(event);
        }
    }
    EXPECT_EQ(GetViewEntries("tick").size(), 3u);

    Manager().DestroyAllViews();
    delete context;
    delete frame;  // without server view
    Pump(20);
}

}  // namespace
