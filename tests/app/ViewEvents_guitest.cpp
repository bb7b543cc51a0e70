#include "app/InstrumentBase.h"
#include "app/InstrumentMain.h"
#include "app/MainFrame.h"
#include "tests/app/AppTestViews.h"
#include "tests/common/WxTestHelpers.h"

#include <gtest/gtest.h>
#include <wx/button.h>

#include <thread>

namespace {

using namespace vtxtest;

// The test views as windows of a borderless frame, the way the program has them.
class ViewEvents : public ::testing::Test {
protected:
    void SetUp() override {
        m_frame = new CMainFrame(wxEmptyString, wxPoint(0, 0), wxSize(640, 480), wxBORDER_NONE, false);
        m_frame->Show(true);
        m_rect = m_frame->GetClientRectangle();
        m_context = new CInstrumentBase(&m_font, &m_rect, m_frame);
        CInstrumentViewCreatorNeeds needs;
        needs.instrument = m_context;
        Manager().CreateAllViews(needs);
        m_first = g_firstTestViewItem.GetTypedView();
        m_second = g_secondTestViewItem.GetTypedView();
        ClearViewEntries();
    }
    void TearDown() override {
        Manager().DestroyAllViews();
        delete m_context;
        delete m_frame;  // without server view
        Pump(20);
    }

    // Waits for count entries of the kind, then gives them as ticks or parameters.
    static std::vector<uint32_t> Delivered(const std::string& what, size_t count, int view) {
        EXPECT_TRUE(WaitFor([&] { return GetViewEntries(what).size() >= count; }));
        Pump(30);
        std::vector<uint32_t> values;
        for (const SViewEntry& entry : GetViewEntries(what)) {
            EXPECT_TRUE(entry.onMainThread);
            EXPECT_EQ(entry.view, view);
            values.push_back(what == "tick" ? entry.id : entry.param);
        }
        return values;
    }

    wxFont m_font{8, wxFONTFAMILY_DEFAULT, wxFONTSTYLE_NORMAL, wxFONTWEIGHT_NORMAL};
    CRect m_rect;
    CMainFrame* m_frame = nullptr;
    CInstrumentBase* m_context = nullptr;
    CFirstTestView* m_first = nullptr;
    CSecondTestView* m_second = nullptr;
};

TEST_F(ViewEvents, TicksReachOnlyTheActiveViewOnTheGuiThreadInTheirMultiples) {
    SwitchToView(m_first);
    SwitchToView(m_second);
    EXPECT_FALSE(m_first->IsShown());
    EXPECT_TRUE(m_second->IsShown());

    SetTickCounter(0);
    std::thread ticker([] {
        for (int i = 0; i < 1200; ++i) PostDueTicks();
    });
    ticker.join();
    std::vector<uint32_t> expected;
    for (int call = 1; call <= 1200; ++call) {
        expected.push_back(eTick100ms);
        if (call % 10 == 0) expected.push_back(eTick1s);
        if (call % 600 == 0) expected.push_back(eTick1min);
        if (call % 1200 == 0) expected.push_back(eTick2min);
    }
    EXPECT_EQ(Delivered("tick", expected.size(), 2), expected);

    // From anywhere in the count, each 1200th call posts all four, in order.
    SetTickCounter(2 * 1200 - 1);
    ClearViewEntries();
    EXPECT_TRUE(PostDueTicks());
    EXPECT_EQ(Delivered("tick", 4, 2), (std::vector<uint32_t>{eTick100ms, eTick1s, eTick1min, eTick2min}));
}

TEST_F(ViewEvents, CommandsPostedFromAnotherThreadRunOnTheGuiThreadInOrder) {
    const uint32_t id = m_second->AddJournalCommand(true);
    std::vector<uint32_t> expected;
    std::thread poster([&] {
        for (uint32_t i = 0; i < 200; ++i) {
            PostViewCommand(m_second, static_cast<int32_t>(id), static_cast<int32_t>(i));
            expected.push_back(i);
        }
    });
    poster.join();
    EXPECT_EQ(Delivered("command", 200, 2), expected);
    EXPECT_FALSE(PostViewCommand(nullptr, static_cast<int32_t>(id), 0));

    // What is still queued on a view when it is destroyed is dropped with it.
    ClearViewEntries();
    for (int32_t i = 0; i < 5; ++i) PostViewCommand(m_second, static_cast<int32_t>(id), i);
    Manager().DestroyAllViews();
    Pump(50);
    EXPECT_TRUE(GetViewEntries("command").empty());
}

TEST_F(ViewEvents, OnlyButtonCheckBoxAndTextEventsGoToTheCommandOfTheirIdentifier) {
    const int handled = static_cast<int>(m_first->AddJournalCommand(true));
    const int declined = static_cast<int>(m_first->AddJournalCommand(false));
    const int empty = static_cast<int>(m_first->AddJournalCommand(true));
    m_first->AddCommand(empty, new CViewCommand<CFirstTestView>(m_first, nullptr));  // replaces it
    std::vector<int> fellThrough;
    auto note = [&](wxEvent& event) {
        fellThrough.push_back(event.GetId());
        event.Skip();
    };
    m_first->Bind(wxEVT_BUTTON, note);
    m_first->Bind(wxEVT_MENU, note);

    const struct {
        wxEventType type;
        int id;
    } sent[] = {{wxEVT_BUTTON, handled},  {wxEVT_CHECKBOX, handled},      {wxEVT_TEXT, handled},
                {wxEVT_BUTTON, declined}, {wxEVT_BUTTON, handled + 1000}, {wxEVT_BUTTON, empty},
                {wxEVT_MENU, handled}};
    for (int i = 0; i < 7; ++i) {
        wxCommandEvent event(sent[i].type, sent[i].id);
        event.SetInt(i);
        m_first->ProcessWindowEvent(event);
    }
    // A click on a control of the view climbs to the view's table.
    wxCommandEvent click(wxEVT_BUTTON, handled);
    click.SetEventObject(new wxButton(m_first, handled, "OK"));
    click.SetInt(9);
    static_cast<wxWindow*>(click.GetEventObject())->ProcessWindowEvent(click);

    EXPECT_EQ(fellThrough, (std::vector<int>{declined, handled + 1000, empty, handled}));
    EXPECT_EQ(Delivered("command", 5, 1), (std::vector<uint32_t>{0, 1, 2, 3, 9}));
}

}  // namespace
