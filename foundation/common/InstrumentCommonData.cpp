#include "foundation/common/InstrumentCommonData.h"

#include <cmath>
#include <mutex>

#include "foundation/InstrumentSettings.h"
#include "log/InstrumentLog.h"

// ---------------------------------------------------------------------------------------------
// Unchangeable variables

CInstrumentVariableUnchangableString::CInstrumentVariableUnchangableString(std::string value)
    : CInstrumentVariableUnchangableBase<std::string>(std::move(value)) {}

bool CInstrumentVariableUnchangableString::IsEqual(const std::string& value) const {
    const std::string& own = Get();
    return own.size() == value.size() && own.compare(value) == 0;
}

CInstrumentVariableInstrumentName::CInstrumentVariableInstrumentName(std::string value)
    : CInstrumentVariableUnchangableString(std::move(value)) {}

CInstrumentVariableUnchangableDouble::CInstrumentVariableUnchangableDouble(double value)
    : CInstrumentVariableUnchangableBase<double>(value) {}

bool CInstrumentVariableUnchangableDouble::IsEqual(const double& value) const {
    return std::fabs(Get() - value) <= kTolerance;
}

namespace {
const char* ProductName(int type) {
    switch (type) {
        case eInstrumentKorvalin: return "Korvalin Analyzer";
        case eInstrumentPellamZento: return "Pellam Zento";
        case eInstrumentLumetTandem: return "Lumet Tandem COAG";
        default: return nullptr;
    }
}

// Function-local statics: safe to reach from any module's static construction, and built at
// static construction of this module at the latest (see the touch below).
const CInstrumentVariableInstrumentName& NameVariable() {
    static const CInstrumentVariableInstrumentName name(ProductName(eInstrumentKorvalin));
    return name;
}
const CInstrumentVariableUnchangableEnum<eInstrumentType>& TypeVariable() {
    static const CInstrumentVariableUnchangableEnum<eInstrumentType> type(eInstrumentKorvalin);
    return type;
}
const CInstrumentVariableUnchangableDouble& SampleIntervalVariable() {
    static const CInstrumentVariableUnchangableDouble value(0.1);
    return value;
}
const CInstrumentVariableUnchangableDouble& IncubationTemperatureVariable() {
    static const CInstrumentVariableUnchangableDouble value(37.0);
    return value;
}
const bool g_variablesBuilt =
    (NameVariable(), TypeVariable(), SampleIntervalVariable(), IncubationTemperatureVariable(), true);

struct STypeOverride {
    std::mutex mutex;
    bool set = false;
    int type = 0;
};
STypeOverride& TypeOverride() {
    static STypeOverride value;
    return value;
}
}  // namespace

// ---------------------------------------------------------------------------------------------
// Common data

CInstrumentCommonDataManager::CInstrumentCommonData::CInstrumentCommonData() { (void)g_variablesBuilt; }
CInstrumentCommonDataManager::CInstrumentCommonData::~CInstrumentCommonData() = default;

const CInstrumentVariableInstrumentName&
CInstrumentCommonDataManager::CInstrumentCommonData::GetInstrumentNameVariable() const {
    return NameVariable();
}
const CInstrumentVariableUnchangableEnum<eInstrumentType>&
CInstrumentCommonDataManager::CInstrumentCommonData::GetInstrumentTypeVariable() const {
    return TypeVariable();
}
const CInstrumentVariableUnchangableDouble&
CInstrumentCommonDataManager::CInstrumentCommonData::GetSampleIntervalVariable() const {
    return SampleIntervalVariable();
}
const CInstrumentVariableUnchangableDouble&
CInstrumentCommonDataManager::CInstrumentCommonData::GetIncubationTemperatureVariable() const {
    return IncubationTemperatureVariable();
}

CInstrumentCommonDataManager::CInstrumentCommonDataManager() : m_data(new CInstrumentCommonData) {}

CInstrumentCommonDataManager::~CInstrumentCommonDataManager() {
    delete m_data;
    m_data = nullptr;
}

CInstrumentCommonDataManager& GetInstrumentCommonDataManager() {
    static CInstrumentCommonDataManager manager;
    return manager;
}

int GetInstrumentType() {
    STypeOverride& state = TypeOverride();
    {
        std::lock_guard<std::mutex> lock(state.mutex);
        if (state.set) return state.type;
    }
    return static_cast<int>(TypeVariable().Get());
}

void SetInstrumentTypeForTesting(int type) {
    STypeOverride& state = TypeOverride();
    std::lock_guard<std::mutex> lock(state.mutex);
    state.set = true;
    state.type = type;
}

std::string GetInstrumentName() {
    const int type = GetInstrumentType();
    if (type == static_cast<int>(TypeVariable().Get())) return NameVariable().Get();
    const char* name = ProductName(type);
    return name ? name : NameVariable().Get();
}

std::string GetInstrumentTypeName(int code) {
    switch (code) {
        case 0: return "Sealing";
        case 2: return "Zento";
        case 4: return "Korvalin";
        default: return "Unknown (" + std::to_string(code) + ")";
    }
}

// ---------------------------------------------------------------------------------------------
// Reset to factory state

CInstrumentVirginizeObserver::CInstrumentVirginizeObserver()
    : CCollectorsItem<CInstrumentVirginizeObserver>(this) {}
CInstrumentVirginizeObserver::~CInstrumentVirginizeObserver() = default;
void CInstrumentVirginizeObserver::OnVirginize(const CTraceField*) {}
void CInstrumentVirginizeObserver::OnVirginizeSecond(const CTraceField*) {}
void CInstrumentVirginizeObserver::OnVirginizeThird(const CTraceField*) {}

void CInstrumentVirginizeInformer::Virginize(const CTraceField* trace) const {
    ForEachLocked([trace](CInstrumentVirginizeObserver* observer) { observer->OnVirginize(trace); });
}
void CInstrumentVirginizeInformer::VirginizeSecond(const CTraceField* trace) const {
    ForEachLocked([trace](CInstrumentVirginizeObserver* observer) { observer->OnVirginizeSecond(trace); });
}
void CInstrumentVirginizeInformer::VirginizeThird(const CTraceField* trace) const {
    ForEachLocked([trace](CInstrumentVirginizeObserver* observer) { observer->OnVirginizeThird(trace); });
}

void CVirginizeInstrumentSettings::OnVirginize(const CTraceField* trace) {
    if (!ResetSettings(GetInstrumentType()) && trace) LogError(trace, "Could not reset settings!");
}

namespace {
CVirginizeInstrumentSettings g_virginizeSettings;
}  // namespace

bool VirginizeInstrument(const CTraceField* trace) {
    CInstrumentVirginizeInformer* informer = CSingleton<CInstrumentVirginizeInformer>::GetInstance();
    if (!informer) return false;
    informer->Virginize(trace);
    return true;
}
