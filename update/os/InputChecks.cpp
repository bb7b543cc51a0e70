#include "update/os/InputChecks.h"

#include "update/locations/InstrumentLocations.h"

#include <dirent.h>
#include <elf.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <algorithm>
#include <vector>

namespace {

// "." and ".." taken out without looking at the disk: for a folder that does not exist.
std::string Normalised(const std::string& path) {
    std::vector<std::string> parts;
    std::string::size_type start = 0;
    while (start <= path.size()) {
        std::string::size_type end = path.find('/', start);
        if (end == std::string::npos) end = path.size();
        const std::string part = path.substr(start, end - start);
        if (part == "..") {
            if (!parts.empty()) parts.pop_back();
        } else if (!part.empty() && part != ".") {
            parts.push_back(part);
        }
        start = end + 1;
    }
    std::string out;
    for (const std::string& part : parts) out += "/" + part;
    return out.empty() ? "/" : out;
}

// The folder with its links followed as far as it exists; the part that does not exist is kept
// as written.
std::string RealFolder(const std::string& folder) {
    char real[PATH_MAX];
    if (realpath(folder.c_str(), real) != nullptr) return real;
    if (folder == "/" || folder.empty()) return "/";
    const std::string::size_type slash = folder.rfind('/');
    const std::string parent = slash == 0 ? "/" : folder.substr(0, slash);
    return Normalised(RealFolder(parent) + "/" + folder.substr(slash + 1));
}

template <class T>
bool Field(const std::string& bytes, uint64_t offset, T& value) {
    if (offset > bytes.size() || bytes.size() - offset < sizeof(T)) return false;
    std::memcpy(&value, bytes.data() + offset, sizeof(T));
    return true;
}

// DT_SONAME of a 32-bit little-endian ELF image, found through its section headers.
bool SonameOf(const std::string& image, std::string& soname) {
    Elf32_Ehdr header{};
    if (!Field(image, 0, header) || header.e_shentsize != sizeof(Elf32_Shdr)) return false;
    auto section = [&](uint32_t index, Elf32_Shdr& out) {
        return index < header.e_shnum &&
               Field(image, header.e_shoff + uint64_t{index} * sizeof(Elf32_Shdr), out);
    };
    for (uint32_t i = 0; i < header.e_shnum; ++i) {
        Elf32_Shdr dynamic{}, strings{};
        if (!section(i, dynamic)) return false;
        if (dynamic.sh_type != SHT_DYNAMIC) continue;
        if (!section(dynamic.sh_link, strings)) return false;
        for (uint64_t at = 0; at + sizeof(Elf32_Dyn) <= dynamic.sh_size; at += sizeof(Elf32_Dyn)) {
            Elf32_Dyn entry{};
            if (!Field(image, dynamic.sh_offset + at, entry) || entry.d_tag == DT_NULL) return false;
            if (entry.d_tag != DT_SONAME) continue;
            if (entry.d_un.d_val >= strings.sh_size) return false;
            const uint64_t start = uint64_t{strings.sh_offset} + entry.d_un.d_val;
            const uint64_t end = uint64_t{strings.sh_offset} + strings.sh_size;
            if (start >= image.size()) return false;
            const std::string::size_type nul = image.find('\0', static_cast<size_t>(start));
            if (nul == std::string::npos || nul >= end) return false;
            soname = image.substr(static_cast<size_t>(start), nul - static_cast<size_t>(start));
            return true;
        }
        return false;
    }
    return false;
}

}  // namespace

std::string FolderOf(const std::string& path) {
    const std::string::size_type slash = path.rfind('/');
    if (slash == std::string::npos) return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

bool IsAbsent(const std::string& path) {
    struct stat status {};
    return lstat(path.c_str(), &status) != 0 && errno == ENOENT;
}

std::string ResolvedPath(const std::string& path) {
    std::string current = path;
    for (int hops = 0; hops < 40; ++hops) {
        char target[PATH_MAX];
        const ssize_t length = readlink(current.c_str(), target, sizeof target - 1);
        if (length <= 0) {
            const std::string::size_type slash = current.rfind('/');
            return Normalised(RealFolder(FolderOf(current)) + "/" + current.substr(slash + 1));
        }
        target[length] = '\0';
        current = target[0] == '/' ? std::string(target) : JoinPath(RealFolder(FolderOf(current)), target);
    }
    return std::string();
}

bool LiesInside(const std::string& path, const std::string& folder) {
    const std::string resolved = ResolvedPath(path);
    const std::string real = RealFolder(folder);
    return !resolved.empty() && resolved.compare(0, real.size() + 1, real + "/") == 0;
}

bool IsReadableInput(const std::string& path, const std::string& linkTree, std::string& cause) {
    struct stat status {};
    if (lstat(path.c_str(), &status) != 0) {
        cause = "missing";
        return false;
    }
    if (S_ISLNK(status.st_mode)) {
        if (linkTree.empty()) {
            cause = "a link";
            return false;
        }
        if (!LiesInside(path, linkTree)) {
            cause = "a link out of " + linkTree;
            return false;
        }
        if (stat(path.c_str(), &status) != 0) {
            cause = "missing";
            return false;
        }
    }
    if (!S_ISREG(status.st_mode)) {
        cause = "not a regular file";
        return false;
    }
    return true;
}

bool IsRuntimeLibrary(const std::string& path, const std::string& soname, std::string& cause) {
    if (!IsReadableInput(path, std::string(), cause)) return false;
    // Far larger than any runtime: not read into memory.
    constexpr size_t kLargest = size_t{64} << 20;
    std::string image;
    if (!ReadInputFile(path, std::string(), kLargest, image, cause)) {
        cause = "cannot be read";
        return false;
    }
    return IsRuntimeLibraryImage(image, soname, cause);
}

bool IsRuntimeLibraryImage(const std::string& image, const std::string& soname, std::string& cause) {
    Elf32_Ehdr header{};
    std::string found;
    const bool elf = image.size() >= EI_NIDENT && std::memcmp(image.data(), ELFMAG, SELFMAG) == 0;
    if (elf && image[EI_CLASS] != ELFCLASS32) {
        cause = "not 32-bit";
    } else if (!elf || !Field(image, 0, header)) {
        cause = "not an ELF file";  // or cut short inside its header
    } else if (image[EI_DATA] != ELFDATA2LSB || header.e_machine != EM_386) {
        cause = "not for x86";
    } else if (header.e_type != ET_DYN) {
        cause = "not a shared library";
    } else if (!SonameOf(image, found) || found != soname) {
        cause = "its SONAME is not " + soname;
    } else {
        return true;
    }
    return false;
}

bool ReadInputFile(const std::string& path, const std::string& linkTree, size_t largest, std::string& bytes,
                   std::string& cause) {
    if (!IsReadableInput(path, linkTree, cause)) return false;
    const int fd = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    struct stat status {};
    if (fd < 0 || fstat(fd, &status) != 0 || !S_ISREG(status.st_mode)) {
        cause = fd < 0 ? std::strerror(errno) : "not a regular file";
        if (fd >= 0) close(fd);
        return false;
    }
    bytes.clear();
    std::string piece(size_t{64} * 1024, '\0');
    ssize_t got = 0;
    while (bytes.size() <= largest && (got = read(fd, &piece[0], piece.size())) > 0)
        bytes.append(piece, 0, static_cast<size_t>(got));
    close(fd);
    if (got < 0) cause = "cannot be read";
    if (bytes.size() > largest) cause = "too large";
    return got >= 0 && bytes.size() <= largest;
}

bool FolderNames(int folder, bool hidden, std::vector<std::string>& names) {
    names.clear();
    // The stream gets a descriptor of its own: the caller keeps working relative to folder.
    const int listing = dup(folder);
    DIR* dir = listing >= 0 ? fdopendir(listing) : nullptr;
    if (dir == nullptr) {
        if (listing >= 0) close(listing);
        return false;
    }
    while (const dirent* entry = readdir(dir)) {
        const bool dots = std::strcmp(entry->d_name, ".") == 0 || std::strcmp(entry->d_name, "..") == 0;
        if (!dots && (hidden || entry->d_name[0] != '.')) names.emplace_back(entry->d_name);
    }
    closedir(dir);
    std::sort(names.begin(), names.end());
    return true;
}

namespace {

bool ListInside(int folder, const std::string& prefix, std::vector<std::string>& files, std::string& cause) {
    std::vector<std::string> names;
    if (!FolderNames(folder, true, names)) {
        cause = "cannot be read: " + prefix;
        return false;
    }
    for (const std::string& name : names) {
        struct stat status {};
        const std::string path = prefix + name;
        if (fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
            cause = "cannot be read: " + path;
            return false;
        }
        if (S_ISREG(status.st_mode)) {
            files.push_back(path);
        } else if (S_ISDIR(status.st_mode)) {
            const int inner = openat(folder, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
            const bool listed = inner >= 0 && ListInside(inner, path + "/", files, cause);
            if (inner >= 0) close(inner);
            if (!listed) {
                if (inner < 0) cause = "cannot be read: " + path;
                return false;
            }
        } else {
            cause = "not a regular file: " + path;
            return false;
        }
    }
    return true;
}

}  // namespace

bool ListRegularFiles(const std::string& folder, std::vector<std::string>& files, std::string& cause) {
    files.clear();
    const int fd = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (fd < 0) {
        cause = "cannot be read: " + folder;
        return false;
    }
    const bool listed = ListInside(fd, folder + "/", files, cause);
    close(fd);
    for (std::string& file : files) file.erase(0, folder.size() + 1);
    return listed;
}
