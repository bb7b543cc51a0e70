#pragma once
// Private temporary folders and whole-file reads and writes for the tests that touch the disk.
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace vtxtest {

// A fresh folder under TMPDIR, removed with everything in it; links inside are not followed.
class CTestFolder {
public:
    CTestFolder() {
        const char* tmp = std::getenv("TMPDIR");
        std::string pattern = std::string(tmp != nullptr && *tmp != '\0' ? tmp : "/tmp") + "/vtx-test.XXXXXX";
        if (mkdtemp(&pattern[0]) != nullptr) m_path = pattern;
    }
    ~CTestFolder() {
        std::error_code ignored;
        if (!m_path.empty()) std::filesystem::remove_all(m_path, ignored);
    }
    CTestFolder(const CTestFolder&) = delete;
    CTestFolder& operator=(const CTestFolder&) = delete;

    const std::string& Path() const { return m_path; }  // empty when it could not be made
    std::string operator/(const std::string& name) const { return m_path + "/" + name; }

private:
    std::string m_path;
};

// The whole file; empty when it cannot be read.
inline std::string ReadFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// Creates or truncates; false on failure.
inline bool WriteFile(const std::string& path, const std::string& bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    out.close();
    return !out.fail();
}

inline bool WriteScript(const std::string& path, const std::string& body) {
    return WriteFile(path, "#!/bin/sh\n" + body) && chmod(path.c_str(), 0755) == 0;
}

}  // namespace vtxtest
