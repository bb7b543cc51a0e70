// The embedded images, their registry and the image cache.
#include "ui/ImageResources.h"

#include <gtest/gtest.h>

namespace {

CImageResourceManager* Cache() { return CSingleton<CImageResourceManager>::GetInstance(); }
unsigned long Finds() { return CSingleton<CResourceImplementationManager>::GetInstance()->GetFindCount(); }

TEST(ImageCache, ProgressFrameLoadsOnceAndIsHandedOutAgain) {
    Cache()->Clear();
    CImageImplementationBase* frame = Cache()->Get(364, 3);
    ASSERT_NE(frame, nullptr);
    EXPECT_TRUE(frame->IsValid());
    const unsigned long finds = Finds();
    EXPECT_EQ(Cache()->Get(364, 3), frame);
    EXPECT_EQ(Cache()->Get(364, 0), frame) << "a cached image is returned whatever kind is asked";
    EXPECT_EQ(GetResourceImage(364, 3), frame);
    EXPECT_EQ(Finds(), finds);
}

TEST(ImageCache, MissingImageIsLookedForOnlyOnce) {
    Cache()->Clear();
    const unsigned long before = Finds();
    EXPECT_EQ(Cache()->Get(336, 0), nullptr);
    EXPECT_TRUE(Cache()->IsCached(336));
    EXPECT_EQ(Cache()->Get(336, 3), nullptr);
    EXPECT_EQ(Finds(), before + 1);
}

}  // namespace
