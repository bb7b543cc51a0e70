#pragma once
// The service dialog "Set Trace Level": one row per trace field, each with the field's name and a
// choice of its level. "OK" applies the choices, "Cancel" changes nothing. GUI thread only.

#include <wx/dialog.h>
#include <wx/panel.h>

#include <vector>

#include "log/InstrumentLog.h"

class wxChoice;
class wxStaticText;
class wxBoxSizer;

// One row: a panel holding the field's name and its level choice.
class CTraceLevelField : public wxPanel {
public:
    static constexpr int kPanelIdBase = 1000;
    static constexpr int kTextIdBase = 1500;

    CTraceLevelField(wxWindow* parent, int row, CTraceField* field);

    CTraceField* GetTraceField() const { return m_field; }
    wxChoice* GetChoice() const { return m_choice; }
    wxStaticText* GetNameText() const { return m_name; }
    int GetRow() const { return m_row; }
    // The level of the selected entry; the field's own level when nothing is selected.
    int GetSelectedLevel() const;
    // Sets the field's level to the selected entry's.
    void Apply();

private:
    CTraceField* m_field;
    int m_row;
    wxStaticText* m_name = nullptr;
    wxChoice* m_choice = nullptr;
};

class CTraceLevel : public wxDialog {
public:
    static constexpr int kOkId = 5100;
    static constexpr int kCancelId = 5101;

    explicit CTraceLevel(wxWindow* parent);

    // Appends a row for the field (rows are numbered from 0); the field must outlive the dialog.
    CTraceLevelField* AddField(CTraceField* field);
    size_t GetRowCount() const { return m_rows.size(); }
    CTraceLevelField* GetRow(size_t row) const { return row < m_rows.size() ? m_rows[row] : nullptr; }
    // What "OK" does before the dialog closes.
    void Apply();

private:
    void OnOk(wxCommandEvent& event);
    void OnCancel(wxCommandEvent& event);
    void Finish(int code);

    wxBoxSizer* m_rowSizer = nullptr;
    std::vector<CTraceLevelField*> m_rows;
};
