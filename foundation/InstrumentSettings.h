#pragma once
// The instrument's persistent settings: self-registering items, each living in one of three
// key-and-value files of the code folder, loaded, saved and reset as a collection.

#include <wx/string.h>

#include <cstdint>
#include <string>
#include <vector>

#include "foundation/ByteText.h"
#include "foundation/Collectors.h"
#include "foundation/EnumType.h"
#include "foundation/InstrumentEnums.h"
#include "foundation/InstrumentTime.h"

// The file an item lives in.
enum eInstrumentSettingsOrigin {
    eSettingsOriginUser = 0,        // settings.vtx
    eSettingsOriginUserSecond = 1,  // settings.lmo: service and mode settings
    eSettingsOriginFactory = 2,     // factory.lmo: written only by a save of this origin alone
    eSettingsOriginCount = 3,
};

// The code folder (GetApplicationFolder), "/", name, extension; empty for an origin outside 0 to 2.
std::string GetSettingsFilePath(int origin);

// The shared key table of the instrument framework (settings files and measurement records).
enum eInstrumentKey {
    eKeyLanguage = 0,
    eKeyDateFormat,
    eKeyBeepAudioReminder,
    eKeyChineseLiteration,
    eKeyJapaneseLiteration,
    eKeyPlasmaQcMode,
    eKeyBeepFrequency,
    eKeyLEDIntensityCH0,
    eKeyLEDIntensityCH1,
    eKeyInstrumentName,
    eKeyMeasurementData,
    eKeySoftwareVersion,
    eKeyMacAddress,
    eKeyServerIpAdr,
    eKeyServerPort,
    eKeyInstrIpType,
    eKeyInstrIpAddr,
    eKeyInstrIpMask,
    eKeyInstrIpDefGate,
    eKeyInstrumentMode,
    eKeyOperator,
    eKeyCount,
};
// The key text; an unknown key gives an empty text. The strings live until program exit.
const std::string& GetInstrumentKey(eInstrumentKey key);

// The text side of an item. The text carries the bytes of the file's value, one character per
// byte (foundation/ByteText.h), so that a load and a save keep every value byte for byte.
class CInstrumentSettingsInterface {
public:
    virtual ~CInstrumentSettingsInterface() = default;
    virtual void SetFromText(const wxString& text) = 0;
    // The argument is for items whose default depends on the instrument type; ours ignore it.
    virtual void ResetToDefault(int argument) = 0;
    virtual wxString GetAsText() const = 0;
};

class CInstrumentSettingsItemBase;
class CInstrumentSettingsCollection;
template <>
struct CCollectorTraits<CInstrumentSettingsItemBase> {
    using Collector = CInstrumentSettingsCollection;
};

// One setting: registers with the collection when built, in construction order.
class CInstrumentSettingsItemBase : public CCollectorsItem<CInstrumentSettingsItemBase>,
                                    public CInstrumentSettingsInterface {
public:
    // key must outlive the item (normally an entry of the shared key table).
    CInstrumentSettingsItemBase(int origin, const std::string* key);
    ~CInstrumentSettingsItemBase() override;

    virtual const std::string& GetKey() const;
    int GetOrigin() const { return m_origin; }

private:
    const int m_origin;
    const std::string* const m_key;
};

// An enumerated setting, stored in the file as one of N member texts.
template <class E, int N, bool Wrap>
class CInstrumentSettingsItemEnum : public CInstrumentSettingsItemBase {
public:
    using Texts = const char* const[N];

    CInstrumentSettingsItemEnum(int origin, const std::string* key, E defaultValue, const Texts& texts)
        : CInstrumentSettingsItemBase(origin, key), m_value(defaultValue), m_texts(&texts) {}

    // Exact match against the member texts in order; no match gives the default.
    void SetFromText(const wxString& text) override {
        const std::string bytes = BytesCarriedByText(text);
        for (int i = 0; i < N; ++i) {
            if (bytes == (*m_texts)[i]) {
                m_value.Set(i);
                return;
            }
        }
        m_value.Set(static_cast<int>(m_value.GetDefault()));
    }
    void ResetToDefault(int) override { m_value.Set(static_cast<int>(m_value.GetDefault())); }
    wxString GetAsText() const override { return TextCarryingBytes(GetText(m_value.GetValue())); }

    E Get() const { return m_value.Get(); }
    int GetValue() const { return m_value.GetValue(); }
    // Out-of-range values store the default.
    E Set(int value) { return m_value.Set(value); }
    E GetDefault() const { return m_value.GetDefault(); }
    // The member text of a value; a value outside 0 to N-1 gives the first member's text.
    const char* GetText(int value) const {
        return (value >= 0 && value < N) ? (*m_texts)[value] : (*m_texts)[0];
    }

private:
    CSafeEnumType<E, N, Wrap> m_value;
    const Texts* m_texts;
};

class CInstrumentSettingsDateFormat : public CInstrumentSettingsItemEnum<eInstrumentDateFormat, 2, false> {
public:
    CInstrumentSettingsDateFormat(int origin, const std::string* key, eInstrumentDateFormat defaultValue);
    bool IsDayFirst() const { return Get() == eDateFormatEU; }
};

// "TRUE" or "FALSE"; anything but the exact "TRUE" reads as false.
class CInstrumentSettingsItemBool : public CInstrumentSettingsItemBase {
public:
    CInstrumentSettingsItemBool(int origin, const std::string* key, bool defaultValue);
    void SetFromText(const wxString& text) override;
    void ResetToDefault(int argument) override;
    wxString GetAsText() const override;

    bool Get() const { return m_value.Get(); }
    void Set(bool value) { m_value.Set(value); }
    bool GetDefault() const { return m_default; }

private:
    CSafeVar<bool> m_value;
    const bool m_default;
};

class CInstrumentSettingsItemString : public CInstrumentSettingsItemBase {
public:
    CInstrumentSettingsItemString(int origin, const std::string* key, std::string defaultValue);
    void SetFromText(const wxString& text) override;
    void ResetToDefault(int argument) override;
    wxString GetAsText() const override;

    std::string Get() const { return m_value.Get(); }
    void Set(const std::string& utf8) { m_value.Set(utf8); }
    const std::string& GetDefault() const { return m_default; }

private:
    CSafeVar<std::string> m_value;
    const std::string m_default;
};

// A number in decimal; a text that does not start with a number reads as the default.
template <class T>
class CInstrumentSettingsItemValue;

template <>
class CInstrumentSettingsItemValue<unsigned short> : public CInstrumentSettingsItemBase {
public:
    CInstrumentSettingsItemValue(int origin, const std::string* key, unsigned short defaultValue);
    void SetFromText(const wxString& text) override;
    void ResetToDefault(int argument) override;
    wxString GetAsText() const override;

    unsigned short Get() const { return m_value.Get(); }
    void Set(unsigned short value) { m_value.Set(value); }
    unsigned short GetDefault() const { return m_default; }

private:
    CSafeVar<unsigned short> m_value;
    const unsigned short m_default;
};

// A point in time in the form "%d%m%Y %H%M"; an unreadable text gives the default.
class CInstrumentSettingsItemTime : public CInstrumentSettingsItemBase {
public:
    CInstrumentSettingsItemTime(int origin, const std::string* key, const CInstrumentTime& defaultValue);
    void SetFromText(const wxString& text) override;
    void ResetToDefault(int argument) override;
    wxString GetAsText() const override;

    CInstrumentTime Get() const { return m_value.Get(); }
    void Set(const CInstrumentTime& value) { m_value.Set(value); }

private:
    CSafeVar<CInstrumentTime> m_value;
    const CInstrumentTime m_default;
};

// The items of the instrument.
using CInstrumentSettingsLanguage = CInstrumentSettingsItemEnum<eInstrumentLanguage, 10, false>;
using CInstrumentSettingsBeepAudioReminder = CInstrumentSettingsItemEnum<eBeepAudioReminder, 4, true>;
using CInstrumentSettingsChineseLiteration =
    CInstrumentSettingsItemEnum<NS_ChineseLiteration::eChineseLiterationOption, 3, true>;
using CInstrumentSettingsJapaneseLiteration =
    CInstrumentSettingsItemEnum<NS_JapaneseLiteration::eJapaneseLiterationOption, 3, true>;
using CInstrumentSettingsBeepFrequency = CInstrumentSettingsItemEnum<eInstrumentBeepFrequency, 4, false>;
using CInstrumentSettingsLedIntensity = CInstrumentSettingsItemValue<unsigned short>;

// Access to the nine items (defined together, so their order is the line order of the files).
// Not for use during static construction.
CInstrumentSettingsLanguage& GetSettingsItemLanguage();
CInstrumentSettingsDateFormat& GetSettingsItemDateFormat();
CInstrumentSettingsBeepAudioReminder& GetSettingsItemBeepAudioReminder();
CInstrumentSettingsChineseLiteration& GetSettingsItemChineseLiteration();
CInstrumentSettingsJapaneseLiteration& GetSettingsItemJapaneseLiteration();
CInstrumentSettingsItemBool& GetSettingsItemPlasmaQcMode();
CInstrumentSettingsBeepFrequency& GetSettingsItemBeepFrequency();
CInstrumentSettingsLedIntensity& GetSettingsItemLEDIntensityCH0();
CInstrumentSettingsLedIntensity& GetSettingsItemLEDIntensityCH1();

// Finds "key + separator" anywhere in the lines of a text file; the value is the rest of the
// line. The first occurrence of a key wins.
class CFileScanner {
public:
    static constexpr uint32_t kMaxLineLength = 1000;

    CFileScanner(std::string separator, bool stopAtEmptyLine);

    // values and found are resized to keys.size(); returns the number of keys found. A file that
    // cannot be opened finds nothing.
    int Scan(const std::string& path, const std::vector<std::string>& keys, std::vector<std::string>& values,
             std::vector<bool>& found) const;
    // One line against the keys not yet found; the index of the key that matched, or -1.
    int ScanLine(const std::string& line, const std::vector<std::string>& keys, std::vector<std::string>& values,
                 std::vector<bool>& found) const;

private:
    const std::string m_separator;
    const bool m_stopAtEmptyLine;
};

class CInstrumentSettingsCollection : public CObjectCollectorHandler<CInstrumentSettingsItemBase> {
public:
    // The items of one origin, copied out under the collection's mutex, in registration order.
    class CInstrumentSettingsItemOriginCount {
    public:
        CInstrumentSettingsItemOriginCount(const CInstrumentSettingsCollection& collection, int origin);
        int GetOrigin() const { return m_origin; }
        size_t GetCount() const { return m_items.size(); }
        const std::vector<CInstrumentSettingsItemBase*>& GetItems() const { return m_items; }

    private:
        int m_origin;
        std::vector<CInstrumentSettingsItemBase*> m_items;
    };

    // Factory file, then the two user files; tells the callbacks. True when both user files
    // held every one of their keys.
    bool LoadSettings();
    // The two user files; tells the callbacks. True when both were written.
    bool SaveSettings();
    // Defaults into the two user files' items, then saves them; the factory file is untouched.
    bool ResetSettings(int argument);

    // One origin, from or to its own file; the callbacks are not told.
    bool LoadOrigin(int origin);
    bool SaveOrigin(int origin);
    void ResetOrigin(int origin, int argument);
    // The same with an explicit file.
    bool LoadOriginFromFile(int origin, const std::string& path);
    bool SaveOriginToFile(int origin, const std::string& path);

    static const char* const kSeparator;  // " = "
};

class CInstrumentSettingsChangedCallBack;
class CInstrumentSettingsChangedCollection;
template <>
struct CCollectorTraits<CInstrumentSettingsChangedCallBack> {
    using Collector = CInstrumentSettingsChangedCollection;
};

// Told after every combined load and save. Called with the callback list locked: a callback must
// not register or unregister callbacks.
class CInstrumentSettingsChangedCallBack : public CCollectorsItem<CInstrumentSettingsChangedCallBack> {
public:
    CInstrumentSettingsChangedCallBack();
    ~CInstrumentSettingsChangedCallBack() override;
    virtual void OnSettingsLoaded() = 0;
    virtual void OnSettingsSaved() = 0;
};

class CInstrumentSettingsChangedCollection : public CObjectCollectorHandler<CInstrumentSettingsChangedCallBack> {
public:
    void NotifyLoaded() const;
    void NotifySaved() const;
};

// Shortcuts through the collection singleton; false once it is gone at program exit.
bool LoadSettings();
bool SaveSettings();
bool ResetSettings(int argument);

// The language (eInstrumentLanguage) and date format (eInstrumentDateFormat) settings; any thread.
int GetSettingLanguage();
void SetSettingLanguage(int language);
int GetSettingDateFormat();
void SetSettingDateFormat(int dateFormat);
