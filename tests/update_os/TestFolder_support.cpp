#include "tests/update_os/TestFolder.h"

#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <vector>

namespace vtxtest {

CTestFolder::CTestFolder() {
    const char* tmp = std::getenv("TMPDIR");
    std::string pattern = std::string(tmp != nullptr && *tmp != '\0' ? tmp : "/tmp") + "/vtx-update-os.XXXXXX";
    std::vector<char> buffer(pattern.begin(), pattern.end());
    buffer.push_back('\0');
    if (mkdtemp(buffer.data()) != nullptr) m_path = buffer.data();
}

CTestFolder::~CTestFolder() {
    if (m_path.empty()) return;
    std::error_code ignored;
    // remove_all never follows symbolic links.
    std::filesystem::remove_all(m_path, ignored);
}

bool WriteFile(const std::string& path, const std::string& text) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << text;
    file.close();
    return !file.fail();
}

std::string ReadFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

bool WriteScript(const std::string& path, const std::string& body) {
    return WriteFile(path, "#!/bin/sh\n" + body) && chmod(path.c_str(), 0755) == 0;
}

}  // namespace vtxtest
