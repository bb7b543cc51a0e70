#pragma once
// The update screen: the program's only view. It tells the user that the software is being
// upgraded, shows one status line and one progress bar, and hosts the update procedure, which it
// starts on its first activation.

#include <memory>

#include "app/InstrumentView.h"
#include "app/ViewCommands.h"
#include "foundation/InstrumentEnums.h"
#include "language/InstrumentLanguage.h"
#include "ui/UIControls.h"
#include "update/Update.h"

// The page body of the update screen: the progress bar and the status line below it.
class CUIUpdate : public CUIBase, public CUpdateScreen {
public:
    // parent null: a body without controls (a view without a window).
    CUIUpdate(wxWindow* parent, const CRect& viewRect);
    ~CUIUpdate() override;

    // Both may be called from any thread; the controls guard their values and repaint on the
    // GUI thread.
    void ShowStatusText(const std::string& utf8) override;
    void ShowProgress(int value, int maximum) override;

    // Child windows of the view, which deletes them; null without a window.
    CTextField* GetStatusLine() const { return m_statusLine; }
    CInstrumentProgressBase* GetProgressBar() const { return m_progressBar; }

private:
    CInstrumentProgressBase* m_progressBar = nullptr;
    CTextField* m_statusLine = nullptr;
};

class CInstrumentViewUpdate : public CInstrumentViewBase<CInstrumentViewUpdate>,
                              public CUIHeader,
                              public CUIUpdate,
                              public CViewParamCallBack<eUpdateCommandLineSpecialCmdParamCmd> {
public:
    explicit CInstrumentViewUpdate(const CInstrumentViewCreatorNeeds& needs);
    ~CInstrumentViewUpdate() override;

    // Shows the view and, the first time in the program run, starts the update procedure.
    void Activate() override;
    // The special command from the command line.
    void ReceiveParam(eUpdateCommandLineSpecialCmdParamCmd command) override;

    CUpdateProcedure& GetProcedure() { return *m_procedure; }
    // Whether this run has started the procedure (once per program run, whatever view object).
    static bool HasStartedProcedure();
    // The view's own command, after the four ticks.
    uint32_t GetUpdateCommandId() const { return m_updateCommandId; }

private:
    bool OnTick(uint32_t id, uint32_t param);
    bool OnUpdateCommand(uint32_t id, uint32_t param);

    // The program's language object (not owned), through which the screen labels its header.
    CInstrumentLanguage* m_language;
    // Shared with the worker thread, which may outlive the screen at shutdown.
    std::shared_ptr<CUpdateProcedure> m_procedure;
    uint32_t m_updateCommandId = 0;
};

// The receiver most recently constructed; cleared at program start.
extern CViewParamCallBack<eUpdateCommandLineSpecialCmdParamCmd>* g_updateSpecialCommandReceiver;
