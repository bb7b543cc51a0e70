#include "app/InstrumentMain.h"
#include "tests/app/AppTestViews.h"

#include <gtest/gtest.h>

namespace {

using namespace vtxtest;
using Journal = std::vector<std::pair<int, std::string>>;

Journal Recorded() {
    Journal out;
    for (const SViewEntry& entry : GetViewEntries()) out.emplace_back(entry.view, entry.what);
    return out;
}

// The test views without windows: the needs carry no drawing context.
class ViewRegistry : public ::testing::Test {
protected:
    void SetUp() override {
        Manager().DestroyAllViews();
        ClearViewEntries();
    }
    void TearDown() override { Manager().DestroyAllViews(); }

    CInstrumentViewCreatorNeeds m_needs;
};

TEST_F(ViewRegistry, CreatesEachRegisteredViewOnceAndDestroysOnlyWhatExists) {
    Manager().DestroyAllViews();  // none created yet
    EXPECT_TRUE(Recorded().empty());

    CViewFunctor functor;
    {
        TInstrumentViewItem<CSecondTestView> extra(&functor);  // registered third, for a while
        Manager().CreateAllViews(m_needs);
        CInstrumentViewInterface* first = g_firstTestViewItem.GetView();
        Manager().CreateAllViews(m_needs);
        EXPECT_EQ(Recorded(), (Journal{{1, "create"}, {2, "create"}, {2, "create"}}));
        EXPECT_EQ(g_firstTestViewItem.GetView(), first);
        EXPECT_EQ(functor.GetTarget(), extra.GetView());
        Manager().DestroyAllViews();
        EXPECT_EQ(functor.GetTarget(), nullptr);  // never aimed at a view that is gone
    }
    ClearViewEntries();
    Manager().CreateAllViews(m_needs);
    Manager().DestroyAllViews();
    EXPECT_EQ(Recorded(), (Journal{{1, "create"}, {2, "create"}, {1, "destroy"}, {2, "destroy"}}));
    EXPECT_EQ(Manager().GetCreators().size(), 2u);  // the third one left with its item
}

TEST_F(ViewRegistry, SwitchHidesTheOldViewThenWaitsThenShowsTheTarget) {
    Manager().CreateAllViews(m_needs);
    CInstrumentViewInterface* first = g_firstTestViewItem.GetView();
    CViewFunctor toSecond;
    toSecond.SetTarget(g_secondTestViewItem.GetView());
    ClearViewEntries();

    const auto start = std::chrono::steady_clock::now();
    toSecond.Execute();
    toSecond.Execute();  // the active view again
    SwitchToView(first);
    SwitchToView(nullptr);
    // clang-format off
    EXPECT_EQ(Recorded(), (Journal{{2, "activate"}, {2, "deactivate"}, {2, "activate"}, {2, "deactivate"},
                                   {1, "activate"}, {1, "deactivate"}}));
    // clang-format on
    // Every switch pauses at least 100 ms between hiding the old view and showing the new one.
    const auto entries = GetViewEntries();
    EXPECT_GE(entries[0].at - start, std::chrono::milliseconds(100));
    for (size_t i = 1; i + 1 < entries.size(); i += 2)
        EXPECT_GE(entries[i + 1].at - entries[i].at, std::chrono::milliseconds(100)) << i;

    // No view active: ticks are swallowed and not counted.
    SetTickCounter(41);
    EXPECT_FALSE(PostDueTicks());
    EXPECT_EQ(GetTickCounter(), 41);
    // Nor does a destroyed view stay active.
    SwitchToView(first);
    Manager().DestroyAllViews();
    EXPECT_EQ(GetActiveView(), nullptr);
}

}  // namespace
