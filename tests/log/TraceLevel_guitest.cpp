#include "log/TraceLevel.h"

#include <gtest/gtest.h>
#include <wx/button.h>
#include <wx/choice.h>
#include <wx/stattext.h>

#include <cstdint>
#include <mutex>
#include <vector>

#include "tests/common/WxTestHelpers.h"

namespace {

class CCaptureSink : public CLogInterface {
public:
    void Log(int type, const std::string&, int, const std::string&) override {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_types.push_back(type);
    }
    void Flush() override {}
    std::vector<int> Types() {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_types;
    }

private:
    std::mutex m_mutex;
    std::vector<int> m_types;
};

void Click(wxDialog* dialog, int id) {
    wxWindow* button = dialog->FindWindow(id);
    ASSERT_NE(button, nullptr);
    wxCommandEvent event(wxEVT_BUTTON, id);
    event.SetEventObject(button);
    button->GetEventHandler()->ProcessEvent(event);
}

int Level(wxChoice* choice, int entry) {
    return static_cast<int>(reinterpret_cast<intptr_t>(choice->GetClientData(static_cast<unsigned>(entry))));
}

TEST(TraceLevelDialog, RowsShowNamesLevelsAndIdentifiers) {
    CTraceField update("Update", 2), proc("ExternalProc", 0), odd("Odd", 7);
    CTraceLevel* dialog = new CTraceLevel(nullptr);
    EXPECT_EQ(dialog->GetTitle(), "Set Trace Level");
    ASSERT_NE(dialog->FindWindow(5100), nullptr);
    EXPECT_EQ(static_cast<wxButton*>(dialog->FindWindow(5100))->GetLabel(), "OK");
    EXPECT_EQ(static_cast<wxButton*>(dialog->FindWindow(5101))->GetLabel(), "Cancel");
    dialog->AddField(&update);
    dialog->AddField(&proc);
    dialog->AddField(&odd);
    ASSERT_EQ(dialog->GetRowCount(), 3u);

    for (int row = 0; row < 3; ++row) {
        wxWindow* panel = dialog->FindWindow(1000 + row);
        ASSERT_NE(panel, nullptr);
        EXPECT_EQ(panel, dialog->GetRow(row));
        ASSERT_NE(panel->FindWindow(1500 + row), nullptr);
    }
    EXPECT_EQ(static_cast<wxStaticText*>(dialog->FindWindow(1500))->GetLabel(), "Update");
    EXPECT_EQ(static_cast<wxStaticText*>(dialog->FindWindow(1501))->GetLabel(), "ExternalProc");

    wxChoice* choice = dialog->GetRow(0)->GetChoice();
    ASSERT_EQ(choice->GetCount(), 4u);
    const char* const texts[] = {"None", "Trace1", "Trace2", "All"};
    for (int entry = 0; entry < 4; ++entry) {
        EXPECT_EQ(choice->GetString(entry), texts[entry]);
        EXPECT_EQ(Level(choice, entry), entry);
    }
    EXPECT_EQ(choice->GetStringSelection(), "Trace2");
    EXPECT_EQ(dialog->GetRow(1)->GetChoice()->GetStringSelection(), "None");
    // A level outside 0 to 3 is shown for what it is.
    EXPECT_EQ(dialog->GetRow(2)->GetChoice()->GetStringSelection(), "Unknown Type");
    dialog->Destroy();
    vtxtest::Pump();
}

TEST(TraceLevelDialog, OkAppliesTheChoices) {
    CTraceField update("Update", 2), proc("ExternalProc", 1), odd("Odd", 7);
    CTraceLevel* dialog = new CTraceLevel(nullptr);
    dialog->AddField(&update);
    dialog->AddField(&proc);
    dialog->AddField(&odd);
    dialog->GetRow(0)->GetChoice()->SetStringSelection("All");
    dialog->GetRow(1)->GetChoice()->SetStringSelection("None");
    Click(dialog, 5100);
    EXPECT_EQ(update.GetLevel(), 3);
    EXPECT_EQ(proc.GetLevel(), 0);
    EXPECT_EQ(odd.GetLevel(), 7);  // untouched row keeps even an odd level
    EXPECT_EQ(dialog->GetReturnCode(), wxID_OK);
    dialog->Destroy();
    vtxtest::Pump();

    // Now data traces of the module pass.
    CCaptureSink sink;
    LogData(&update, "bytes", "42");
    LogData(&proc, "bytes", "42");
    EXPECT_EQ(sink.Types(), std::vector<int>{eLogData});
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

TEST(TraceLevelDialog, ModalRunEndsWithOk) {
    CTraceField update("Update", 0);
    CTraceLevel* dialog = new CTraceLevel(nullptr);
    dialog->AddField(&update);
    dialog->CallAfter([dialog] {
        dialog->GetRow(0)->GetChoice()->SetSelection(1);
        Click(dialog, 5100);
    });
    EXPECT_EQ(dialog->ShowModal(), wxID_OK);
    EXPECT_EQ(update.GetLevel(), 1);
    dialog->Destroy();
    vtxtest::Pump();
}

}  // namespace
