#include "update/os/ComputerControl.h"

#include "tests/common/WxTestHelpers.h"

#include <gtest/gtest.h>
#include <wx/utils.h>

#include <thread>

TEST(ComputerControlCursor, RepeatedRequestsDoNotNest) {
    SetBusyCursor(true);
    SetBusyCursor(true);
    EXPECT_TRUE(wxIsBusy());
    SetBusyCursor(false);
    EXPECT_FALSE(wxIsBusy());
    SetBusyCursor(false);
    EXPECT_FALSE(wxIsBusy());

    // Hiding while busy keeps the waiting cursor; the blank one follows when busy ends.
    SetCursorVisible(false);
    SetBusyCursor(true);
    SetCursorVisible(false);
    EXPECT_TRUE(wxIsBusy());
    SetBusyCursor(false);
    EXPECT_FALSE(wxIsBusy());
    SetCursorVisible(true);
}

TEST(ComputerControlCursor, RequestsFromOtherThreadsReachTheGuiThread) {
    std::thread([] { SetBusyCursor(true); }).join();
    EXPECT_FALSE(wxIsBusy());
    EXPECT_TRUE(vtxtest::WaitFor([] { return wxIsBusy(); }));
    std::thread([] { SetBusyCursor(false); }).join();
    EXPECT_TRUE(vtxtest::WaitFor([] { return !wxIsBusy(); }));
}
