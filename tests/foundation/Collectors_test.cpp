#include "foundation/Collectors.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace {

TEST(Collectors, DuplicateRegistrationIsKeptAndUnregisterRemovesOnlyTheFirst) {
    CObjectCollector<int> collector;
    int a = 0, b = 0, c = 0, absent = 0;
    for (int* item : {&a, &b, &a, &c}) collector.Register(item);
    collector.Unregister(&a);
    collector.Unregister(&absent);
    EXPECT_EQ(collector.GetItems(), (std::vector<int*>{&b, &a, &c}));
    collector.Unregister(&a);
    collector.Unregister(&a);
    EXPECT_EQ(collector.GetItems(), (std::vector<int*>{&b, &c}));
}

TEST(Collectors, ConcurrentRegistrationLosesNothing) {
    CObjectCollector<int> collector;
    std::vector<int> values(4 * 500);
    std::vector<std::thread> threads;
    for (size_t t = 0; t < 4; ++t) {
        threads.emplace_back([&collector, &values, t] {
            for (size_t i = 0; i < 500; ++i) collector.Register(&values[t * 500 + i]);
            for (size_t i = 0; i < 500; i += 2) collector.Unregister(&values[t * 500 + i]);
        });
    }
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(collector.Count(), 4u * 250u);
}

TEST(Singleton, FirstUseFromManyThreadsBuildsOneInstance) {
    static std::atomic<int> constructions{0};
    struct CCounted {
        CCounted() { ++constructions; }
        virtual ~CCounted() = default;
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
    EXPECT_EQ(constructions.load(), 1);
}

}  // namespace
