#include "update/UpdateView.h"

#include <atomic>

#include "app/ViewManager.h"
#include "app/WorkerThread.h"
#include "language/InstrumentLanguage.h"

CViewParamCallBack<eUpdateCommandLineSpecialCmdParamCmd>* g_updateSpecialCommandReceiver = nullptr;

namespace {
enum : uint32_t { eTextUpgradeInProgress = 417 };
const int kNormalPriority = 2;

// The header's title ends in "..." like every status of the screen.
class CEllipsisAdder : public CInstrumentLanguage::CFormatText {
public:
    void Format(CTextBearingControl*, uint32_t, std::string& text, const CInstrumentLanguage&) const override {
        text += "...";
    }
};
const CEllipsisAdder g_ellipsis;

// Set on the GUI thread before the worker starts, so the procedure never runs twice.
std::atomic<bool> g_procedureStarted{false};

TInstrumentViewItem<CInstrumentViewUpdate> s_updateViewItem(&GetCommandLineFunctor());
}  // namespace

CUIUpdate::CUIUpdate(wxWindow* parent, const CRect& viewRect) : CUIBase(parent, viewRect) {
    if (!parent) return;
    m_progressBar = new CInstrumentProgressBase(parent, wxID_ANY, GetProgressBarRect());
    m_statusLine = new CTextField(parent, wxID_ANY, GetStatusLineRect());
}

CUIUpdate::~CUIUpdate() = default;

void CUIUpdate::ShowStatusText(const std::string& utf8) {
    if (m_statusLine) m_statusLine->SetText(utf8);
}

void CUIUpdate::ShowProgress(int value, int maximum) {
    if (!m_progressBar) return;
    m_progressBar->SetProgress(value, maximum);
}

CInstrumentViewUpdate::CInstrumentViewUpdate(const CInstrumentViewCreatorNeeds& needs)
    : CInstrumentViewBase<CInstrumentViewUpdate>(needs, "Update"),
      CUIHeader(HasWindow() ? this : nullptr, GetViewRect()),
      CUIUpdate(HasWindow() ? this : nullptr, GetViewRect()),
      m_language(&GetInstrumentLanguage()),
      m_procedure(std::make_shared<CUpdateProcedure>(this)) {
    // The four ticks in their order, then the view's own command.
    m_tickIds[eTick100ms] = AddViewCommand(&CInstrumentViewUpdate::OnTick);
    m_tickIds[eTick1s] = AddViewCommand(&CInstrumentViewUpdate::OnTick);
    m_tickIds[eTick1min] = AddViewCommand(&CInstrumentViewUpdate::OnTick);
    m_tickIds[eTick2min] = AddViewCommand(&CInstrumentViewUpdate::OnTick);
    m_updateCommandId = AddViewCommand(&CInstrumentViewUpdate::OnUpdateCommand);

    // Remembered, so that a language change re-labels the header.
    if (CTextField* title = GetTitleField())
        m_language->SetControlTextAndRemember(title, eTextUpgradeInProgress, &g_ellipsis);
    ShowProgress(0, 100);

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
