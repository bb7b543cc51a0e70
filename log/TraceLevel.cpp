#include "log/TraceLevel.h"

#include <wx/button.h>
#include <wx/choice.h>
#include <wx/sizer.h>
#include <wx/stattext.h>

#include <cstdint>

namespace {
// The toolkit's client data is a pointer: the level travels in it as a number.
// NOLINTNEXTLINE(performance-no-int-to-ptr)
void* LevelData(int level) { return reinterpret_cast<void*>(static_cast<intptr_t>(level)); }
int DataLevel(void* data) { return static_cast<int>(reinterpret_cast<intptr_t>(data)); }
}  // namespace

CTraceLevelField::CTraceLevelField(wxWindow* parent, int row, CTraceField* field)
    : wxPanel(parent, kPanelIdBase + row), m_field(field), m_row(row) {
    const int level = field ? field->GetLevel() : 0;
    m_name =
        new wxStaticText(this, kTextIdBase + row, wxString::FromUTF8(field ? field->GetName() : std::string()));
    m_choice = new wxChoice(this, wxID_ANY);
    int selection = wxNOT_FOUND;
    for (int entry = 0; entry <= 3; ++entry) {
        const int index = m_choice->Append(wxString::FromUTF8(GetTraceLevelText(entry)), LevelData(entry));
        if (entry == level) selection = index;
    }
    // A level outside the list selects no entry and is kept unless the user picks one.
    m_choice->SetSelection(selection);

    wxBoxSizer* sizer = new wxBoxSizer(wxHORIZONTAL);
    sizer->Add(m_name, 1, wxALIGN_CENTER_VERTICAL | wxALL, 5);
    sizer->Add(m_choice, 0, wxALIGN_CENTER_VERTICAL | wxALL, 5);
    SetSizer(sizer);
}

int CTraceLevelField::GetSelectedLevel() const {
    const int selection = m_choice->GetSelection();
    if (selection == wxNOT_FOUND) return m_field ? m_field->GetLevel() : 0;
    return DataLevel(m_choice->GetClientData(static_cast<unsigned>(selection)));
}

void CTraceLevelField::Apply() {
    if (m_field && m_choice->GetSelection() != wxNOT_FOUND) m_field->SetLevel(GetSelectedLevel());
}

CTraceLevel::CTraceLevel(wxWindow* parent)
    : wxDialog(parent, wxID_ANY, wxString::FromUTF8("Set Trace Level"), wxDefaultPosition, wxDefaultSize,
               wxDEFAULT_DIALOG_STYLE) {
    wxBoxSizer* top = new wxBoxSizer(wxVERTICAL);
    m_rowSizer = new wxBoxSizer(wxVERTICAL);
    top->Add(m_rowSizer, 1, wxEXPAND | wxALL, 5);

    wxBoxSizer* buttons = new wxBoxSizer(wxHORIZONTAL);
    buttons->Add(new wxButton(this, kOkId, wxString::FromUTF8("OK")), 0, wxALL, 5);
    buttons->Add(new wxButton(this, kCancelId, wxString::FromUTF8("Cancel")), 0, wxALL, 5);
    top->Add(buttons, 0, wxALIGN_RIGHT | wxALL, 5);
    SetSizerAndFit(top);

    SetAffirmativeId(kOkId);
    SetEscapeId(kCancelId);
    Bind(wxEVT_BUTTON, &CTraceLevel::OnOk, this, kOkId);
    Bind(wxEVT_BUTTON, &CTraceLevel::OnCancel, this, kCancelId);
}

CTraceLevelField* CTraceLevel::AddField(CTraceField* field) {
    CTraceLevelField* row = new CTraceLevelField(this, static_cast<int>(m_rows.size()), field);
    m_rows.push_back(row);
    m_rowSizer->Add(row, 0, wxEXPAND);
    GetSizer()->SetSizeHints(this);
    Layout();
    return row;
}

void CTraceLevel::Apply() {
    for (CTraceLevelField* row : m_rows) row->Apply();
}

void CTraceLevel::OnOk(wxCommandEvent&) {
    Apply();
    Finish(wxID_OK);
}

void CTraceLevel::OnCancel(wxCommandEvent&) { Finish(wxID_CANCEL); }

void CTraceLevel::Finish(int code) {
    if (IsModal()) {
        EndModal(code);
    } else {
        SetReturnCode(code);
        Hide();
    }
}
