#pragma once
// A private temporary folder for one test, removed with everything in it afterwards.

#include <string>

namespace vtxtest {

class CTestFolder {
public:
    CTestFolder();
    ~CTestFolder();
    CTestFolder(const CTestFolder&) = delete;
    CTestFolder& operator=(const CTestFolder&) = delete;

    // Without a trailing "/".
    const std::string& Path() const { return m_path; }
    std::string operator/(const std::string& name) const { return m_path + "/" + name; }

private:
    std::string m_path;
};

// Writes text to path (created or truncated); false on failure.
bool WriteFile(const std::string& path, const std::string& text);
// The whole file; empty when it cannot be read.
std::string ReadFile(const std::string& path);
// An executable shell script.
bool WriteScript(const std::string& path, const std::string& body);

}  // namespace vtxtest
