#pragma once
// File scanning: what a shell-style pattern matches, with each file's type, times and size read
// without following symbolic links, collected into a list that callers search by date.

#include <wx/datetime.h>

#include <cstdint>
#include <string>
#include <vector>

struct stat;

// One file. A fresh record has an empty path and all three times invalid.
class CFileInfo {
public:
    CFileInfo();
    // Times come from the status-change, access and modification seconds.
    CFileInfo(const std::string& path, const struct stat& status);
    virtual ~CFileInfo();

    virtual const std::string& GetPath() const;
    virtual const wxDateTime& GetCreationTime() const;
    virtual const wxDateTime& GetLastAccessTime() const;
    virtual const wxDateTime& GetLastWriteTime() const;
    virtual uint64_t GetSize() const;

private:
    std::string m_path;
    wxDateTime m_creationTime;
    wxDateTime m_lastAccessTime;
    wxDateTime m_lastWriteTime;
    uint64_t m_size = 0;
};

// An ordered list of owned records, indexed from 0 in the order of adding.
class CFileInfoArray {
public:
    CFileInfoArray() = default;
    ~CFileInfoArray();
    CFileInfoArray(const CFileInfoArray&) = delete;
    CFileInfoArray& operator=(const CFileInfoArray&) = delete;

    // The first match of the pattern, when it is a regular file (type bit 15): its index, else -1.
    int AddFile(const std::string& pattern);
    // Adds every regular file in folderWithSlash matching pattern; with recursive, first descends
    // into every entry whose type has the folder bit (14). Returns the number of records added;
    // a pattern whose matching reports a read error adds nothing and sets HadScanError.
    int ScanFolder(const std::string& folderWithSlash, const std::string& pattern, bool recursive);
    bool HadScanError() const { return m_scanError; }

    size_t Count() const;
    // Empty outside the list.
    std::string GetPath(size_t index) const;
    // The shared invalid date-time outside the list.
    const wxDateTime& GetLastWriteTime(size_t index) const;
    // Null outside the list.
    const CFileInfo* Get(size_t index) const;
    void Clear();

private:
    std::vector<CFileInfo*> m_files;
    bool m_scanError = false;
};
