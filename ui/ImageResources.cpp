#include "ui/ImageResources.h"

#include <wx/bitmap.h>
#include <wx/dc.h>
#include <wx/dcmemory.h>

#include "foundation/DebugTrace.h"

CResourceImplementationBase::~CResourceImplementationBase() = default;

CResourceImplementationBase* CResourceImplementationManager::Find(uint32_t resourceId) const {
    m_findCount.fetch_add(1, std::memory_order_relaxed);
    CResourceImplementationBase* found = nullptr;
    ForEachLocked([&](CResourceImplementationBase* image) {
        if (!found && image->GetResourceId() == resourceId) found = image;
    });
    return found;
}

CImageImplementationBase::~CImageImplementationBase() = default;

bool CImageImplementationWX::Load(uint32_t resourceId, int kind) {
    m_image = wxImage();
    CResourceImplementationManager* registry = CSingleton<CResourceImplementationManager>::GetInstance();
    CResourceImplementationBase* resource = registry ? registry->Find(resourceId) : nullptr;
    if (!resource) {
        VtxDebugTrace("ImageResources", "Load", "no embedded image %u", resourceId);
        return false;
    }
    if (resource->GetImageKind() != kind) {
        VtxDebugTrace("ImageResources", "Load", "image %u is of kind %d, not %d", resourceId,
                      resource->GetImageKind(), kind);
        return false;
    }
    const int width = resource->GetWidth();
    const int height = resource->GetHeight();
    const unsigned char* rgb = resource->GetRgbData();
    if (width < 1 || height < 1 || !rgb) return false;

    // The toolkit wants writable pointers, but with static data it neither writes nor frees them:
    // the constant arrays are used in place.
    wxImage image;
    image.SetData(const_cast<unsigned char*>(rgb), width, height, true);
    if (resource->HasMask()) {
        image.SetMaskColour(static_cast<unsigned char>(static_cast<unsigned>(resource->GetMaskRed()) % 256),
                            static_cast<unsigned char>(static_cast<unsigned>(resource->GetMaskGreen()) % 256),
                            static_cast<unsigned char>(static_cast<unsigned>(resource->GetMaskBlue()) % 256));
    }
    if (const unsigned char* alpha = resource->GetAlphaData())
        image.SetAlpha(const_cast<unsigned char*>(alpha), true);

    // Through a screen-depth bitmap, so that the kept image looks as it will on screen; the kept
    // image owns its own pixels.
    const wxBitmap bitmap(image, wxBITMAP_SCREEN_DEPTH);
    if (bitmap.IsOk()) m_image = bitmap.ConvertToImage();
    return m_image.IsOk();
}

void CImageImplementationWX::Draw(wxDC* dc, const CRect& rect) const {
    if (!dc || !dc->IsOk() || !m_image.IsOk() || rect.width < 1 || rect.height < 1) return;
    const wxImage scaled = (rect.width == m_image.GetWidth() && rect.height == m_image.GetHeight())
                               ? m_image
                               : m_image.Scale(rect.width, rect.height, wxIMAGE_QUALITY_NORMAL);
    const wxBitmap bitmap(scaled, wxBITMAP_SCREEN_DEPTH);
    if (!bitmap.IsOk()) return;
    dc->DrawBitmap(bitmap, rect.x, rect.y, true);
}

CImageResourceManager::~CImageResourceManager() { Clear(); }

CImageImplementationBase* CImageResourceManager::Get(uint32_t resourceId, int kind) {
    std::lock_guard<std::mutex> lock(m_mutex);
    auto it = m_images.find(resourceId);
    if (it != m_images.end()) return it->second;
    if (kind > kHighestCachedKind) return nullptr;
    // The registry's lock is taken inside the load, under the cache's lock: always in this order.
    CImageImplementationBase* image = new CImageImplementationWX;
    if (!image->Load(resourceId, kind)) {
        delete image;
        image = nullptr;
    }
    m_images.emplace(resourceId, image);
    return image;
}

void CImageResourceManager::Clear() {
    std::map<uint32_t, CImageImplementationBase*> images;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        images.swap(m_images);
    }
    for (const auto& entry : images) delete entry.second;
}

bool CImageResourceManager::IsCached(uint32_t resourceId) const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_images.count(resourceId) != 0;
}

CImageImplementationBase* GetResourceImage(uint32_t resourceId, int kind) {
    CImageResourceManager* cache = CSingleton<CImageResourceManager>::GetInstance();
    return cache ? cache->Get(resourceId, kind) : nullptr;
}
