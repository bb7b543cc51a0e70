#pragma once
// Embedded images. Every bitmap of the user interface is compiled in as constant pixel arrays,
// one generated class per image (res/), each registering itself at static construction. The
// image manager turns an image number into a toolkit image on first use and caches the result,
// failures included.

#include <wx/image.h>

#include <atomic>
#include <cstdint>
#include <map>
#include <mutex>

#include "foundation/Collectors.h"
#include "ui/Geometry.h"

class wxDC;

class CResourceImplementationBase;
class CResourceImplementationManager;
template <>
struct CCollectorTraits<CResourceImplementationBase> {
    using Collector = CResourceImplementationManager;
};

// One embedded image; its answers are constants.
class CResourceImplementationBase : public CCollectorsItem<CResourceImplementationBase> {
public:
    CResourceImplementationBase() : CCollectorsItem<CResourceImplementationBase>(this) {}
    ~CResourceImplementationBase() override;

    virtual int GetImageKind() const = 0;
    virtual uint32_t GetResourceId() const = 0;
    virtual int GetWidth() const = 0;
    virtual int GetHeight() const = 0;
    // width * height * 3 bytes, rows top to bottom, each pixel red, green, blue.
    virtual const unsigned char* GetRgbData() const = 0;
    // width * height bytes, or null without an alpha channel.
    virtual const unsigned char* GetAlphaData() const = 0;
    virtual bool HasMask() const = 0;
    virtual int GetMaskRed() const = 0;
    virtual int GetMaskGreen() const = 0;
    virtual int GetMaskBlue() const = 0;
};

// The registry of embedded images, in registration order.
class CResourceImplementationManager : public CObjectCollectorHandler<CResourceImplementationBase> {
public:
    // The first registered image with that id, or null. Images are static objects that live
    // until exit, so the pointer stays good after the registry's lock is released.
    CResourceImplementationBase* Find(uint32_t resourceId) const;
    // How many look-ups were made in this run (a diagnostic of the cache's once-only search).
    unsigned long GetFindCount() const { return m_findCount.load(std::memory_order_relaxed); }

private:
    mutable std::atomic<unsigned long> m_findCount{0};
};

// An image the painters can use.
class CImageImplementationBase {
public:
    CImageImplementationBase() = default;
    virtual ~CImageImplementationBase();
    CImageImplementationBase(const CImageImplementationBase&) = delete;
    CImageImplementationBase& operator=(const CImageImplementationBase&) = delete;

    // Builds the image from the embedded image of that id and kind.
    virtual bool Load(uint32_t resourceId, int kind) = 0;
    virtual bool IsValid() const = 0;
    virtual int GetWidth() const = 0;
    virtual int GetHeight() const = 0;
    virtual wxImage GetImage() const = 0;
    // Draws the image into rect, scaled when the sizes differ (GUI thread).
    virtual void Draw(wxDC* dc, const CRect& rect) const = 0;
};

class CImageImplementationWX : public CImageImplementationBase {
public:
    CImageImplementationWX() = default;
    bool Load(uint32_t resourceId, int kind) override;
    bool IsValid() const override { return m_image.IsOk(); }
    int GetWidth() const override { return m_image.IsOk() ? m_image.GetWidth() : 0; }
    int GetHeight() const override { return m_image.IsOk() ? m_image.GetHeight() : 0; }
    wxImage GetImage() const override { return m_image; }
    void Draw(wxDC* dc, const CRect& rect) const override;

private:
    wxImage m_image;
};

// The image cache: id -> image (owned; null is a cached failure). Used on the GUI thread, since
// loading goes through toolkit bitmaps; the cache is locked before the registry, never the other
// way round.
class CImageResourceManager {
public:
    CImageResourceManager() = default;
    virtual ~CImageResourceManager();
    CImageResourceManager(const CImageResourceManager&) = delete;
    CImageResourceManager& operator=(const CImageResourceManager&) = delete;

    // The cached image of that id whatever kind is asked now; else loads it (kinds above 3 are
    // neither loaded nor cached). Null when the image is missing or of another kind.
    CImageImplementationBase* Get(uint32_t resourceId, int kind);
    // Forgets and deletes every cached image; pointers handed out before become invalid.
    void Clear();
    bool IsCached(uint32_t resourceId) const;

    enum { kHighestCachedKind = 3 };

private:
    mutable std::mutex m_mutex;
    std::map<uint32_t, CImageImplementationBase*> m_images;
};

// Shortcut through the cache singleton; null after the cache is gone at exit.
CImageImplementationBase* GetResourceImage(uint32_t resourceId, int kind);
