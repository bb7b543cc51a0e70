#include "foundation/Collectors.h"

#include <gtest/gtest.h>

namespace {
struct CWidget;
struct CWidgetList;
}  // namespace
template <>
struct CCollectorTraits<CWidget> {
    using Collector = CWidgetList;
};
namespace {
struct CWidgetList : CObjectCollectorHandler<CWidget> {};
struct CWidget : CCollectorsItem<CWidget> {
    CWidget() : CCollectorsItem<CWidget>(this) {}
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
    }
    EXPECT_EQ(list->Count(), before);
}
}  // namespace
