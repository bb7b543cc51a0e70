#include "tests/common/WxAssert.h"

#include <gtest/gtest.h>
#include <wx/debug.h>
#include <wx/string.h>

#include <atomic>
#include <mutex>

namespace vtxtest {
namespace {
std::mutex g_mutex;
int g_expecting = 0;
int g_count = 0;
std::string g_cond, g_func, g_file;
int g_line = 0;

void Handler(const wxString& file, int line, const wxString& func, const wxString& cond,
             const wxString& msg) {
    std::lock_guard<std::mutex> lock(g_mutex);
    if (g_expecting > 0) {
        ++g_count;
        g_cond = cond.utf8_string();
        g_func = func.utf8_string();
        g_file = file.utf8_string();
        g_line = line;
        return;
    }
    ADD_FAILURE() << "wx assertion failed: " << cond.utf8_string() << " in "
                  << func.utf8_string() << " at " << file.utf8_string() << ":" << line << " "
                  << msg.utf8_string();
}
}  // namespace

void InstallWxAssertHandler() { wxSetAssertHandler(Handler); }

ExpectWxAsserts::ExpectWxAsserts() {
    std::lock_guard<std::mutex> lock(g_mutex);
    ++g_expecting;
    g_count = 0;
}
ExpectWxAsserts::~ExpectWxAsserts() {
    std::lock_guard<std::mutex> lock(g_mutex);
    --g_expecting;
}
int ExpectWxAsserts::Count() const {
    std::lock_guard<std::mutex> lock(g_mutex);
    return g_count;
}
std::string ExpectWxAsserts::LastCondition() const {
    std::lock_guard<std::mutex> lock(g_mutex);
    return g_cond;
}
std::string ExpectWxAsserts::LastFunction() const {
    std::lock_guard<std::mutex> lock(g_mutex);
    return g_func;
}
std::string ExpectWxAsserts::LastFile() const {
    std::lock_guard<std::mutex> lock(g_mutex);
    return g_file;
}
int ExpectWxAsserts::LastLine() const {
    std::lock_guard<std::mutex> lock(g_mutex);
    return g_line;
}

}  // namespace vtxtest
