#include "foundation/InstrumentSettings.h"

#include <sstream>

#include "foundation/ByteText.h"
#include "foundation/TextFile.h"
#include "update/locations/InstrumentLocations.h"

// ---------------------------------------------------------------------------------------------
// Files and keys

std::string GetSettingsFilePath(int origin) {
    // The name and the extension of each origin's file, side by side.
    static const char* const names[] = {"settings", "settings", "factory"};
    static const char* const extensions[] = {".vtx", ".lmo", ".lmo"};
    if (origin < 0 || origin > eSettingsOriginFactory) return std::string();
    return JoinPath(GetApplicationFolder(), std::string(names[origin]) + extensions[origin]);
}

const std::string& GetInstrumentKey(eInstrumentKey key) {
    // Function-local, so that items built during static construction of any module find it, and
    // it outlives them.
    static const std::string keys[eKeyCount + 1] = {
        "Language",           "DateFormat",
        "BeepAudioReminder",  "ChineseLiteration",
        "JapaneseLiteration", "PlasmaQcMode",
        "BeepFrequency",      "LEDIntensityCH0",
        "LEDIntensityCH1",    "Instrument Name",
        "Measurement Data",   "Software Version",
        "MAC address",        "ServerIpAdr",
        "ServerPort",         "InstrIpType",
        "InstrIpAddr",        "InstrIpMask",
        "InstrIpDefGate",     "InstrumentMode",
        "Operator",           "",
    };
    const int index = static_cast<int>(key);
    return keys[(index >= 0 && index < eKeyCount) ? index : eKeyCount];
}

// ---------------------------------------------------------------------------------------------
// Items

CInstrumentSettingsItemBase::CInstrumentSettingsItemBase(int origin, const std::string* key)
    : CCollectorsItem<CInstrumentSettingsItemBase>(this), m_origin(origin), m_key(key) {}

CInstrumentSettingsItemBase::~CInstrumentSettingsItemBase() = default;

const std::string& CInstrumentSettingsItemBase::GetKey() const {
    static const std::string none;
    return m_key ? *m_key : none;
}

namespace {
const char* const kDateFormatTexts[2] = {"US", "EU"};
}  // namespace

CInstrumentSettingsDateFormat::CInstrumentSettingsDateFormat(int origin, const std::string* key,
                                                             eInstrumentDateFormat defaultValue)
    : CInstrumentSettingsItemEnum<eInstrumentDateFormat, 2, false>(origin, key, defaultValue, kDateFormatTexts) {
}

CInstrumentSettingsItemBool::CInstrumentSettingsItemBool(int origin, const std::string* key, bool defaultValue)
    : CInstrumentSettingsItemBase(origin, key), m_value(defaultValue), m_default(defaultValue) {}

void CInstrumentSettingsItemBool::SetFromText(const wxString& text) {
    m_value.Set(BytesCarriedByText(text) == "TRUE");
}
void CInstrumentSettingsItemBool::ResetToDefault(int) { m_value.Set(m_default); }
wxString CInstrumentSettingsItemBool::GetAsText() const { return m_value.Get() ? "TRUE" : "FALSE"; }

CInstrumentSettingsItemString::CInstrumentSettingsItemString(int origin, const std::string* key,
                                                             std::string defaultValue)
    : CInstrumentSettingsItemBase(origin, key), m_value(defaultValue), m_default(std::move(defaultValue)) {}

void CInstrumentSettingsItemString::SetFromText(const wxString& text) { m_value.Set(BytesCarriedByText(text)); }
void CInstrumentSettingsItemString::ResetToDefault(int) { m_value.Set(m_default); }
wxString CInstrumentSettingsItemString::GetAsText() const { return TextCarryingBytes(m_value.Get()); }

CInstrumentSettingsItemValue<unsigned short>::CInstrumentSettingsItemValue(int origin, const std::string* key,
                                                                           unsigned short defaultValue)
    : CInstrumentSettingsItemBase(origin, key), m_value(defaultValue), m_default(defaultValue) {}

void CInstrumentSettingsItemValue<unsigned short>::SetFromText(const wxString& text) {
    // What the stream makes of the text is the value ("-1" gives 65535, "70000" the largest
    // value), except that a text without a number keeps the default the read started from: the
    // stream writes 0 there.
    unsigned short value = m_default;
    std::istringstream in(BytesCarriedByText(text));
    if (!(in >> value) && value == 0) value = m_default;
    m_value.Set(value);
}
void CInstrumentSettingsItemValue<unsigned short>::ResetToDefault(int) { m_value.Set(m_default); }
wxString CInstrumentSettingsItemValue<unsigned short>::GetAsText() const {
    std::ostringstream out;
    out << m_value.Get();
    return TextCarryingBytes(out.str());
}

CInstrumentSettingsItemTime::CInstrumentSettingsItemTime(int origin, const std::string* key,
                                                         const CInstrumentTime& defaultValue)
    : CInstrumentSettingsItemBase(origin, key), m_value(defaultValue), m_default(defaultValue) {}

void CInstrumentSettingsItemTime::SetFromText(const wxString& text) {
    CInstrumentTime parsed = m_default;
    if (CInstrumentTime::ParseSettings(BytesCarriedByText(text), parsed)) {
        m_value.Set(parsed);
    } else {
        m_value.Set(m_default);
    }
}
void CInstrumentSettingsItemTime::ResetToDefault(int) { m_value.Set(m_default); }
wxString CInstrumentSettingsItemTime::GetAsText() const {
    const CInstrumentTime value = m_value.Get();
    return value.IsValid() ? TextCarryingBytes(value.FormatSettings()) : wxString();
}

// ---------------------------------------------------------------------------------------------
// The items of the instrument. Their order here is the line order of the saved files.

namespace {
const char* const kLanguageTexts[10] = {"EN", "DK", "SE", "IT", "NL", "FR", "SP", "DE", "JP", "CH"};
const char* const kBeepAudioReminderTexts[4] = {"BEEP_ONCE", "BEEP_10_SEC", "BEEP_30_SEC", "BEEP_60_SEC"};
const char* const kChineseLiterationTexts[3] = {"NONE", "PINYIN", "BOPOMOFO"};
const char* const kJapaneseLiterationTexts[3] = {"NONE", "ROMAJI", "KANA"};
const char* const kBeepFrequencyTexts[4] = {"2300HZ", "2500HZ", "2700HZ", "2900HZ"};

CInstrumentSettingsLanguage g_language(eSettingsOriginUser, &GetInstrumentKey(eKeyLanguage), eLanguageEnglish,
                                       kLanguageTexts);
CInstrumentSettingsDateFormat g_dateFormat(eSettingsOriginUser, &GetInstrumentKey(eKeyDateFormat),
                                           eDateFormatUS);
CInstrumentSettingsBeepAudioReminder g_beepAudioReminder(eSettingsOriginUser,
                                                         &GetInstrumentKey(eKeyBeepAudioReminder), eBeepOnce,
                                                         kBeepAudioReminderTexts);
CInstrumentSettingsChineseLiteration g_chineseLiteration(eSettingsOriginUser,
                                                         &GetInstrumentKey(eKeyChineseLiteration),
                                                         NS_ChineseLiteration::eChineseBopomofo,
                                                         kChineseLiterationTexts);
CInstrumentSettingsJapaneseLiteration g_japaneseLiteration(eSettingsOriginUser,
                                                           &GetInstrumentKey(eKeyJapaneseLiteration),
                                                           NS_JapaneseLiteration::eJapaneseKana,
                                                           kJapaneseLiterationTexts);
CInstrumentSettingsItemBool g_plasmaQcMode(eSettingsOriginUserSecond, &GetInstrumentKey(eKeyPlasmaQcMode),
                                           false);
CInstrumentSettingsBeepFrequency g_beepFrequency(eSettingsOriginFactory, &GetInstrumentKey(eKeyBeepFrequency),
                                                 eBeep2700Hz, kBeepFrequencyTexts);
CInstrumentSettingsLedIntensity g_ledIntensityCH0(eSettingsOriginFactory, &GetInstrumentKey(eKeyLEDIntensityCH0),
                                                  1023);
CInstrumentSettingsLedIntensity g_ledIntensityCH1(eSettingsOriginFactory, &GetInstrumentKey(eKeyLEDIntensityCH1),
                                                  1023);
}  // namespace

CInstrumentSettingsLanguage& GetSettingsItemLanguage() { return g_language; }
CInstrumentSettingsDateFormat& GetSettingsItemDateFormat() { return g_dateFormat; }
CInstrumentSettingsBeepAudioReminder& GetSettingsItemBeepAudioReminder() { return g_beepAudioReminder; }
CInstrumentSettingsChineseLiteration& GetSettingsItemChineseLiteration() { return g_chineseLiteration; }
CInstrumentSettingsJapaneseLiteration& GetSettingsItemJapaneseLiteration() { return g_japaneseLiteration; }
CInstrumentSettingsItemBool& GetSettingsItemPlasmaQcMode() { return g_plasmaQcMode; }
CInstrumentSettingsBeepFrequency& GetSettingsItemBeepFrequency() { return g_beepFrequency; }
CInstrumentSettingsLedIntensity& GetSettingsItemLEDIntensityCH0() { return g_ledIntensityCH0; }
CInstrumentSettingsLedIntensity& GetSettingsItemLEDIntensityCH1() { return g_ledIntensityCH1; }

int GetSettingLanguage() { return g_language.GetValue(); }
void SetSettingLanguage(int language) { g_language.Set(language); }
int GetSettingDateFormat() { return g_dateFormat.GetValue(); }
void SetSettingDateFormat(int dateFormat) { g_dateFormat.Set(dateFormat); }

// ---------------------------------------------------------------------------------------------
// Key scanner

CFileScanner::CFileScanner(std::string separator, bool stopAtEmptyLine)
    : m_separator(std::move(separator)), m_stopAtEmptyLine(stopAtEmptyLine) {}

int CFileScanner::ScanLine(const std::string& line, const std::vector<std::string>& keys,
                           std::vector<std::string>& values, std::vector<bool>& found) const {
    for (size_t k = 0; k < keys.size(); ++k) {
        if (found[k]) continue;
        const std::string pattern = keys[k] + m_separator;
        const std::string::size_type at = line.find(pattern);
        if (at == std::string::npos) continue;
        values[k] = line.substr(at + pattern.size());
        found[k] = true;
        return static_cast<int>(k);
    }
    return -1;
}

int CFileScanner::Scan(const std::string& path, const std::vector<std::string>& keys,
                       std::vector<std::string>& values, std::vector<bool>& found) const {
    values.assign(keys.size(), std::string());
    found.assign(keys.size(), false);
    CTextFileReader reader(kMaxLineLength);
    if (!reader.Open(path)) return 0;
    size_t count = 0;
    while (!reader.IsEof() && count < keys.size()) {
        const std::string line = reader.ReadLine();
        if (line.empty()) {
            if (m_stopAtEmptyLine) break;
            continue;
        }
        if (ScanLine(line, keys, values, found) >= 0) ++count;
    }
    reader.Close();
    return static_cast<int>(count);
}

// ---------------------------------------------------------------------------------------------
// Collection

const char* const CInstrumentSettingsCollection::kSeparator = " = ";

CInstrumentSettingsCollection::CInstrumentSettingsItemOriginCount::CInstrumentSettingsItemOriginCount(
    const CInstrumentSettingsCollection& collection, int origin)
    : m_origin(origin) {
    collection.ForEachLocked([this](CInstrumentSettingsItemBase* item) {
        if (item->GetOrigin() == m_origin) m_items.push_back(item);
    });
}

bool CInstrumentSettingsCollection::LoadOriginFromFile(int origin, const std::string& path) {
    const CInstrumentSettingsItemOriginCount list(*this, origin);
    if (list.GetCount() == 0) return true;

    std::vector<std::string> keys;
    keys.reserve(list.GetCount());
    for (CInstrumentSettingsItemBase* item : list.GetItems()) keys.push_back(item->GetKey());
    std::vector<std::string> values;
    std::vector<bool> found;
    const int count = CFileScanner(kSeparator, false).Scan(path, keys, values, found);

    // An empty value leaves the item as it is, yet the key counts as present.
    for (size_t i = 0; i < list.GetCount(); ++i) {
        if (found[i] && !values[i].empty()) list.GetItems()[i]->SetFromText(TextCarryingBytes(values[i]));
    }
    return static_cast<size_t>(count) == list.GetCount();
}

bool CInstrumentSettingsCollection::SaveOriginToFile(int origin, const std::string& path) {
    CTextFileWriter writer;
    if (!writer.Open(path, false)) return false;
    const CInstrumentSettingsItemOriginCount list(*this, origin);
    bool written = true;
    for (CInstrumentSettingsItemBase* item : list.GetItems()) {
        written = writer.WriteLine(item->GetKey() + kSeparator + BytesCarriedByText(item->GetAsText())) &&
                  written;
    }
    return writer.Close() && written;
}

bool CInstrumentSettingsCollection::LoadOrigin(int origin) {
    return LoadOriginFromFile(origin, GetSettingsFilePath(origin));
}

bool CInstrumentSettingsCollection::SaveOrigin(int origin) {
    return SaveOriginToFile(origin, GetSettingsFilePath(origin));
}

void CInstrumentSettingsCollection::ResetOrigin(int origin, int argument) {
    const CInstrumentSettingsItemOriginCount list(*this, origin);
    for (CInstrumentSettingsItemBase* item : list.GetItems()) item->ResetToDefault(argument);
}

namespace {
CInstrumentSettingsChangedCollection* Callbacks() {
    return CSingleton<CInstrumentSettingsChangedCollection>::GetInstance();
}
}  // namespace

bool CInstrumentSettingsCollection::LoadSettings() {
    LoadOrigin(eSettingsOriginFactory);  // the factory file's completeness does not count
    const bool user = LoadOrigin(eSettingsOriginUser);
    const bool second = LoadOrigin(eSettingsOriginUserSecond);
    if (CInstrumentSettingsChangedCollection* callbacks = Callbacks()) callbacks->NotifyLoaded();
    return user && second;
}

bool CInstrumentSettingsCollection::SaveSettings() {
    const bool user = SaveOrigin(eSettingsOriginUser);
    const bool second = SaveOrigin(eSettingsOriginUserSecond);
    if (CInstrumentSettingsChangedCollection* callbacks = Callbacks()) callbacks->NotifySaved();
    return user && second;
}

bool CInstrumentSettingsCollection::ResetSettings(int argument) {
    ResetOrigin(eSettingsOriginUser, argument);
    ResetOrigin(eSettingsOriginUserSecond, argument);
    const bool user = SaveOrigin(eSettingsOriginUser);
    const bool second = SaveOrigin(eSettingsOriginUserSecond);
    if (CInstrumentSettingsChangedCollection* callbacks = Callbacks()) callbacks->NotifySaved();
    return user && second;
}

// ---------------------------------------------------------------------------------------------
// Change callbacks

CInstrumentSettingsChangedCallBack::CInstrumentSettingsChangedCallBack()
    : CCollectorsItem<CInstrumentSettingsChangedCallBack>(this) {}

CInstrumentSettingsChangedCallBack::~CInstrumentSettingsChangedCallBack() = default;

void CInstrumentSettingsChangedCollection::NotifyLoaded() const {
    ForEachLocked([](CInstrumentSettingsChangedCallBack* callback) { callback->OnSettingsLoaded(); });
}

void CInstrumentSettingsChangedCollection::NotifySaved() const {
    ForEachLocked([](CInstrumentSettingsChangedCallBack* callback) { callback->OnSettingsSaved(); });
}

// ---------------------------------------------------------------------------------------------
// Shortcuts

namespace {
CInstrumentSettingsCollection* Collection() { return CSingleton<CInstrumentSettingsCollection>::GetInstance(); }
}  // namespace

bool LoadSettings() {
    CInstrumentSettingsCollection* collection = Collection();
    return collection && collection->LoadSettings();
}

bool SaveSettings() {
    CInstrumentSettingsCollection* collection = Collection();
    return collection && collection->SaveSettings();
}

bool ResetSettings(int argument) {
    CInstrumentSettingsCollection* collection = Collection();
    return collection && collection->ResetSettings(argument);
}
