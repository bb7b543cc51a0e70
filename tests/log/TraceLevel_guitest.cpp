#include "log/TraceLevel.h"

#include <gtest/gtest.h>
#include <wx/button.h>
#include <wx/choice.h>
#include <wx/stattext.h>

#include <cstdint>

#include "tests/common/WxTestHelpers.h"

namespace {

void Click(wxDialog* dialog, int id) {
    wxWindow* button = dialog->FindWindow(id);
    ASSERT_NE(button, nullptr);
    wxCommandEvent event(wxEVT_BUTTON, id);
    event.SetEventObject(button);
    button->GetEventHandler()->ProcessEvent(event);
}

TEST(TraceLevelDialog, RowsShowNamesLevelsAndIdentifiers) {
    CTraceField update("Update", 2), proc("ExternalProc", 0), odd("Odd", 7);
    CTraceLevel* dialog = new CTraceLevel(nullptr);
    EXPECT_EQ(dialog->GetTitle(), "Set Trace Level");
    ASSERT_NE(dialog->FindWindow(5100), nullptr);
    EXPECT_EQ(static_cast<wxButton*>(dialog->FindWindow(5100))->GetLabel(), "OK");
    EXPECT_EQ(static_cast<wxButton*>(dialog->FindWindow(5101))->GetLabel(), "Cancel");
    // A level outside 0 to 3 is shown for what it is.
    const char* const selections[] = {"Trace2", "None", "Unknown Type"};
    CTraceField* fields[] = {&update, &proc, &odd};
    for (int row = 0; row < 3; ++row) {
        dialog->AddField(fields[row]);
        wxWindow* panel = dialog->FindWindow(1000 + row);
        ASSERT_NE(panel, nullptr);
        EXPECT_EQ(panel, dialog->GetRow(row));
        auto* name = static_cast<wxStaticText*>(panel->FindWindow(1500 + row));
        ASSERT_NE(name, nullptr);
        EXPECT_EQ(name->GetLabel(), fields[row]->GetName());
        EXPECT_EQ(dialog->GetRow(row)->GetChoice()->GetStringSelection(), selections[row]);
    }
    ASSERT_EQ(dialog->GetRowCount(), 3u);

    wxChoice* choice = dialog->GetRow(0)->GetChoice();
    ASSERT_EQ(choice->GetCount(), 4u);
    const char* const texts[] = {"None", "Trace1", "Trace2", "All"};
    for (unsigned entry = 0; entry < 4; ++entry) {
        EXPECT_EQ(choice->GetString(entry), texts[entry]);
        EXPECT_EQ(reinterpret_cast<intptr_t>(choice->GetClientData(entry)), static_cast<intptr_t>(entry));
    }
    dialog->Destroy();
    vtxtest::Pump();
}

TEST(TraceLevelDialog, OkAppliesTheChoicesAndEndsTheModalRun) {
    CTraceField update("Update", 2), proc("ExternalProc", 1), odd("Odd", 7);
    CTraceLevel* dialog = new CTraceLevel(nullptr);
    for (CTraceField* field : {&update, &proc, &odd}) dialog->AddField(field);
    dialog->CallAfter([dialog] {
        dialog->GetRow(0)->GetChoice()->SetStringSelection("All");
        dialog->GetRow(1)->GetChoice()->SetSelection(0);
        Click(dialog, 5100);
    });
    EXPECT_EQ(dialog->ShowModal(), wxID_OK);
    EXPECT_EQ(update.GetLevel(), 3);
    EXPECT_EQ(proc.GetLevel(), 0);
    EXPECT_EQ(odd.GetLevel(), 7);  // untouched row keeps even an odd level
    dialog->Destroy();
    vtxtest::Pump();
}

TEST(TraceLevelDialog, CancelChangesNothing) {
    CTraceField update("Update", 2), proc("ExternalProc", 1);
    CTraceLevel* dialog = new CTraceLevel(nullptr);
    dialog->AddField(&update);
    dialog->AddField(&proc);
    dialog->GetRow(0)->GetChoice()->SetStringSelection("None");
    dialog->GetRow(1)->GetChoice()->SetStringSelection("All");
    Click(dialog, 5101);
    EXPECT_EQ(update.GetLevel(), 2);
    EXPECT_EQ(proc.GetLevel(), 1);
    dialog->Destroy();
    vtxtest::Pump();
}

}  // namespace
