#include "app/InstrumentMain.h"

#include <atomic>

#include "app/CommandLine.h"
#include "app/InstrumentBase.h"
#include "ui/InstrumentLayout.h"
#include "app/InstrumentView.h"
#include "app/ViewCommands.h"
#include "app/ViewManager.h"
#include "foundation/InstrumentSettings.h"
#include "foundation/TextFile.h"
#include "update/os/ComputerControl.h"
#include "update/locations/InstrumentLocations.h"

// ---------------------------------------------------------------------------------------------
// CInstrumentFactoryQC

bool CInstrumentFactoryQC::Read() { return ReadFile(GetFactoryQcFile()); }

bool CInstrumentFactoryQC::ReadFile(const std::string& path) {
    m_values.clear();
    CTextFileReader reader(1024);
    if (!reader.Open(path)) return false;
    static const std::string separator = " = ";
    while (!reader.IsEof()) {
        const std::string line = reader.ReadLine();
        if (line.empty()) continue;
        const std::string::size_type at = line.find(separator);
        if (at == std::string::npos || at == 0) {
            m_values.clear();
            return false;
        }
        m_values[line.substr(0, at)] = line.substr(at + separator.size());
    }
    return true;
}

std::string CInstrumentFactoryQC::Get(const std::string& key) const {
    const auto it = m_values.find(key);
    return it == m_values.end() ? std::string() : it->second;
}

// ---------------------------------------------------------------------------------------------
// Ticks

namespace {
std::atomic<int32_t> g_tickCounter{0};

const struct {
    eViewTick tick;
    int32_t every;
} kTicks[] = {{eTick100ms, 1}, {eTick1s, 10}, {eTick1min, 600}, {eTick2min, 1200}};
}  // namespace

bool PostDueTicks() {
    CInstrumentViewInterface* view = GetActiveView();
    if (!view) return false;
    // A signed count, as the instrument has always kept it: after 2^31 ticks (more than six years)
    // it goes on from the most negative value, wrapping as the instrument's PC does rather than
    // overflowing, and the multiples are tested on the signed value.
    const int32_t counter =
        static_cast<int32_t>(static_cast<uint32_t>(g_tickCounter.load(std::memory_order_relaxed)) + 1u);
    g_tickCounter.store(counter, std::memory_order_relaxed);
    for (const auto& entry : kTicks) {
        if (counter % entry.every == 0)
            PostViewCommand(view, static_cast<int32_t>(view->GetTickId(entry.tick)), 0);
    }
    return true;
}

int32_t GetTickCounter() { return g_tickCounter.load(std::memory_order_relaxed); }

void SetTickCounter(int32_t value) { g_tickCounter.store(value, std::memory_order_relaxed); }

// ---------------------------------------------------------------------------------------------
// CInstrumentMain

CInstrumentMain::CInstrumentMain(CInstrumentBase* drawingContext)
    : CLogClient("Instrument View"), CEnumEventThreadHandler<unsigned long>(kIdleEvent, kTickMs, kStopEvent) {
    m_specialCommand = GetSpecialCommandFromCommandLine();

    // The views draw with their own instrument object over the same font, rectangle and parent.
    // The copy is taken once per process and outlives every view that points at it.
    static CRect viewRect = drawingContext && drawingContext->GetClientRect() ? *drawingContext->GetClientRect()
                                                                              : CRect();
    GetViewInstrumentBase().Set(
        new CInstrumentBase(drawingContext ? drawingContext->GetDefaultFont() : nullptr, &viewRect,
                            drawingContext ? drawingContext->GetParentWindow() : nullptr));

    SetCursorVisible(false);

    CInstrumentFactoryQC qc;
    if (!qc.Read()) LogError("Could not find read QC file!");
    if (!LoadSettings()) LogError("Could not load settings!");

    GetInstrumentViewLayer().SelectDisplayVariant(GetDisplayVariant());

    CInstrumentViewCreatorNeeds needs;
    needs.instrument = GetViewInstrumentBase().Get();
    needs.viewLayer = &GetInstrumentViewLayer();
    needs.main = this;
    if (CInstrumentViewManager* manager = CSingleton<CInstrumentViewManager>::GetInstance())
        manager->CreateAllViews(needs);

    GetCommandLineFunctor().Execute(m_specialCommand);

    // The active view is set by now; from here on only the tick thread reads it.
    // A tick thread that cannot start is not reported: the update screen needs no ticks.
    (void)StartServing(kTickThreadPriorityClass);
}

CInstrumentMain::~CInstrumentMain() {
    // Shutdown goes on whether or not the tick thread answered in time (or ever ran).
    StopServing(kStopWaitMs);
    if (CInstrumentViewManager* manager = CSingleton<CInstrumentViewManager>::GetInstance())
        manager->DestroyAllViews();
    GetViewInstrumentBase().Delete();
}

void CInstrumentMain::OnEvent(unsigned long) { PostDueTicks(); }
