#include "update/os/ComputerControl.h"

#include "tests/common/WxTestHelpers.h"

#include <gtest/gtest.h>
#include <wx/utils.h>

#include <thread>

TEST(ComputerControlCursor, RequestsFromOtherThreadsReachTheGuiThread) {
    std::thread([] { SetBusyCursor(true); }).join();
    EXPECT_FALSE(wxIsBusy());
    EXPECT_TRUE(vtxtest::WaitFor([] { return wxIsBusy(); }));
    std::thread([] { SetBusyCursor(false); }).join();
    EXPECT_TRUE(vtxtest::WaitFor([] { return !wxIsBusy(); }));
}
