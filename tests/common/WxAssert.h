#pragma once
// A toolkit assertion is a test failure.

namespace vtxtest {

void InstallWxAssertHandler();

}  // namespace vtxtest
