#include "update/UpdateManifest.h"

namespace {

constexpr char kFirstLine[] = "vtx-update-manifest 1";
// A size a file on the instrument's disk can have, and a double holds exactly.
constexpr uint64_t kLargestSize = uint64_t{1} << 53;

bool IsReleaseText(const std::string& text) {
    if (text.empty() || text.size() > 64) return false;
    for (char c : text) {
        const bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
        if (!plain && std::string("._+~-").find(c) == std::string::npos) return false;
    }
    return true;
}

bool IsManifestPath(const std::string& path) {
    if (path.empty() || path.size() > CUpdateManifest::kLongestPath || path[0] == '/') return false;
    for (char c : path) {
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f) return false;
    }
    size_t start = 0;
    while (start <= path.size()) {
        size_t end = path.find('/', start);
        if (end == std::string::npos) end = path.size();
        const std::string part = path.substr(start, end - start);
        if (part.empty() || part == "." || part == "..") return false;
        start = end + 1;
    }
    return true;
}

}  // namespace

bool CUpdateManifest::Parse(const std::string& text, std::string& cause) {
    m_product.clear();
    m_release.clear();
    m_files.clear();
    if (text.size() > kLargestManifest) {
        cause = "manifest too large";
        return false;
    }
    size_t start = 0;
    int number = 0;
    while (start < text.size()) {
        ++number;
        const size_t feed = text.find('\n', start);
        if (feed == std::string::npos) {
            cause = "manifest line " + std::to_string(number) + " does not end";
            return false;
        }
        std::string line = text.substr(start, feed - start);
        start = feed + 1;
        if (!line.empty() && line.back() == '\r') line.pop_back();
        const std::string where = "manifest line " + std::to_string(number) + " ";
        if (line.size() > kLongestLine) {
            cause = where + "too long";
            return false;
        }
        bool ok = false;
        if (number == 1) {
            ok = line == kFirstLine;
        } else if (number == 2) {
            m_product = line.compare(0, 8, "product ") == 0 ? line.substr(8) : std::string();
            ok = IsReleaseText(m_product);
        } else if (number == 3) {
            m_release = line.compare(0, 8, "release ") == 0 ? line.substr(8) : std::string();
            ok = IsReleaseText(m_release);
        } else if (!FileLine(line, cause)) {
            cause.insert(0, where);
            return false;
        } else {
            ok = true;
        }
        if (!ok) {
            cause = where + "malformed";
            return false;
        }
    }
    if (number < 3) {
        cause = "manifest cut short";
        return false;
    }
    return true;
}

bool CUpdateManifest::FileLine(const std::string& line, std::string& cause) {
    const size_t first = line.find(' ');
    const size_t second = first == std::string::npos ? first : line.find(' ', first + 1);
    if (second == std::string::npos) {
        cause = "malformed";
        return false;
    }
    const std::string size = line.substr(0, first), hash = line.substr(first + 1, second - first - 1);
    const std::string path = line.substr(second + 1);
    SFileContent content;
    if (size.empty() || size.size() > 16 || size.find_first_not_of("0123456789") != std::string::npos ||
        (size.size() > 1 && size[0] == '0')) {
        cause = "size malformed";
        return false;
    }
    for (char c : size) content.size = content.size * 10 + static_cast<uint64_t>(c - '0');
    if (content.size > kLargestSize) {
        cause = "size too large";
        return false;
    }
    if (hash.size() != 64 || hash.find_first_not_of("0123456789abcdef") != std::string::npos) {
        cause = "hash malformed";
        return false;
    }
    content.sha256 = hash;
    if (!IsManifestPath(path)) {
        cause = "path malformed";
        return false;
    }
    if (!m_files.emplace(path, content).second) {
        cause = "lists " + path + " twice";
        return false;
    }
    return true;
}

const SFileContent* CUpdateManifest::Find(const std::string& path) const {
    const auto found = m_files.find(path);
    return found == m_files.end() ? nullptr : &found->second;
}
