// The text forms of the settings item kinds (member texts, numbers, text): any value bytes from a
// file are read into each kind, and what the item then writes must read back to the same value.

#include "foundation/InstrumentSettings.h"
#include "fuzz/FuzzSupport.h"

#include <cstdint>

namespace {

// Outside the three files, so that no load or save of the instrument's settings sees them.
const int kOrigin = eSettingsOriginCount;
const std::string kKey = "Fuzz";
const char* const kLanguages[10] = {"EN", "DK", "SE", "IT", "NL", "FR", "SP", "DE", "JP", "CH"};

void CheckWrittenFormStable(CInstrumentSettingsInterface& item) {
    const wxString written = item.GetAsText();
    item.SetFromText(written);
    VTX_FUZZ_CHECK(item.GetAsText() == written);
}

bool IsNumber(const std::string& text) {
    return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static CInstrumentSettingsLanguage language(kOrigin, &kKey, eLanguageGerman, kLanguages);
    static CInstrumentSettingsItemString name(kOrigin, &kKey, "Korvalin");
    static CInstrumentSettingsLedIntensity intensity(kOrigin, &kKey, 1023);

    const std::string bytes(reinterpret_cast<const char*>(data), size);
    // As a settings load hands a value to its item: one character per byte, whatever the bytes.
    const wxString text = TextCarryingBytes(bytes);
    VTX_FUZZ_CHECK(text.length() == bytes.size() && BytesCarriedByText(text) == bytes);

    // Exactly a member text selects that member, anything else the default.
    language.SetFromText(text);
    int member = eLanguageGerman;
    for (int i = 0; i < 10; ++i)
        if (bytes == kLanguages[i]) member = i;
    VTX_FUZZ_CHECK(language.GetValue() == member);
    CheckWrittenFormStable(language);
    // A value goes back to its file exactly as it came.
    name.SetFromText(text);
    VTX_FUZZ_CHECK(name.Get() == bytes && BytesCarriedByText(name.GetAsText()) == bytes);

    // A plain number up to the largest value is taken as it is, a text without a digit keeps the
    // default; what is written is always a plain number.
    intensity.SetFromText(text);
    if (IsNumber(bytes) && bytes.size() <= 5 && std::stoul(bytes) <= 65535)
        VTX_FUZZ_CHECK(intensity.Get() == std::stoul(bytes));
    if (bytes.find_first_of("0123456789") == std::string::npos) VTX_FUZZ_CHECK(intensity.Get() == 1023);
    VTX_FUZZ_CHECK(IsNumber(BytesCarriedByText(intensity.GetAsText())));
    CheckWrittenFormStable(intensity);
    return 0;
}
