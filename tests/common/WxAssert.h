#pragma once
// Toolkit assertions become test failures unless a test says it expects them.
#include <string>

namespace vtxtest {

void InstallWxAssertHandler();

// While alive, assertions are counted instead of failing the test.
class ExpectWxAsserts {
public:
    ExpectWxAsserts();
    ~ExpectWxAsserts();
    int Count() const;
    std::string LastCondition() const;
    std::string LastFunction() const;
    std::string LastFile() const;
    int LastLine() const;
};

}  // namespace vtxtest
