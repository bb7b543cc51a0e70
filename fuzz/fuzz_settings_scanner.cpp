// Settings files as they may be found on an instrument, loaded into the instrument's own items:
// whatever the file held, what is then saved loads back completely to the same values.

#include "foundation/InstrumentSettings.h"
#include "fuzz/FuzzSupport.h"

#include <cstdint>
#include <vector>

namespace {

// The text form of every item of an origin, in registration order.
std::vector<wxString> TextsOf(CInstrumentSettingsCollection& collection, int origin) {
    std::vector<wxString> texts;
    const CInstrumentSettingsCollection::CInstrumentSettingsItemOriginCount items(collection, origin);
    for (CInstrumentSettingsItemBase* item : items.GetItems()) texts.push_back(item->GetAsText());
    return texts;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    CInstrumentSettingsCollection& collection = *CSingleton<CInstrumentSettingsCollection>::GetInstance();
    const std::string path =
        vtxfuzz::PutFile("settings", std::string(reinterpret_cast<const char*>(data), size));
    const std::string saved = vtxfuzz::FilePath("saved");
    for (int origin = 0; origin < eSettingsOriginCount; ++origin) {
        collection.ResetOrigin(origin, 0);
        collection.LoadOriginFromFile(origin, path);
        const std::vector<wxString> loaded = TextsOf(collection, origin);
        VTX_FUZZ_CHECK(collection.SaveOriginToFile(origin, saved));
        collection.ResetOrigin(origin, 0);
        VTX_FUZZ_CHECK(collection.LoadOriginFromFile(origin, saved) && TextsOf(collection, origin) == loaded);
    }
    return 0;
}
