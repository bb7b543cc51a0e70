// The text forms of the settings item kinds: any value bytes from a file are read into each kind,
// and what the item then writes must read back to the same value and be written the same way.

#include "foundation/ByteText.h"
#include "foundation/InstrumentSettings.h"
#include "fuzz/FuzzSupport.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <string>

namespace {

// Outside the three files, so that no load or save of the instrument's settings sees them.
const int kOrigin = eSettingsOriginCount;
const std::string kKey = "Fuzz";

const char* const kLanguageTexts[10] = {"EN", "DK", "SE", "IT", "NL", "FR", "SP", "DE", "JP", "CH"};
const char* const kReminderTexts[4] = {"BEEP_ONCE", "BEEP_10_SEC", "BEEP_30_SEC", "BEEP_60_SEC"};


bool IsDecimal(const std::string& text) {
    if (text.empty() || text.size() > 5) return false;
    for (char c : text)
        if (c < '0' || c > '9') return false;
    return true;
}

// Writing, reading the written text and writing again gives the same text.
void CheckWrittenFormStable(CInstrumentSettingsInterface& item) {
    const wxString written = item.GetAsText();
    item.SetFromText(written);
    VTX_FUZZ_CHECK(item.GetAsText() == written);
}

template <class Item, int N>
void CheckEnum(Item& item, const char* const (&texts)[N], const wxString& text, const std::string& bytes) {
    item.SetFromText(text);
    int match = -1;
    for (int i = 0; i < N && match < 0; ++i)
        if (bytes == texts[i]) match = i;
    VTX_FUZZ_CHECK(item.GetValue() == (match >= 0 ? match : static_cast<int>(item.GetDefault())));
    CheckWrittenFormStable(item);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    // A zone with summer time, so that the hour that does not exist once a year can be met.
    setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
    tzset();
    vtxfuzz::StartToolkit();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static CInstrumentSettingsLanguage language(kOrigin, &kKey, eLanguageGerman, kLanguageTexts);
    static CInstrumentSettingsBeepAudioReminder reminder(kOrigin, &kKey, eBeep30Sec, kReminderTexts);
    static CInstrumentSettingsDateFormat dateFormat(kOrigin, &kKey, eDateFormatEU);
    static CInstrumentSettingsItemBool flag(kOrigin, &kKey, true);
    static CInstrumentSettingsItemString name(kOrigin, &kKey, "Korvalin");
    static CInstrumentSettingsLedIntensity intensity(kOrigin, &kKey, 1023);
    static const CInstrumentTime kDefaultTime(2, 10, 2017, 14, 7);
    static CInstrumentSettingsItemTime when(kOrigin, &kKey, kDefaultTime);

    const std::string bytes(reinterpret_cast<const char*>(data), size);
    // As a settings load hands a value to its item: one character per byte, whatever the bytes.
    const wxString text = TextCarryingBytes(bytes);
    VTX_FUZZ_CHECK(text.length() == bytes.size() && BytesCarriedByText(text) == bytes);

    CheckEnum(language, kLanguageTexts, text, bytes);
    CheckEnum(reminder, kReminderTexts, text, bytes);
    dateFormat.SetFromText(text);
    VTX_FUZZ_CHECK(dateFormat.IsDayFirst() ==
                   (bytes == "EU" || (bytes != "US" && dateFormat.GetDefault() == eDateFormatEU)));
    CheckWrittenFormStable(dateFormat);

    flag.SetFromText(text);
    VTX_FUZZ_CHECK(flag.Get() == (bytes == "TRUE"));
    CheckWrittenFormStable(flag);

    // A value goes back to its file exactly as it came.
    name.SetFromText(text);
    VTX_FUZZ_CHECK(name.Get() == bytes && BytesCarriedByText(name.GetAsText()) == bytes);
    CheckWrittenFormStable(name);

    // A plain number is taken as it is; a text without any digit keeps the default.
    intensity.SetFromText(text);
    if (IsDecimal(bytes) && std::strtoul(bytes.c_str(), nullptr, 10) <= 65535)
        VTX_FUZZ_CHECK(intensity.Get() == std::strtoul(bytes.c_str(), nullptr, 10));
    if (bytes.find_first_of("0123456789") == std::string::npos)
        VTX_FUZZ_CHECK(intensity.Get() == intensity.GetDefault());
    VTX_FUZZ_CHECK(IsDecimal(BytesCarriedByText(intensity.GetAsText())));
    CheckWrittenFormStable(intensity);

    // A time text that is taken is the stored form of the time it names, byte for byte; any other
    // text leaves the default.
    when.ResetToDefault(0);
    when.SetFromText(text);
    CInstrumentTime parsed;
    if (CInstrumentTime::ParseSettings(bytes, parsed)) {
        VTX_FUZZ_CHECK(parsed.IsValid());
        VTX_FUZZ_CHECK(when.Get() == parsed);
        VTX_FUZZ_CHECK(BytesCarriedByText(when.GetAsText()) == bytes);
    } else {
        VTX_FUZZ_CHECK(when.Get() == kDefaultTime);
    }
    CheckWrittenFormStable(when);
    return 0;
}
