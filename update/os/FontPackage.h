#pragma once
// The font package is unpacked by tar in the instrument user's home folder, beside the code folder
// and the user's own files: before tar runs, the whole package is read once and judged, so that a
// damaged copy or a package made wrong is refused before any of it lands on the disk.

#include <cstddef>
#include <cstdint>
#include <string>

// The tar stream of a package, fed in pieces as it is decompressed. Accepts only folders and
// regular files named folder or folder/..., without ".." and not absolute (a leading "./" is how
// some tar calls write them, and tar drops it), and counts what they take on the disk.
class CFontPackageMembers {
public:
    explicit CFontPackageMembers(std::string folder);

    // False once the stream is refused; Cause() says why.
    bool Feed(const unsigned char* data, size_t size);
    // The stream ended: false unless it ended at a member's boundary.
    bool Finish();
    const std::string& Cause() const { return m_cause; }
    // Bytes the members take once unpacked: each file rounded up to whole 4 KiB blocks, and one
    // block more for every member's own entry.
    uint64_t UnpackedBytes() const { return m_unpacked; }

private:
    bool Refuse(const std::string& cause);
    bool Header();
    bool MemberData();
    bool NameAllowed(const std::string& name) const;
    bool PaxRecords(bool global);

    enum class eState { Header, Data, End };
    std::string m_folder;
    std::string m_cause;
    eState m_state = eState::Header;
    std::string m_block;       // the header block being collected
    std::string m_data;        // the long name or extended header being collected
    uint64_t m_remaining = 0;  // bytes of the current member's data (with padding) still to come
    uint64_t m_keep = 0;       // of those, the bytes collected into m_data
    char m_dataType = 0;
    std::string m_nextName;  // from a long-name or extended header, for the next member
    uint64_t m_nextSize = UINT64_MAX;
    uint64_t m_unpacked = 0;
    int m_zeroBlocks = 0;
};

// The package is one whole gzip stream (or several, one after another, as gzip writes them) of a
// tar archive whose members CFontPackageMembers accepts, and they fit into availableBytes.
// Otherwise cause says why.
bool IsUnpackableFontPackage(const std::string& path, const std::string& folder, uint64_t availableBytes,
                             std::string& cause);
// The same on the package's bytes.
bool IsUnpackableFontPackageImage(const std::string& bytes, const std::string& folder, uint64_t availableBytes,
                                  std::string& cause);
// Free bytes for the instrument's user in the file system holding path; 0 when unknown.
uint64_t AvailableBytes(const std::string& path);
