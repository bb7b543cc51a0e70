#include "tests/common/WxAssert.h"

#include <gtest/gtest.h>
#include <wx/debug.h>
#include <wx/string.h>

namespace vtxtest {
namespace {
void Handler(const wxString& file, int line, const wxString& func, const wxString& cond, const wxString& msg) {
    ADD_FAILURE() << "wx assertion failed: " << cond.utf8_string() << " in " << func.utf8_string() << " at "
                  << file.utf8_string() << ":" << line << " " << msg.utf8_string();
}
}  // namespace

void InstallWxAssertHandler() { wxSetAssertHandler(Handler); }

}  // namespace vtxtest
