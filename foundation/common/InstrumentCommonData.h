#pragma once
// Facts that are fixed for a unit or build (name, type, model, constants), and the reset of the
// instrument to its factory state, broadcast to every registered observer.

#include <string>
#include <utility>

#include "foundation/Collectors.h"
#include "foundation/InstrumentEnums.h"

class CTraceField;

// A value set at construction and never changed afterwards.
template <class T>
class CInstrumentVariableUnchangableBase {
public:
    explicit CInstrumentVariableUnchangableBase(T value) : m_value(std::move(value)) {}
    virtual ~CInstrumentVariableUnchangableBase() = default;
    CInstrumentVariableUnchangableBase(const CInstrumentVariableUnchangableBase&) = delete;
    CInstrumentVariableUnchangableBase& operator=(const CInstrumentVariableUnchangableBase&) = delete;

    virtual bool IsEqual(const T& value) const = 0;
    const T& Get() const { return m_value; }

private:
    const T m_value;
};

// Same length and same bytes.
class CInstrumentVariableUnchangableString : public CInstrumentVariableUnchangableBase<std::string> {
public:
    explicit CInstrumentVariableUnchangableString(std::string value);
    bool IsEqual(const std::string& value) const override;
};

class CInstrumentVariableInstrumentName : public CInstrumentVariableUnchangableString {
public:
    explicit CInstrumentVariableInstrumentName(std::string value);
};

// Equal within 2^-52 absolute: a fixed tolerance, not one relative to the values' size.
class CInstrumentVariableUnchangableDouble : public CInstrumentVariableUnchangableBase<double> {
public:
    static constexpr double kTolerance = 2.220446049250313e-16;
    explicit CInstrumentVariableUnchangableDouble(double value);
    bool IsEqual(const double& value) const override;
};

template <class E>
class CInstrumentVariableUnchangableEnum : public CInstrumentVariableUnchangableBase<E> {
public:
    explicit CInstrumentVariableUnchangableEnum(E value) : CInstrumentVariableUnchangableBase<E>(value) {}
    bool IsEqual(const E& value) const override { return this->Get() == value; }
};

// Owns the common data object; the unchangeable variables are process-wide beside it.
class CInstrumentCommonDataManager {
public:
    class CInstrumentCommonData {
    public:
        CInstrumentCommonData();
        virtual ~CInstrumentCommonData();
        CInstrumentCommonData(const CInstrumentCommonData&) = delete;
        CInstrumentCommonData& operator=(const CInstrumentCommonData&) = delete;

        const CInstrumentVariableInstrumentName& GetInstrumentNameVariable() const;
        const CInstrumentVariableUnchangableEnum<eInstrumentType>& GetInstrumentTypeVariable() const;
        // Seconds between two optical samples of a measurement channel.
        const CInstrumentVariableUnchangableDouble& GetSampleIntervalVariable() const;
        // Incubation temperature of the cuvette block, degrees Celsius.
        const CInstrumentVariableUnchangableDouble& GetIncubationTemperatureVariable() const;
        // The analyser model, read by the worker and the GUI thread.
        CSafeKorvalinType& GetKorvalinType() { return m_korvalinType; }
        const CSafeKorvalinType& GetKorvalinType() const { return m_korvalinType; }

    private:
        CSafeKorvalinType m_korvalinType;
    };

    CInstrumentCommonDataManager();
    virtual ~CInstrumentCommonDataManager();
    CInstrumentCommonDataManager(const CInstrumentCommonDataManager&) = delete;
    CInstrumentCommonDataManager& operator=(const CInstrumentCommonDataManager&) = delete;

    CInstrumentCommonData* GetCommonData() const { return m_data; }

private:
    CInstrumentCommonData* m_data;
};

// The program's one manager; lives until program exit.
CInstrumentCommonDataManager& GetInstrumentCommonDataManager();

// The instrument type code (eInstrumentType, 0 at start).
int GetInstrumentType();
// Lets tests run as another instrument type; any value is kept as it is.
void SetInstrumentTypeForTesting(int type);
// The product name of the current instrument type, e.g. "Korvalin Analyzer".
std::string GetInstrumentName();
// "Sealing", "Zento", "Korvalin" for the codes 0, 2, 4; "Unknown (N)" otherwise.
std::string GetInstrumentTypeName(int code);

// Told when the instrument is reset to its factory state. The informer's list is locked during
// a notification: an observer must not register or unregister observers from it.
class CInstrumentVirginizeObserver;
class CInstrumentVirginizeInformer;
template <>
struct CCollectorTraits<CInstrumentVirginizeObserver> {
    using Collector = CInstrumentVirginizeInformer;
};

class CInstrumentVirginizeObserver : public CCollectorsItem<CInstrumentVirginizeObserver> {
public:
    CInstrumentVirginizeObserver();
    ~CInstrumentVirginizeObserver() override;
    virtual void OnVirginize(const CTraceField* trace);
    virtual void OnVirginizeSecond(const CTraceField* trace);
    virtual void OnVirginizeThird(const CTraceField* trace);
};

class CInstrumentVirginizeInformer : public CObjectCollectorHandler<CInstrumentVirginizeObserver> {
public:
    void Virginize(const CTraceField* trace) const;
    void VirginizeSecond(const CTraceField* trace) const;
    void VirginizeThird(const CTraceField* trace) const;
};

// Resets the two user settings files to their defaults and saves them.
class CVirginizeInstrumentSettings : public CInstrumentVirginizeObserver {
public:
    void OnVirginize(const CTraceField* trace) override;
};

// Broadcasts the first notification through the informer singleton; false once it is gone.
bool VirginizeInstrument(const CTraceField* trace);
