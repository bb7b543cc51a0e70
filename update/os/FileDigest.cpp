#include "update/os/FileDigest.h"

#include <fcntl.h>
#include <sodium.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <vector>

namespace {

std::string Hex(const unsigned char* bytes, size_t size) {
    static const char digits[] = "0123456789abcdef";
    std::string hex;
    for (size_t i = 0; i < size; ++i) {
        hex += digits[bytes[i] >> 4];
        hex += digits[bytes[i] & 15];
    }
    return hex;
}

}  // namespace

bool DigestFile(const std::string& path, SFileContent& content, std::string& cause) {
    if (sodium_init() < 0) {
        cause = "no SHA-256";
        return false;
    }
    const int fd = open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    struct stat status {};
    if (fd < 0 || fstat(fd, &status) != 0 || !S_ISREG(status.st_mode)) {
        cause = fd < 0 ? std::strerror(errno) : "not a regular file";
        if (fd >= 0) close(fd);
        return false;
    }
    crypto_hash_sha256_state state;
    crypto_hash_sha256_init(&state);
    std::vector<unsigned char> piece(size_t{256} * 1024);
    uint64_t size = 0;
    ssize_t got = 0;
    while ((got = read(fd, piece.data(), piece.size())) > 0) {
        crypto_hash_sha256_update(&state, piece.data(), static_cast<unsigned long long>(got));
        size += static_cast<uint64_t>(got);
    }
    const int readErrno = errno;
    close(fd);
    if (got < 0) {
        cause = std::strerror(readErrno);
        return false;
    }
    unsigned char digest[crypto_hash_sha256_BYTES];
    crypto_hash_sha256_final(&state, digest);
    content.size = size;
    content.sha256 = Hex(digest, sizeof digest);
    return true;
}

SFileContent DigestBytes(const std::string& bytes) {
    // Picks the fastest implementation; a failure leaves the portable one, which hashes the same.
    const int ready = sodium_init();
    static_cast<void>(ready);
    unsigned char digest[crypto_hash_sha256_BYTES];
    crypto_hash_sha256(digest, reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
    return SFileContent{bytes.size(), Hex(digest, sizeof digest)};
}
