// The embedded images, their registry and the image cache.
#include "ui/ImageResources.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace {

CImageResourceManager* Cache() { return CSingleton<CImageResourceManager>::GetInstance(); }
CResourceImplementationManager* Registry() { return CSingleton<CResourceImplementationManager>::GetInstance(); }

// An image registered by a test, for the cases the program's two images do not cover.
class CTestImage : public CResourceImplementationBase {
public:
    CTestImage(uint32_t id, int kind, int width, int height, const unsigned char* rgb,
               const unsigned char* alpha = nullptr, bool mask = false, int red = 0, int green = 0, int blue = 0)
        : m_id(id), m_kind(kind), m_width(width), m_height(height), m_rgb(rgb), m_alpha(alpha), m_mask(mask),
          m_red(red), m_green(green), m_blue(blue) {}
    int GetImageKind() const override { return m_kind; }
    uint32_t GetResourceId() const override { return m_id; }
    int GetWidth() const override { return m_width; }
    int GetHeight() const override { return m_height; }
    const unsigned char* GetRgbData() const override { return m_rgb; }
    const unsigned char* GetAlphaData() const override { return m_alpha; }
    bool HasMask() const override { return m_mask; }
    int GetMaskRed() const override { return m_red; }
    int GetMaskGreen() const override { return m_green; }
    int GetMaskBlue() const override { return m_blue; }

private:
    uint32_t m_id;
    int m_kind, m_width, m_height;
    const unsigned char* m_rgb;
    const unsigned char* m_alpha;
    bool m_mask;
    int m_red, m_green, m_blue;
};

const unsigned char kTwoByTwo[] = {255, 0, 0, 0, 255, 0, 0, 0, 255, 10, 20, 30};
const unsigned char kTwoByTwoAlpha[] = {255, 128, 0, 64};

class ImageCache : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_NE(Cache(), nullptr);
        ASSERT_NE(Registry(), nullptr);
        Cache()->Clear();
    }
    void TearDown() override { Cache()->Clear(); }
};

TEST_F(ImageCache, ProgressFrameLoadsOnceAndIsHandedOutAgain) {
    CImageImplementationBase* frame = Cache()->Get(364, 3);
    ASSERT_NE(frame, nullptr);
    EXPECT_TRUE(frame->IsValid());
    EXPECT_EQ(frame->GetWidth(), 68);
    EXPECT_EQ(frame->GetHeight(), 80);
    const unsigned long finds = Registry()->GetFindCount();
    EXPECT_EQ(Cache()->Get(364, 3), frame);
    EXPECT_EQ(Cache()->Get(364, 0), frame) << "a cached image is returned whatever kind is asked";
    EXPECT_EQ(GetResourceImage(364, 3), frame);
    EXPECT_EQ(Registry()->GetFindCount(), finds);
}

TEST_F(ImageCache, MissingImageIsLookedForOnlyOnce) {
    const unsigned long before = Registry()->GetFindCount();
    EXPECT_EQ(Cache()->Get(336, 0), nullptr);
    EXPECT_EQ(Registry()->GetFindCount(), before + 1);
    EXPECT_TRUE(Cache()->IsCached(336));
    EXPECT_EQ(Cache()->Get(336, 0), nullptr);
    EXPECT_EQ(Cache()->Get(336, 3), nullptr);
    EXPECT_EQ(Registry()->GetFindCount(), before + 1);
}

TEST_F(ImageCache, KindMismatchIsACachedFailure) {
    EXPECT_EQ(Cache()->Get(153, 0), nullptr);
    EXPECT_TRUE(Cache()->IsCached(153));
    EXPECT_EQ(Cache()->Get(153, 3), nullptr);
    // After the cache is cleared the right kind loads.
    Cache()->Clear();
    CImageImplementationBase* lamp = Cache()->Get(153, 3);
    ASSERT_NE(lamp, nullptr);
    EXPECT_EQ(lamp->GetWidth(), 50);
    EXPECT_EQ(lamp->GetHeight(), 62);
}

TEST_F(ImageCache, KindsAboveThreeAreNeitherLoadedNorCached) {
    const unsigned long before = Registry()->GetFindCount();
    EXPECT_EQ(Cache()->Get(364, 4), nullptr);
    EXPECT_EQ(Cache()->Get(364, 1000), nullptr);
    EXPECT_FALSE(Cache()->IsCached(364));
    EXPECT_EQ(Registry()->GetFindCount(), before);
    EXPECT_NE(Cache()->Get(364, 3), nullptr);
}

TEST_F(ImageCache, MaskAndAlphaOfAnEmbeddedImageAreKept) {
    // Mask values are taken modulo 256.
    CTestImage image(90001, 3, 2, 2, kTwoByTwo, kTwoByTwoAlpha, true, 256 + 10, 20, 512 + 30);
    CImageImplementationBase* loaded = Cache()->Get(90001, 3);
    ASSERT_NE(loaded, nullptr);
    const wxImage img = loaded->GetImage();
    ASSERT_TRUE(img.IsOk());
    EXPECT_TRUE(img.HasAlpha());
    EXPECT_EQ(img.GetAlpha(0, 0), 255);
    EXPECT_EQ(img.GetAlpha(1, 1), 64);
    EXPECT_EQ(img.GetRed(0, 0), 255);
    EXPECT_EQ(img.GetGreen(1, 0), 255);
    EXPECT_EQ(img.GetBlue(0, 1), 255);
    // The pixel in the mask colour is see-through.
    EXPECT_TRUE(img.IsTransparent(1, 1) || (img.HasMask() && img.GetRed(1, 1) == img.GetMaskRed() &&
                                             img.GetGreen(1, 1) == img.GetMaskGreen() &&
                                             img.GetBlue(1, 1) == img.GetMaskBlue()));
    EXPECT_FALSE(img.IsTransparent(0, 0));
}

TEST_F(ImageCache, ImageWithoutMaskOrAlphaIsOpaque) {
    CTestImage image(90002, 2, 2, 2, kTwoByTwo);
    CImageImplementationBase* loaded = Cache()->Get(90002, 2);
    ASSERT_NE(loaded, nullptr);
    const wxImage img = loaded->GetImage();
    EXPECT_FALSE(img.HasMask());
    EXPECT_FALSE(img.HasAlpha());
    EXPECT_EQ(img.GetRed(1, 1), 10);
    EXPECT_EQ(img.GetGreen(1, 1), 20);
    EXPECT_EQ(img.GetBlue(1, 1), 30);
}

TEST(ImageRegistry, FindsTheFirstImageOfAnIdAndForgetsDestroyedOnes) {
    CResourceImplementationManager* registry = Registry();
    ASSERT_NE(registry, nullptr);
    EXPECT_EQ(registry->Find(90003), nullptr);
    auto* first = new CTestImage(90003, 3, 2, 2, kTwoByTwo);
    CTestImage second(90003, 1, 2, 2, kTwoByTwo);
    EXPECT_EQ(registry->Find(90003), first);
    delete first;
    EXPECT_EQ(registry->Find(90003), &second);
    CImageImplementationWX image;
    EXPECT_FALSE(image.Load(90003, 3));
    EXPECT_FALSE(image.IsValid());
    EXPECT_TRUE(image.Load(90003, 1));
    EXPECT_TRUE(image.IsValid());
}

// The program's images hold exactly the artwork in res/, pixel for pixel.
std::vector<unsigned char> ReadPpmPixels(const std::string& path, int& width, int& height) {
    std::ifstream in(path, std::ios::binary);
    std::string magic;
    int maxval = 0;
    in >> magic >> width >> height >> maxval;
    in.get();
    std::vector<unsigned char> data((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    if (magic != "P6" || maxval != 255) data.clear();
    return data;
}

std::string SourceRoot() {
    const std::string file = __FILE__;
    return file.substr(0, file.rfind("tests/ui/"));
}

TEST(EmbeddedImages, ProgramImagesMatchTheirArtwork) {
    struct {
        uint32_t id;
        const char* file;
        int width, height;
    } const images[] = {{364, "res/Lumet_Progressbar_LightBlue.ppm", 68, 80}, {153, "res/SelfTestGreen.ppm", 50, 62}};
    for (const auto& expected : images) {
        SCOPED_TRACE(expected.file);
        const CResourceImplementationBase* resource = Registry()->Find(expected.id);
        ASSERT_NE(resource, nullptr);
        EXPECT_EQ(resource->GetImageKind(), 3);
        EXPECT_EQ(resource->GetWidth(), expected.width);
        EXPECT_EQ(resource->GetHeight(), expected.height);
        EXPECT_EQ(resource->GetAlphaData(), nullptr);
        EXPECT_FALSE(resource->HasMask());
        EXPECT_EQ(resource->GetMaskRed() | resource->GetMaskGreen() | resource->GetMaskBlue(), 0);
        int width = 0, height = 0;
        const std::vector<unsigned char> art = ReadPpmPixels(SourceRoot() + expected.file, width, height);
        ASSERT_EQ(art.size(), size_t(expected.width) * expected.height * 3);
        EXPECT_EQ(std::vector<unsigned char>(resource->GetRgbData(), resource->GetRgbData() + art.size()), art);

        CImageImplementationWX image;
        ASSERT_TRUE(image.Load(expected.id, 3));
        const wxImage img = image.GetImage();
        EXPECT_NE(img.GetData(), resource->GetRgbData()) << "the kept image owns its pixels";
        EXPECT_EQ(std::vector<unsigned char>(img.GetData(), img.GetData() + art.size()), art);
    }
}

}  // namespace
