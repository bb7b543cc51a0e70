// The frame's server view: the drawing contexts of each frame get that frame's client area.
#include "app/MainFrame.h"

#include <gtest/gtest.h>

#include "app/InstrumentBase.h"
#include "tests/common/WxTestHelpers.h"

TEST(MainFrame, EachFrameHandsItsOwnClientRectangleToTheDrawingContexts) {
    for (const wxSize size : {wxSize(640, 480), wxSize(320, 200)}) {
        auto* frame = new CMainFrame(wxEmptyString, wxPoint(0, 0), size, wxBORDER_NONE);
        const wxRect client = frame->GetClientRectangle();
        ASSERT_NE(g_drawingContext, nullptr);
        EXPECT_EQ(*g_drawingContext->GetClientRect(), client) << size.x;
        EXPECT_EQ(*GetViewInstrumentBase().Get()->GetClientRect(), client) << size.x;
        delete frame;
        vtxtest::Pump(20);
    }
}
