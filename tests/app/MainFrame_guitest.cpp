// The frame's server view: the drawing contexts take the client area of the process's first frame,
// and keep it for every later one, as the framework always has.
#include "app/MainFrame.h"

#include <gtest/gtest.h>

#include "app/InstrumentBase.h"
#include "tests/common/WxTestHelpers.h"

TEST(MainFrame, TheDrawingContextsKeepTheFirstFramesClientRectangle) {
    wxRect first;
    for (const wxSize size : {wxSize(640, 480), wxSize(320, 200)}) {
        auto* frame = new CMainFrame(wxEmptyString, wxPoint(0, 0), size, wxBORDER_NONE);
        if (first.IsEmpty()) first = frame->GetClientRectangle();
        ASSERT_NE(g_drawingContext, nullptr);
        EXPECT_EQ(*g_drawingContext->GetClientRect(), first) << size.x;
        EXPECT_EQ(*GetViewInstrumentBase().Get()->GetClientRect(), first) << size.x;
        EXPECT_EQ(g_drawingContext->GetDefaultFont()->GetFaceName(), "Arial") << size.x;
        delete frame;
        vtxtest::Pump(20);
    }
}
