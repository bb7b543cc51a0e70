#include "tests/app/AppTestViews.h"

#include <wx/thread.h>

#include <mutex>

namespace vtxtest {
namespace {
std::mutex g_mutex;
std::vector<SViewEntry> g_entries;
}  // namespace

TInstrumentViewItem<CFirstTestView> g_firstTestViewItem;
TInstrumentViewItem<CSecondTestView> g_secondTestViewItem;

void AddViewEntry(int view, const char* what, uint32_t id, uint32_t param) {
    const SViewEntry entry{view, what, id, param, wxIsMainThread(), std::chrono::steady_clock::now()};
    std::lock_guard<std::mutex> lock(g_mutex);
    g_entries.push_back(entry);
}

std::vector<SViewEntry> GetViewEntries(const std::string& what) {
    std::lock_guard<std::mutex> lock(g_mutex);
    std::vector<SViewEntry> chosen;
    for (const SViewEntry& entry : g_entries)
        if (what.empty() || entry.what == what) chosen.push_back(entry);
    return chosen;
}

void ClearViewEntries() {
    std::lock_guard<std::mutex> lock(g_mutex);
    g_entries.clear();
}

}  // namespace vtxtest
