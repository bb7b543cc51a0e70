// Settings files as they may be found on an instrument: scanned for keys, and loaded into the
// instrument's own items, whose saved form must load back to the same values.
//
// Input: one flag byte (bit 0: stop at an empty line), a first line of tab-separated keys for the
// plain scan, then the file.

#include "foundation/InstrumentSettings.h"
#include "fuzz/FuzzSupport.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace {

const char* const kSeparator = " = ";

void CheckScan(const std::string& path, const std::vector<std::string>& keys, bool stopAtEmptyLine) {
    const CFileScanner scanner(kSeparator, stopAtEmptyLine);
    std::vector<std::string> values{"stale"};
    std::vector<bool> found{true};
    const int count = scanner.Scan(path, keys, values, found);
    VTX_FUZZ_CHECK(values.size() == keys.size() && found.size() == keys.size());
    int flagged = 0;
    for (size_t k = 0; k < keys.size(); ++k) {
        if (!found[k]) {
            VTX_FUZZ_CHECK(values[k].empty());
            continue;
        }
        ++flagged;
        // A value is the rest of one line: no line end, and shorter than the line buffer.
        VTX_FUZZ_CHECK(values[k].find('\n') == std::string::npos);
        VTX_FUZZ_CHECK(values[k].find('\0') == std::string::npos);
        VTX_FUZZ_CHECK(keys[k].size() + 3 + values[k].size() < CFileScanner::kMaxLineLength);
    }
    VTX_FUZZ_CHECK(count == flagged);
}

// The text form of every item of an origin, in registration order.
std::vector<std::string> TextsOf(CInstrumentSettingsCollection& collection, int origin) {
    std::vector<std::string> texts;
    const CInstrumentSettingsCollection::CInstrumentSettingsItemOriginCount list(collection, origin);
    for (CInstrumentSettingsItemBase* item : list.GetItems()) texts.push_back(item->GetAsText().utf8_string());
    return texts;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    vtxfuzz::StartToolkit();
    vtxfuzz::TempFolder();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    const bool stopAtEmptyLine = (data[0] & 1) != 0;
    const std::string rest(reinterpret_cast<const char*>(data) + 1, size - 1);
    const size_t lineEnd = rest.find('\n');
    const std::string keyLine = rest.substr(0, lineEnd);
    const std::string file = lineEnd == std::string::npos ? std::string() : rest.substr(lineEnd + 1);

    std::vector<std::string> keys;
    for (size_t from = 0; keys.size() < 8;) {
        const size_t tab = keyLine.find('\t', from);
        keys.push_back(keyLine.substr(from, tab == std::string::npos ? std::string::npos : tab - from));
        if (tab == std::string::npos) break;
        from = tab + 1;
    }
    const std::string path = vtxfuzz::PutFile("scan.txt", file);
    CheckScan(path, keys, stopAtEmptyLine);

    // The instrument's items: whatever the file held, saving and loading again changes nothing,
    // and the saved file is complete.
    CInstrumentSettingsCollection* collection = CSingleton<CInstrumentSettingsCollection>::GetInstance();
    const std::string saved = (vtxfuzz::TempFolder() / "saved.txt").string();
    for (int origin = 0; origin < eSettingsOriginCount; ++origin) {
        collection->ResetOrigin(origin, 0);
        collection->LoadOriginFromFile(origin, path);
        const std::vector<std::string> loaded = TextsOf(*collection, origin);
        VTX_FUZZ_CHECK(collection->SaveOriginToFile(origin, saved));
        collection->ResetOrigin(origin, 0);
        VTX_FUZZ_CHECK(collection->LoadOriginFromFile(origin, saved));
        VTX_FUZZ_CHECK(TextsOf(*collection, origin) == loaded);
    }
    return 0;
}
