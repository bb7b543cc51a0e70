#include "update/os/FileInfo.h"

#include <glob.h>
#include <sys/stat.h>

namespace {

// The type tests are single bits of the type-and-mode field on purpose: a symbolic link (0120000)
// counts as a regular file and is listed like one; a link to a folder is never descended into.
constexpr unsigned kRegularFileBit = 1u << 15;
constexpr unsigned kFolderBit = 1u << 14;

const wxDateTime& InvalidDateTime() {
    static const wxDateTime invalid;
    return invalid;
}

wxDateTime FromSeconds(time_t seconds) {
    return wxDateTime(wxLongLong(static_cast<wxLongLong_t>(seconds) * 1000));
}

// glob() without flags; the paths it matched, or false on a read error. No match is no error.
bool Match(const std::string& pattern, std::vector<std::string>& paths) {
    paths.clear();
    glob_t found{};
    const int rc = glob(pattern.c_str(), 0, nullptr, &found);
    if (rc == 0) {
        for (size_t i = 0; i < found.gl_pathc; ++i) paths.emplace_back(found.gl_pathv[i]);
    }
    globfree(&found);
    return rc == 0 || rc == GLOB_NOMATCH;
}

}  // namespace

CFileInfo::CFileInfo()
    : m_creationTime(InvalidDateTime()),
      m_lastAccessTime(InvalidDateTime()),
      m_lastWriteTime(InvalidDateTime()) {}

CFileInfo::CFileInfo(const std::string& path, const struct stat& status)
    : m_path(path),
      m_creationTime(FromSeconds(status.st_ctime)),
      m_lastAccessTime(FromSeconds(status.st_atime)),
      m_lastWriteTime(FromSeconds(status.st_mtime)),
      m_size(static_cast<uint64_t>(status.st_size)) {}

CFileInfo::~CFileInfo() = default;

const std::string& CFileInfo::GetPath() const { return m_path; }
const wxDateTime& CFileInfo::GetCreationTime() const { return m_creationTime; }
const wxDateTime& CFileInfo::GetLastAccessTime() const { return m_lastAccessTime; }
const wxDateTime& CFileInfo::GetLastWriteTime() const { return m_lastWriteTime; }
uint64_t CFileInfo::GetSize() const { return m_size; }

CFileInfoArray::~CFileInfoArray() { Clear(); }

int CFileInfoArray::AddFile(const std::string& pattern) {
    std::vector<std::string> paths;
    if (!Match(pattern, paths) || paths.empty()) return -1;
    struct stat status {};
    if (lstat(paths.front().c_str(), &status) != 0) return -1;
    if ((static_cast<unsigned>(status.st_mode) & kRegularFileBit) == 0) return -1;
    m_files.push_back(new CFileInfo(paths.front(), status));
    return static_cast<int>(m_files.size() - 1);
}

int CFileInfoArray::ScanFolder(const std::string& folderWithSlash, const std::string& pattern, bool recursive) {
    int added = 0;
    std::vector<std::string> paths;
    struct stat status {};
    if (recursive) {
        if (!Match(folderWithSlash + "*", paths)) m_scanError = true;
        for (const std::string& path : paths) {
            if (lstat(path.c_str(), &status) != 0) continue;
            if ((static_cast<unsigned>(status.st_mode) & kFolderBit) == 0) continue;
            added += ScanFolder(path + "/", pattern, true);
        }
    }
    if (!Match(folderWithSlash + pattern, paths)) m_scanError = true;
    for (const std::string& path : paths) {
        if (lstat(path.c_str(), &status) != 0) continue;
        if ((static_cast<unsigned>(status.st_mode) & kRegularFileBit) == 0) continue;
        m_files.push_back(new CFileInfo(path, status));
        ++added;
    }
    return added;
}

size_t CFileInfoArray::Count() const { return m_files.size(); }

std::string CFileInfoArray::GetPath(size_t index) const {
    return index < m_files.size() ? m_files[index]->GetPath() : std::string();
}

const wxDateTime& CFileInfoArray::GetLastWriteTime(size_t index) const {
    return index < m_files.size() ? m_files[index]->GetLastWriteTime() : InvalidDateTime();
}

const CFileInfo* CFileInfoArray::Get(size_t index) const {
    return index < m_files.size() ? m_files[index] : nullptr;
}

void CFileInfoArray::Clear() {
    for (CFileInfo*& file : m_files) {
        delete file;
        file = nullptr;
    }
    m_files.clear();
}
