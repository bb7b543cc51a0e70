#include "update/UpdateSignature.h"

#include <fcntl.h>
#include <sodium.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "update/os/InputChecks.h"

namespace {

// Key files and signatures are a few hundred bytes.
constexpr size_t kLargestKeyFile = 4096;

// Standard base64 with padding, the whole text and nothing else.
bool FromBase64(const std::string& text, std::string& bytes) {
    bytes.clear();
    if (text.empty() || text.size() % 4 != 0) return false;
    auto value = [](char c) -> int {
        if (c >= 'A' && c <= 'Z') return c - 'A';
        if (c >= 'a' && c <= 'z') return c - 'a' + 26;
        if (c >= '0' && c <= '9') return c - '0' + 52;
        if (c == '+') return 62;
        if (c == '/') return 63;
        return -1;
    };
    const size_t padding = text.size() - std::min(text.find('='), text.size());
    if (padding > 2 || text.find_first_not_of('=', text.size() - padding) != std::string::npos) return false;
    uint32_t bits = 0;
    int count = 0;
    for (size_t i = 0; i < text.size() - padding; ++i) {
        const int v = value(text[i]);
        if (v < 0) return false;
        bits = (bits << 6) | static_cast<uint32_t>(v);
        if (++count % 4 == 0) {
            bytes += static_cast<char>((bits >> 16) & 0xff);
            bytes += static_cast<char>((bits >> 8) & 0xff);
            bytes += static_cast<char>(bits & 0xff);
            bits = 0;
        }
    }
    if (padding == 1) {
        bytes += static_cast<char>((bits >> 10) & 0xff);
        bytes += static_cast<char>((bits >> 2) & 0xff);
        return (bits & 0x3) == 0;
    }
    if (padding == 2) {
        bytes += static_cast<char>((bits >> 4) & 0xff);
        return (bits & 0xf) == 0;
    }
    return true;
}

std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    size_t start = 0;
    while (start < text.size()) {
        size_t end = text.find('\n', start);
        if (end == std::string::npos) end = text.size();
        std::string line = text.substr(start, end - start);
        if (!line.empty() && line.back() == '\r') line.pop_back();
        lines.push_back(line);
        start = end + 1;
    }
    return lines;
}

bool StartsWith(const std::string& text, const char* head) {
    return text.compare(0, std::strlen(head), head) == 0;
}

template <size_t N>
void Take(const std::string& bytes, size_t at, std::array<unsigned char, N>& out) {
    std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(at), N, out.begin());
}

}  // namespace

bool ParseUpdateKey(const std::string& text, SUpdateKey& key, std::string& cause) {
    std::string bytes;
    for (const std::string& line : Lines(text)) {
        if (line.empty() || StartsWith(line, "untrusted comment:")) continue;
        if (!FromBase64(line, bytes) || bytes.size() != 42 || bytes.compare(0, 2, "Ed") != 0) break;
        Take(bytes, 2, key.id);
        Take(bytes, 10, key.key);
        return true;
    }
    cause = "not a key";
    return false;
}

bool ParseUpdateSignature(const std::string& text, SUpdateSignature& signature, std::string& cause) {
    const std::vector<std::string> lines = Lines(text);
    std::string bytes, comment;
    cause = "malformed signature";
    if (lines.size() < 4 || !StartsWith(lines[0], "untrusted comment:") ||
        !StartsWith(lines[2], "trusted comment: "))
        return false;
    if (!FromBase64(lines[1], bytes) || bytes.size() != 74) return false;
    if (bytes.compare(0, 2, "ED") == 0) {
        signature.prehashed = true;
    } else if (bytes.compare(0, 2, "Ed") == 0) {
        signature.prehashed = false;
    } else {
        return false;
    }
    Take(bytes, 2, signature.keyId);
    Take(bytes, 10, signature.signature);
    signature.trustedComment = lines[2].substr(std::strlen("trusted comment: "));
    if (!FromBase64(lines[3], comment) || comment.size() != 64) return false;
    Take(comment, 0, signature.commentSignature);
    for (size_t i = 4; i < lines.size(); ++i) {
        if (!lines[i].empty()) return false;
    }
    cause.clear();
    return true;
}

bool VerifyUpdateSignature(const std::string& message, const SUpdateSignature& signature,
                           const std::vector<SUpdateKey>& keys, std::string& cause) {
    if (sodium_init() < 0) {
        cause = "no Ed25519";
        return false;
    }
    const auto key =
        std::find_if(keys.begin(), keys.end(), [&](const SUpdateKey& k) { return k.id == signature.keyId; });
    if (key == keys.end()) {
        cause = "signed by another key";
        return false;
    }
    std::string signedBytes = message;
    if (signature.prehashed) {
        unsigned char hash[crypto_generichash_BYTES_MAX];
        crypto_generichash(hash, sizeof hash, reinterpret_cast<const unsigned char*>(message.data()),
                           message.size(), nullptr, 0);
        signedBytes.assign(reinterpret_cast<const char*>(hash), sizeof hash);
    }
    if (crypto_sign_verify_detached(signature.signature.data(),
                                    reinterpret_cast<const unsigned char*>(signedBytes.data()),
                                    signedBytes.size(), key->key.data()) != 0) {
        cause = "signature does not match";
        return false;
    }
    std::string comment(signature.signature.begin(), signature.signature.end());
    comment += signature.trustedComment;
    if (crypto_sign_verify_detached(signature.commentSignature.data(),
                                    reinterpret_cast<const unsigned char*>(comment.data()), comment.size(),
                                    key->key.data()) != 0) {
        cause = "trusted comment does not match";
        return false;
    }
    return true;
}

bool LoadUpdateKeys(const std::string& folder, std::vector<SUpdateKey>& keys, std::string& cause) {
    keys.clear();
    const int fd = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    std::vector<std::string> names;
    if (fd < 0 && errno == ENOENT) return true;
    const bool listed = fd >= 0 && FolderNames(fd, false, names);
    const int listError = errno;
    if (fd >= 0) close(fd);
    if (!listed) {
        cause = std::string(std::strerror(listError)) + ": " + folder;
        return false;
    }
    for (const std::string& name : names) {
        std::string path = folder;
        path += "/";
        path += name;
        std::string text, why;
        SUpdateKey key;
        key.name = path;
        if (!ReadInputFile(path, std::string(), kLargestKeyFile, text, why) || !ParseUpdateKey(text, key, why)) {
            cause = why;
            cause += ": ";
            cause += path;
            keys.clear();
            return false;
        }
        keys.push_back(key);
    }
    return true;
}
