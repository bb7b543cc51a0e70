// The text forms of the settings item kinds: any value text from a file is read into each kind,
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
void CheckEnum(Item& item, const char* const (&texts)[N], const wxString& text) {
    item.SetFromText(text);
    const std::string utf8 = text.utf8_string();
    int match = -1;
    for (int i = 0; i < N && match < 0; ++i)
        if (utf8 == texts[i]) match = i;
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
    // As a settings load hands a value to its item.
    const wxString text = TextFromBytes(bytes);
    const std::string utf8 = text.utf8_string();
    // Well-formed UTF-8 comes through unchanged; anything else byte for byte as Latin-1.
    VTX_FUZZ_CHECK(IsWellFormedUtf8(bytes.data(), bytes.size()) ? utf8 == bytes : text.length() == bytes.size());

    CheckEnum(language, kLanguageTexts, text);
    CheckEnum(reminder, kReminderTexts, text);
    dateFormat.SetFromText(text);
    VTX_FUZZ_CHECK(dateFormat.IsDayFirst() == (utf8 == "EU" || (utf8 != "US" && dateFormat.GetDefault() == eDateFormatEU)));
    CheckWrittenFormStable(dateFormat);

    flag.SetFromText(text);
    VTX_FUZZ_CHECK(flag.Get() == (utf8 == "TRUE"));
    CheckWrittenFormStable(flag);

    name.SetFromText(text);
    VTX_FUZZ_CHECK(name.Get() == utf8);
    CheckWrittenFormStable(name);

    // A number taken from the text is the one the text starts with, never one wrapped round.
    intensity.SetFromText(text);
    if (IsDecimal(utf8) && std::strtoul(utf8.c_str(), nullptr, 10) <= 65535)
        VTX_FUZZ_CHECK(intensity.Get() == std::strtoul(utf8.c_str(), nullptr, 10));
    if (intensity.Get() != intensity.GetDefault()) {
        size_t digits = utf8.find_first_not_of(" \t\n\v\f\r");
        if (digits != std::string::npos && utf8[digits] == '+') ++digits;
        VTX_FUZZ_CHECK(digits < utf8.size() && utf8[digits] >= '0' && utf8[digits] <= '9');
        VTX_FUZZ_CHECK(intensity.Get() == std::strtoul(utf8.c_str() + digits, nullptr, 10));
    }
    VTX_FUZZ_CHECK(IsDecimal(intensity.GetAsText().utf8_string()));
    CheckWrittenFormStable(intensity);

    // A time text that is taken is the stored form of the time it names, byte for byte; any other
    // text leaves the default.
    when.ResetToDefault(0);
    when.SetFromText(text);
    CInstrumentTime parsed;
    if (CInstrumentTime::ParseSettings(utf8, parsed)) {
        VTX_FUZZ_CHECK(parsed.IsValid());
        VTX_FUZZ_CHECK(when.Get() == parsed);
        VTX_FUZZ_CHECK(when.GetAsText().utf8_string() == utf8);
    } else {
        VTX_FUZZ_CHECK(when.Get() == kDefaultTime);
    }
    CheckWrittenFormStable(when);
    return 0;
}
