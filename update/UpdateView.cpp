#include "update/UpdateView.h"

#include <atomic>

#include "app/ViewManager.h"
#include "app/WorkerThread.h"
#include "language/InstrumentLanguage.h"

CViewParamCallBack<eUpdateCommandLineSpecialCmdParamCmd>* g_updateSpecialCommandReceiver = nullptr;

namespace {
enum : uint32_t { eTextUpgradeInProgress = 417 };
const int kNormalPriority = 2;

// Set on the GUI thread before the worker starts, so the procedure never runs twice.
std::atomic<bool> g_procedureStarted{false};

TInstrumentViewItem<CInstrumentViewUpdate> s_updateViewItem(&GetCommandLineFunctor());
}  // namespace

CUIUpdate::CUIUpdate(wxWindow* parent, const CRect& viewRect) : CUIBase(parent, viewRect) {
    const CRect body = GetBodyRect();
    // The bar across the middle of the body, the status line below it.
    const int margin = body.width / 12;
    const int barHeight = 80;
    const int barTop = body.y + body.height / 3 - barHeight / 2;
    m_progressBar = new CInstrumentProgressBase(parent, CRect(body.x + margin, barTop, body.width - 2 * margin, barHeight));
    const int statusTop = barTop + barHeight + body.height / 12;
    m_statusLine = new CTextField(parent, CRect(body.x + margin, statusTop, body.width - 2 * margin,
                                                body.y + body.height - statusTop - body.height / 12));
}

CUIUpdate::~CUIUpdate() = default;

void CUIUpdate::ShowStatusText(const std::string& utf8) { m_statusLine->SetText(utf8); }

void CUIUpdate::ShowProgress(int value, int maximum) {
    m_progressBar->SetRange(maximum);
    m_progressBar->SetValue(value);
}

CInstrumentViewUpdate::CInstrumentViewUpdate(const CInstrumentViewCreatorNeeds& needs)
    : CInstrumentViewBase<CInstrumentViewUpdate>(needs, "Update"),
      CUIHeader(this, *needs.instrument->GetClientRect()),
      CUIUpdate(this, *needs.instrument->GetClientRect()),
      m_procedure(std::make_shared<CUpdateProcedure>(this)) {
    // The four ticks in their order, then the view's own command.
    m_tickIds[eTick100ms] = AddViewCommand(&CInstrumentViewUpdate::OnTick);
    m_tickIds[eTick1s] = AddViewCommand(&CInstrumentViewUpdate::OnTick);
    m_tickIds[eTick1min] = AddViewCommand(&CInstrumentViewUpdate::OnTick);
    m_tickIds[eTick2min] = AddViewCommand(&CInstrumentViewUpdate::OnTick);
    AddViewCommand(&CInstrumentViewUpdate::OnUpdateCommand);

    SetTitle(GetText(eTextUpgradeInProgress) + "...");
    GetProgressBar()->SetRange(100);
    GetProgressBar()->SetValue(0);

    g_updateSpecialCommandReceiver = this;
    GetCommandLineFunctor().SetParamReceiver(this);
}

CInstrumentViewUpdate::~CInstrumentViewUpdate() {
    if (GetCommandLineFunctor().GetParamReceiver() == this) GetCommandLineFunctor().SetParamReceiver(nullptr);
    if (g_updateSpecialCommandReceiver == this) g_updateSpecialCommandReceiver = nullptr;
    // The worker may still be running at shutdown; from now on it shows nothing.
    m_procedure->DetachScreen();
}

void CInstrumentViewUpdate::Activate() {
    CInstrumentViewBase<CInstrumentViewUpdate>::Activate();
    if (g_procedureStarted.exchange(true)) return;
    auto* holder = new std::shared_ptr<CUpdateProcedure>(m_procedure);
    if (StartWorkerThread(&UpdateThreadMain, holder, kNormalPriority) != 0) delete holder;
}

void CInstrumentViewUpdate::ReceiveParam(eUpdateCommandLineSpecialCmdParamCmd command) {
    m_procedure->SetSpecialCommand(command);
}

bool CInstrumentViewUpdate::HasStartedProcedure() { return g_procedureStarted.load(); }

// Nothing on this screen changes with time: the ticks are taken and cost no repaint.
bool CInstrumentViewUpdate::OnTick(uint32_t, uint32_t) { return true; }

bool CInstrumentViewUpdate::OnUpdateCommand(uint32_t, uint32_t) { return true; }
