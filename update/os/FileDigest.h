#pragma once
// What a file holds, as a signed manifest names it: its size and its SHA-256.

#include <cstdint>
#include <string>

struct SFileContent {
    uint64_t size = 0;
    std::string sha256;  // 64 lowercase hex digits

    bool operator==(const SFileContent& other) const { return size == other.size && sha256 == other.sha256; }
    bool operator!=(const SFileContent& other) const { return !(*this == other); }
};

// The content of a regular file, read once; a link, a FIFO or anything else is refused unread.
bool DigestFile(const std::string& path, SFileContent& content, std::string& cause);
SFileContent DigestBytes(const std::string& bytes);
