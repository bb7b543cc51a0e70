#include "app/InstrumentBase.h"

#include <atomic>

namespace {
// Starts where the server view would set it, so controls made before it (tests, early views)
// never get a toolkit-reserved identifier.
std::atomic<int> g_nextControlId{CInstrumentBase::kFirstControlId};
}  // namespace

CInstrumentBase::CInstrumentBase(wxFont* defaultFont, CRect* clientRect, wxWindow* parent, int firstControlId)
    : m_defaultFont(defaultFont), m_clientRect(clientRect), m_parent(parent) {
    if (firstControlId != kKeepControlIds) g_nextControlId.store(firstControlId);
}

CInstrumentBase::~CInstrumentBase() = default;

int CInstrumentBase::GetNewControlId() { return g_nextControlId.fetch_add(1); }

int CInstrumentBase::PeekNextControlId() { return g_nextControlId.load(); }

CNullInitializedPointer<CInstrumentBase, false, false>& GetViewInstrumentBase() {
    static CNullInitializedPointer<CInstrumentBase, false, false> pointer;
    return pointer;
}
