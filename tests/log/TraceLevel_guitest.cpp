#include "log/TraceLevel.h"

#include <gtest/gtest.h>
#include <wx/choice.h>

#include "tests/common/WxTestHelpers.h"

namespace {

void Click(wxDialog* dialog, int id) {
    wxCommandEvent event(wxEVT_BUTTON, id);
    event.SetEventObject(dialog->FindWindow(id));
    dialog->FindWindow(id)->GetEventHandler()->ProcessEvent(event);
}

TEST(TraceLevelDialog, OkAppliesTheChoicesAndEndsTheModalRun) {
    CTraceField update("Update", 2), proc("ExternalProc", 1), odd("Odd", 7);
    CTraceLevel* dialog = new CTraceLevel(nullptr);
    for (CTraceField* field : {&update, &proc, &odd}) dialog->AddField(field);
    ASSERT_EQ(dialog->GetRowCount(), 3u);
    // The four levels only; a level outside them selects none.
    EXPECT_EQ(dialog->GetRow(2)->GetChoice()->GetCount(), 4u);
    EXPECT_EQ(dialog->GetRow(2)->GetChoice()->GetSelection(), wxNOT_FOUND);
    dialog->CallAfter([dialog] {
        dialog->GetRow(0)->GetChoice()->SetStringSelection("All");
        dialog->GetRow(1)->GetChoice()->SetSelection(0);
        Click(dialog, CTraceLevel::kOkId);
    });
    EXPECT_EQ(dialog->ShowModal(), wxID_OK);
    EXPECT_EQ(update.GetLevel(), 3);
    EXPECT_EQ(proc.GetLevel(), 0);
    EXPECT_EQ(odd.GetLevel(), 7);  // untouched row keeps even an odd level
    dialog->Destroy();
    vtxtest::Pump();
}

TEST(TraceLevelDialog, CancelChangesNothing) {
    CTraceField update("Update", 2);
    CTraceLevel* dialog = new CTraceLevel(nullptr);
    dialog->AddField(&update);
    dialog->GetRow(0)->GetChoice()->SetStringSelection("None");
    Click(dialog, CTraceLevel::kCancelId);
    EXPECT_EQ(update.GetLevel(), 2);
    dialog->Destroy();
    vtxtest::Pump();
}

}  // namespace
