#include "update/os/FontPackage.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <utility>

namespace {

constexpr size_t kBlock = 512;
// Long names and extended headers are collected whole; a real one is a few hundred bytes.
constexpr uint64_t kLargestHeaderData = uint64_t{64} * 1024;
constexpr uint64_t kDiskBlock = 4096;

uint64_t AddSaturated(uint64_t a, uint64_t b) { return a > UINT64_MAX - b ? UINT64_MAX : a + b; }

uint64_t RoundUp(uint64_t value, uint64_t unit) {
    return value > UINT64_MAX - (unit - 1) ? UINT64_MAX : (value + unit - 1) / unit * unit;
}

// A header's number: octal text, or base-256 when the first byte's high bit is set (GNU tar's way
// for sizes of 8 GiB and more).
bool Number(const char* field, size_t width, uint64_t& value) {
    value = 0;
    const auto* bytes = reinterpret_cast<const unsigned char*>(field);
    if (bytes[0] & 0x80) {
        if (bytes[0] != 0x80) return false;  // negative
        for (size_t i = 1; i < width; ++i) {
            if (value > (UINT64_MAX >> 8)) return false;
            value = (value << 8) | bytes[i];
        }
        return true;
    }
    size_t i = 0;
    while (i < width && (field[i] == ' ' || field[i] == '\0')) ++i;
    bool digits = false;
    for (; i < width && field[i] >= '0' && field[i] <= '7'; ++i) {
        if (value > (UINT64_MAX >> 3)) return false;
        value = (value << 3) | static_cast<uint64_t>(field[i] - '0');
        digits = true;
    }
    for (; i < width; ++i) {
        if (field[i] != ' ' && field[i] != '\0') return false;
    }
    return digits;
}

std::string Text(const char* field, size_t width) { return std::string(field, strnlen(field, width)); }

// A member's name as the log and the console may show it: printable and short.
std::string Shown(const std::string& name) {
    std::string shown = name.substr(0, 80);
    for (char& c : shown) {
        if (static_cast<unsigned char>(c) < 0x20 || static_cast<unsigned char>(c) >= 0x7f) c = '?';
    }
    return shown + (name.size() > 80 ? "..." : "");
}

// Whole gzip members, one after another, decompressed into the member check.
bool Inflate(const std::function<size_t(unsigned char*, size_t)>& read, CFontPackageMembers& members,
             uint64_t availableBytes, std::string& cause) {
    z_stream z{};
    if (inflateInit2(&z, 16 + MAX_WBITS) != Z_OK) {
        cause = "cannot be decompressed";
        return false;
    }
    static constexpr size_t kPiece = size_t{64} * 1024;
    std::string in(kPiece, '\0'), out(kPiece, '\0');
    bool ended = false, outputPending = false, ok = true;
    cause.clear();
    while (ok) {
        if (z.avail_in == 0 && !outputPending) {
            const size_t got = read(reinterpret_cast<unsigned char*>(&in[0]), in.size());
            if (got == 0) break;
            z.next_in = reinterpret_cast<Bytef*>(&in[0]);
            z.avail_in = static_cast<uInt>(got);
        }
        if (ended) {
            // gzip writes one member after another when packages are joined: each must be whole.
            inflateReset(&z);
            ended = false;
        }
        z.next_out = reinterpret_cast<Bytef*>(&out[0]);
        z.avail_out = static_cast<uInt>(out.size());
        const int rc = inflate(&z, Z_NO_FLUSH);
        const size_t produced = out.size() - z.avail_out;
        outputPending = z.avail_out == 0;
        if (!members.Feed(reinterpret_cast<const unsigned char*>(out.data()), produced)) {
            cause = members.Cause();
            ok = false;
        } else if (members.UnpackedBytes() > availableBytes) {
            cause = "needs more than the " + std::to_string(availableBytes) + " bytes free";
            ok = false;
        } else if (rc == Z_STREAM_END) {
            ended = true;
            outputPending = false;
        } else if (rc != Z_OK && !(rc == Z_BUF_ERROR && z.avail_in == 0)) {
            cause = "not a whole gzip stream";
            ok = false;
        }
    }
    inflateEnd(&z);
    if (ok && !ended) cause = "not a whole gzip stream";
    if (ok && ended && !members.Finish()) cause = members.Cause();
    return cause.empty();
}

}  // namespace

CFontPackageMembers::CFontPackageMembers(std::string folder) : m_folder(std::move(folder)) {}

bool CFontPackageMembers::Refuse(const std::string& cause) {
    if (m_cause.empty()) m_cause = cause;
    return false;
}

bool CFontPackageMembers::Feed(const unsigned char* data, size_t size) {
    if (!m_cause.empty()) return false;
    while (size > 0 && m_state != eState::End) {
        if (m_state == eState::Header) {
            const size_t take = std::min(kBlock - m_block.size(), size);
            m_block.append(reinterpret_cast<const char*>(data), take);
            data += take;
            size -= take;
            if (m_block.size() == kBlock && !Header()) return false;
            continue;
        }
        const size_t take = static_cast<size_t>(std::min<uint64_t>(m_remaining, size));
        if (m_data.size() < m_keep) {
            m_data.append(reinterpret_cast<const char*>(data),
                          static_cast<size_t>(std::min<uint64_t>(take, m_keep - m_data.size())));
        }
        data += take;
        size -= take;
        m_remaining -= take;
        if (m_remaining == 0 && !MemberData()) return false;
    }
    // What follows the end of the archive is never read by tar.
    return true;
}

bool CFontPackageMembers::Finish() {
    if (!m_cause.empty()) return false;
    if (m_state == eState::Data || !m_block.empty()) return Refuse("not a whole tar archive");
    return true;
}

bool CFontPackageMembers::Header() {
    const std::string block = std::move(m_block);
    m_block.clear();
    if (block.find_first_not_of('\0') == std::string::npos) {
        // tar ends at the first block of zeros.
        m_state = eState::End;
        return true;
    }
    uint64_t stored = 0, sum = 0;
    if (!Number(&block[148], 8, stored)) return Refuse("not a tar archive");
    for (size_t i = 0; i < kBlock; ++i)
        sum += (i >= 148 && i < 156) ? ' ' : static_cast<unsigned char>(block[i]);
    if (sum != stored) return Refuse("not a tar archive");

    std::string name = Text(&block[0], 100);
    if (block.compare(257, 6, std::string("ustar\0", 6)) == 0 && block[345] != '\0')
        name = Text(&block[345], 155) + "/" + name;
    uint64_t size = 0;
    if (!Number(&block[124], 12, size)) return Refuse("not a tar archive");
    if (!m_nextName.empty()) name = m_nextName;
    if (m_nextSize != UINT64_MAX) size = m_nextSize;
    m_nextName.clear();
    m_nextSize = UINT64_MAX;

    m_dataType = block[156];
    m_keep = 0;
    m_data.clear();
    switch (m_dataType) {
        case 'L':  // the next member's long name
        case 'K':  // the next member's long link name: that member is refused for being a link
        case 'x':  // the next member's extended header
        case 'g':  // extended header for the rest of the archive
            if (size > kLargestHeaderData) return Refuse("not a tar archive");
            m_keep = size;
            break;
        case '0':
        case '\0':
        case '7':
            if (!NameAllowed(name)) return Refuse("member " + Shown(name) + " lies outside " + m_folder + "/");
            m_unpacked = AddSaturated(m_unpacked, AddSaturated(RoundUp(size, kDiskBlock), kDiskBlock));
            break;
        case '5':
            if (!NameAllowed(name)) return Refuse("member " + Shown(name) + " lies outside " + m_folder + "/");
            m_unpacked = AddSaturated(m_unpacked, kDiskBlock);
            break;
        default: return Refuse("member " + Shown(name) + " is not a file or folder");
    }
    m_remaining = RoundUp(size, kBlock);
    if (m_remaining == UINT64_MAX) return Refuse("not a tar archive");
    m_state = eState::Data;
    return m_remaining != 0 || MemberData();
}

bool CFontPackageMembers::MemberData() {
    m_state = eState::Header;
    if (m_dataType == 'L') {
        m_nextName = m_data.substr(0, m_data.find('\0'));
        if (m_nextName.empty()) return Refuse("not a tar archive");
    } else if (m_dataType == 'x' || m_dataType == 'g') {
        return PaxRecords(m_dataType == 'g');
    }
    return true;
}

bool CFontPackageMembers::PaxRecords(bool global) {
    // Records "LENGTH KEY=VALUE\n", LENGTH counting the whole record.
    size_t at = 0;
    while (at < m_data.size() && m_data[at] != '\0') {
        const size_t blank = m_data.find(' ', at);
        if (blank == std::string::npos || blank == at || blank - at > 9) return Refuse("not a tar archive");
        uint64_t length = 0;
        for (size_t i = at; i < blank; ++i) {
            if (m_data[i] < '0' || m_data[i] > '9') return Refuse("not a tar archive");
            length = length * 10 + static_cast<uint64_t>(m_data[i] - '0');
        }
        if (length <= blank - at + 1 || length > m_data.size() - at || m_data[at + length - 1] != '\n')
            return Refuse("not a tar archive");
        const std::string record = m_data.substr(blank + 1, at + length - 1 - (blank + 1));
        const size_t equals = record.find('=');
        if (equals == std::string::npos) return Refuse("not a tar archive");
        const std::string key = record.substr(0, equals), value = record.substr(equals + 1);
        if (global && (key == "path" || key == "size")) return Refuse("not a tar archive");
        if (key == "path") {
            if (value.empty()) return Refuse("not a tar archive");
            m_nextName = value;
        } else if (key == "size") {
            uint64_t size = 0;
            if (value.empty() || value.size() > 19 || value.find_first_not_of("0123456789") != std::string::npos)
                return Refuse("not a tar archive");
            for (char c : value) size = size * 10 + static_cast<uint64_t>(c - '0');
            m_nextSize = size;
        }
        at += static_cast<size_t>(length);
    }
    return true;
}

bool CFontPackageMembers::NameAllowed(const std::string& name) const {
    std::string rest = name;
    while (rest.compare(0, 2, "./") == 0) rest.erase(0, 2);
    if (rest.empty() || rest[0] == '/') return false;
    size_t start = 0;
    bool first = true;
    while (start <= rest.size()) {
        size_t end = rest.find('/', start);
        if (end == std::string::npos) end = rest.size();
        const std::string part = rest.substr(start, end - start);
        if (part == ".." || (first && part != m_folder)) return false;
        first = false;
        start = end + 1;
    }
    return true;
}

bool IsUnpackableFontPackage(const std::string& path, const std::string& folder, uint64_t availableBytes,
                             std::string& cause) {
    const int fd = open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    struct stat status {};
    if (fd < 0 || fstat(fd, &status) != 0 || !S_ISREG(status.st_mode)) {
        if (fd >= 0) close(fd);
        cause = "cannot be read";
        return false;
    }
    CFontPackageMembers members(folder);
    bool readError = false;
    const bool ok = Inflate(
        [&](unsigned char* buffer, size_t size) -> size_t {
            const ssize_t got = read(fd, buffer, size);
            if (got < 0) readError = true;
            return got > 0 ? static_cast<size_t>(got) : 0;
        },
        members, availableBytes, cause);
    close(fd);
    if (readError) cause = "cannot be read";
    return ok && !readError;
}

bool IsUnpackableFontPackageImage(const std::string& bytes, const std::string& folder, uint64_t availableBytes,
                                  std::string& cause) {
    CFontPackageMembers members(folder);
    size_t at = 0;
    return Inflate(
        [&](unsigned char* buffer, size_t size) {
            const size_t take = std::min(size, bytes.size() - at);
            std::copy_n(bytes.data() + at, take, reinterpret_cast<char*>(buffer));
            at += take;
            return take;
        },
        members, availableBytes, cause);
}

uint64_t AvailableBytes(const std::string& path) {
    struct statvfs stats {};
    if (statvfs(path.c_str(), &stats) != 0) return 0;
    const uint64_t unit = stats.f_frsize != 0 ? stats.f_frsize : stats.f_bsize;
    return static_cast<uint64_t>(stats.f_bavail) * unit;
}
