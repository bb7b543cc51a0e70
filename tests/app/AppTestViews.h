#pragma once
// Test views, registered as the program's own (a process-static view item), each writing down
// what reaches it, when and on which thread.

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "app/ViewManager.h"

namespace vtxtest {

struct SViewEntry {
    int view;          // 1 or 2
    std::string what;  // "create", "destroy", "activate", "deactivate", "tick"
    uint32_t id;       // tick: its eViewTick
    uint32_t param;
    bool onMainThread;
    std::chrono::steady_clock::time_point at;
};

// Any thread.
void AddViewEntry(int view, const char* what, uint32_t id = 0, uint32_t param = 0);
std::vector<SViewEntry> GetViewEntries(const std::string& what = std::string());
void ClearViewEntries();

inline CInstrumentViewManager& Manager() { return *CSingleton<CInstrumentViewManager>::GetInstance(); }

template <int Number>
class TJournalView : public CInstrumentViewBase<TJournalView<Number>> {
public:
    explicit TJournalView(const CInstrumentViewCreatorNeeds& needs)
        : CInstrumentViewBase<TJournalView>(needs, "Test view") {
        for (uint32_t& id : this->m_tickIds) id = this->AddViewCommand(&TJournalView::OnTick);
        AddViewEntry(Number, "create");
    }
    ~TJournalView() override { AddViewEntry(Number, "destroy"); }
    void Activate() override {
        AddViewEntry(Number, "activate");
        CInstrumentViewBase<TJournalView>::Activate();
    }
    void Deactivate() override {
        AddViewEntry(Number, "deactivate");
        CInstrumentViewBase<TJournalView>::Deactivate();
    }

private:
    bool OnTick(uint32_t id, uint32_t param) {
        for (uint32_t tick = 0; tick < eViewTickCount; ++tick)
            if (this->m_tickIds[tick] == id) AddViewEntry(Number, "tick", tick, param);
        return true;
    }
};

using CFirstTestView = TJournalView<1>;
using CSecondTestView = TJournalView<2>;

// Registered in this order during static construction.
extern TInstrumentViewItem<CFirstTestView> g_firstTestViewItem;
extern TInstrumentViewItem<CSecondTestView> g_secondTestViewItem;

}  // namespace vtxtest
