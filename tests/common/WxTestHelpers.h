#pragma once
// Helpers of the window tests, which run under Xvfb.
#include <functional>

namespace vtxtest {

// Dispatches toolkit events until done() holds or timeoutMs passes; true when done() held.
bool WaitFor(const std::function<bool()>& done, int timeoutMs = 30000);

// Dispatches the pending toolkit events for about ms milliseconds.
void Pump(int ms = 50);

}  // namespace vtxtest
