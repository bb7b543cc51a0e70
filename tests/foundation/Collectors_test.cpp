#include "foundation/Collectors.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {
struct CWidget;
struct CWidgetList;
struct CLateItem;
struct CLateList;
}  // namespace
template <>
struct CCollectorTraits<CWidget> {
    using Collector = CWidgetList;
};
template <>
struct CCollectorTraits<CLateItem> {
    using Collector = CLateList;
};
namespace {
struct CWidgetList : CObjectCollectorHandler<CWidget> {};
struct CWidget : CCollectorsItem<CWidget> {
    CWidget() : CCollectorsItem<CWidget>(this) {}
};

// Used only by the exit test below, so that its singleton is created there and nowhere else.
struct CLateList : CObjectCollectorHandler<CLateItem> {};
struct CLateItem : CCollectorsItem<CLateItem> {
    CLateItem() : CCollectorsItem<CLateItem>(this) {}
};

TEST(Collectors, ItemsRegisterInConstructionOrderAndLeaveOnDestruction) {
    CWidgetList* list = CSingleton<CWidgetList>::GetInstance();
    ASSERT_NE(list, nullptr);
    const size_t before = list->Count();
    {
        CWidget a, b;
        auto items = list->GetItems();
        ASSERT_EQ(items.size(), before + 2);
        EXPECT_EQ(items[before], &a);
        EXPECT_EQ(items[before + 1], &b);
        EXPECT_TRUE(a.IsRegistered());
    }
    EXPECT_EQ(list->Count(), before);
}

TEST(Collectors, DuplicateRegistrationIsKeptAndUnregisterRemovesOnlyTheFirst) {
    CObjectCollector<int> collector;
    int a = 0, b = 0, c = 0;
    collector.Register(&a);
    collector.Register(&b);
    collector.Register(&a);
    collector.Register(&c);
    collector.Unregister(&a);
    EXPECT_EQ(collector.GetItems(), (std::vector<int*>{&b, &a, &c}));
    int absent = 0;
    collector.Unregister(&absent);
    EXPECT_EQ(collector.GetItems(), (std::vector<int*>{&b, &a, &c}));
    collector.Unregister(&a);
    collector.Unregister(&a);
    EXPECT_EQ(collector.GetItems(), (std::vector<int*>{&b, &c}));
}

TEST(Collectors, SnapshotIsIndependentOfLaterChanges) {
    CObjectCollector<int> collector;
    int a = 0, b = 0;
    collector.Register(&a);
    std::vector<int*> snapshot = collector.GetItems();
    collector.Register(&b);
    collector.Unregister(&a);
    EXPECT_EQ(snapshot, std::vector<int*>{&a});
    std::vector<int*> walked;
    collector.ForEachLocked([&walked](int* item) { walked.push_back(item); });
    EXPECT_EQ(walked, std::vector<int*>{&b});
}

TEST(Collectors, ConcurrentRegistrationLosesNothing) {
    CObjectCollector<int> collector;
    std::vector<int> values(4 * 500);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&collector, &values, t] {
            for (int i = 0; i < 500; ++i) collector.Register(&values[static_cast<size_t>(t * 500 + i)]);
            for (int i = 0; i < 500; i += 2) collector.Unregister(&values[static_cast<size_t>(t * 500 + i)]);
        });
    }
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(collector.Count(), 4u * 250u);
}

TEST(SafeVar, ReadModifyWriteUnderTheLockIsAtomic) {
    CSafeVar<int> counter(0);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&counter] {
            for (int i = 0; i < 1000; ++i) counter.Apply([](int& v) { ++v; });
        });
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(counter.Get(), 4000);
    counter.Set(-3);
    EXPECT_EQ(counter.Get(), -3);

    CSafeVar<std::string> text;
    EXPECT_EQ(text.Get(), "");
    text.Set("abc");
    EXPECT_EQ(text.Get(), "abc");
}

TEST(Singleton, FirstUseFromManyThreadsBuildsOneInstance) {
    struct CCounted {
        CCounted() { ++Constructions(); }
        virtual ~CCounted() = default;
        static std::atomic<int>& Constructions() {
            static std::atomic<int> count{0};
            return count;
        }
    };
    std::atomic<bool> go{false};
    std::vector<CCounted*> seen(8, nullptr);
    std::vector<std::thread> threads;
    for (size_t t = 0; t < seen.size(); ++t)
        threads.emplace_back([&go, &seen, t] {
            while (!go.load()) std::this_thread::yield();
            seen[t] = CSingleton<CCounted>::GetInstance();
        });
    go = true;
    for (auto& thread : threads) thread.join();
    ASSERT_NE(seen[0], nullptr);
    for (CCounted* p : seen) EXPECT_EQ(p, seen[0]);
    EXPECT_EQ(CCounted::Constructions().load(), 1);
    EXPECT_FALSE(CSingleton<CCounted>::IsDestroyed());
}

// Runs at exit after the CLateList singleton has been destroyed (registered before it existed).
CLateItem* g_earlyItem = nullptr;
void CheckAfterCollectorDestroyed() {
    int code = 0;
    if (!CSingleton<CLateList>::IsDestroyed()) code = 2;
    if (CSingleton<CLateList>::GetInstance() != nullptr) code = 3;
    {
        CLateItem late;
        if (late.IsRegistered()) code = 4;
    }
    delete g_earlyItem;  // registered while the list lived; must not reach into the dead list
    std::_Exit(code);
}

TEST(CollectorsDeathTest, CollectorDestroyedAtExitStaysGoneForLaterItems) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            std::atexit(CheckAfterCollectorDestroyed);
            g_earlyItem = new CLateItem;  // creates the list; it dies before the handler runs
            if (!g_earlyItem->IsRegistered()) std::_Exit(5);
            std::exit(0);
        },
        ::testing::ExitedWithCode(0), "");
}

struct CProbe {
    explicit CProbe(int* deaths) : m_deaths(deaths) {}
    virtual ~CProbe() { ++*m_deaths; }
    int* m_deaths;
};

TEST(NullInitializedPointer, SetNeverDeletesAndDeleteClears) {
    CNullInitializedPointer<CProbe, false, false> pointer;
    EXPECT_EQ(pointer.Get(), nullptr);
    pointer.Delete();  // empty: nothing happens
    int deaths = 0;
    CProbe* first = new CProbe(&deaths);
    CProbe* second = new CProbe(&deaths);
    pointer.Set(first);
    pointer.Set(second);
    EXPECT_EQ(deaths, 0);
    EXPECT_EQ(pointer.Get(), second);
    pointer.Delete();
    EXPECT_EQ(deaths, 1);
    EXPECT_EQ(pointer.Get(), nullptr);
    pointer.Delete();
    EXPECT_EQ(deaths, 1);
    delete first;
    {
        CNullInitializedPointer<CProbe, false, false> scoped;
        CProbe kept(&deaths);
        scoped.Set(&kept);
    }  // the holder's death leaves its target alone
    EXPECT_EQ(deaths, 3);
}
}  // namespace
