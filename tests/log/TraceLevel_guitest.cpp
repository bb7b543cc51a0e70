#include "log/TraceLevel.h"

#include <gtest/gtest.h>
#include <wx/choice.h>

#include "tests/common/WxTestHelpers.h"

namespace {

TEST(TraceLevelDialog, OkAppliesTheChoicesAndCancelChangesNothing) {
    const struct {
        int button, result, update, proc;
    } cases[] = {{CTraceLevel::kOkId, wxID_OK, 3, 0}, {CTraceLevel::kCancelId, wxID_CANCEL, 2, 1}};
    for (const auto& c : cases) {
        CTraceField update("Update", 2), proc("ExternalProc", 1), odd("Odd", 7);
        CTraceLevel* dialog = new CTraceLevel(nullptr);
        for (CTraceField* field : {&update, &proc, &odd}) dialog->AddField(field);
        ASSERT_EQ(dialog->GetRowCount(), 3u);
        // The four levels only; a level outside them selects none.
        EXPECT_EQ(dialog->GetRow(2)->GetChoice()->GetCount(), 4u);
        EXPECT_EQ(dialog->GetRow(2)->GetChoice()->GetSelection(), wxNOT_FOUND);
        dialog->CallAfter([dialog, c] {
            dialog->GetRow(0)->GetChoice()->SetStringSelection("All");
            dialog->GetRow(1)->GetChoice()->SetSelection(0);
            wxCommandEvent event(wxEVT_BUTTON, c.button);
            event.SetEventObject(dialog->FindWindow(c.button));
            dialog->FindWindow(c.button)->GetEventHandler()->ProcessEvent(event);
        });
        EXPECT_EQ(dialog->ShowModal(), c.result);
        EXPECT_EQ(update.GetLevel(), c.update);
        EXPECT_EQ(proc.GetLevel(), c.proc);
        EXPECT_EQ(odd.GetLevel(), 7);  // untouched row keeps even an odd level
        dialog->Destroy();
        vtxtest::Pump();
    }
}

}  // namespace
