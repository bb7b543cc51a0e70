#include "update/InstrumentSystem.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <thread>

#include "update/os/FileInfo.h"
#include "update/os/FontPackage.h"
#include "update/os/InputChecks.h"

namespace {

std::string Failed(const std::string& path) { return path + ": " + std::strerror(errno); }

}  // namespace

CInstrumentSystem::~CInstrumentSystem() {
    // At the program's end: nobody is left to be told of a failed close.
    if (m_log >= 0) close(m_log);
}

CInstrumentTime CInstrumentSystem::Now() { return CInstrumentTime::Now(); }

void CInstrumentSystem::Pause(unsigned milliseconds) {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

bool CInstrumentSystem::ScanLogs(const std::string& folder, const std::string& pattern,
                                 std::vector<SFoundLog>& logs) {
    // The framework's scan: what it lists, and in which order, decides which of two logs of the
    // same time is the update's.
    CFileInfoArray found;
    found.ScanFolder(folder + "/", pattern, false);
    for (size_t i = 0; i < found.Count(); ++i) {
        SFoundLog log;
        log.path = found.GetPath(i);
        log.modified = static_cast<time_t>(found.GetLastWriteTime(i).GetTicks());
        struct stat status {};
        log.link = lstat(log.path.c_str(), &status) == 0 && S_ISLNK(status.st_mode);
        if (log.link) {
            log.leadsOutOf = !LiesInside(log.path, folder);
            log.leadsToOther = stat(log.path.c_str(), &status) == 0 && !S_ISREG(status.st_mode);
        }
        logs.push_back(log);
    }
    return !found.HadScanError();
}

bool CInstrumentSystem::ReadLink(const std::string& link, std::string& target) {
    char buffer[512];
    const ssize_t length = readlink(link.c_str(), buffer, sizeof(buffer) - 1);
    if (length < 0) return false;
    target.assign(buffer, static_cast<size_t>(length));
    return true;
}

bool CInstrumentSystem::FileExists(const std::string& pattern) { return ::FileExists(pattern); }

bool CInstrumentSystem::IsAbsent(const std::string& path) { return ::IsAbsent(path); }

bool CInstrumentSystem::IsReadableInput(const std::string& path, const std::string& linkTree,
                                        std::string& cause) {
    return ::IsReadableInput(path, linkTree, cause);
}

bool CInstrumentSystem::ModificationTime(const std::string& path, time_t& modified) {
    CFileInfoArray info;
    if (info.AddFile(path) < 0) return false;
    modified = static_cast<time_t>(info.GetLastWriteTime(0).GetValue().GetValue() / 1000);
    return true;
}

std::string CInstrumentSystem::Identity(const std::string& path) {
    struct stat status {};
    if (lstat(path.c_str(), &status) != 0) return std::string();
    return std::to_string(status.st_dev) + ":" + std::to_string(status.st_ino) + ":" +
           std::to_string(status.st_size) + ":" + std::to_string(status.st_mtim.tv_sec) + "." +
           std::to_string(status.st_mtim.tv_nsec) + ":" + std::to_string(status.st_ctim.tv_sec) + "." +
           std::to_string(status.st_ctim.tv_nsec);
}

bool CInstrumentSystem::ListRegularFiles(const std::string& folder, std::vector<std::string>& files,
                                         std::string& cause) {
    return ::ListRegularFiles(folder, files, cause);
}

bool CInstrumentSystem::ReadInputFile(const std::string& path, const std::string& linkTree, size_t largest,
                                      std::string& bytes, std::string& cause) {
    return ::ReadInputFile(path, linkTree, largest, bytes, cause);
}

bool CInstrumentSystem::DigestFile(const std::string& path, SFileContent& content, std::string& cause) {
    return ::DigestFile(path, content, cause);
}

bool CInstrumentSystem::LoadUpdateKeys(const std::string& folder, std::vector<SUpdateKey>& keys,
                                       std::string& cause) {
    return ::LoadUpdateKeys(folder, keys, cause);
}

bool CInstrumentSystem::IsRuntimeLibrary(const std::string& path, const std::string& soname,
                                         std::string& cause) {
    return ::IsRuntimeLibrary(path, soname, cause);
}

bool CInstrumentSystem::IsUnpackableFontPackage(const std::string& path, const std::string& folderName,
                                                std::string& cause) {
    return ::IsUnpackableFontPackage(path, folderName, AvailableBytes(FolderOf(path)), cause);
}

bool CInstrumentSystem::CopyFile(const std::string& from, const std::string& to, std::string& cause,
                                 const SCopyOptions& options) {
    return ::CopyFile(from, to, &cause, options);
}

bool CInstrumentSystem::CreateFolder(const std::string& path, std::string& cause) {
    if (::CreateFolder(path)) return true;
    cause = Failed(path);
    return false;
}

bool CInstrumentSystem::RemoveFolderTree(const std::string& folder, std::string& cause) {
    errno = 0;
    if (::RemoveFolderTree(folder)) return true;
    // Without a system error it was no folder: a link or a file in its place.
    cause = errno != 0 ? Failed(folder) : folder + ": not a folder";
    return false;
}

bool CInstrumentSystem::RemoveFile(const std::string& path, std::string& cause) {
    if (unlink(path.c_str()) == 0) return true;
    cause = Failed(path);
    return false;
}

bool CInstrumentSystem::WriteFileWhole(const std::string& path, const std::string& bytes, std::string& cause) {
    return ::WriteFileWhole(path, bytes, cause);
}

int CInstrumentSystem::RunShellCommand(const std::string& command) { return ::RunShellCommand(command); }

std::string CInstrumentSystem::RunCommandOutput(const std::string& command, bool& started, int& exitStatus) {
    return ::RunCommandOutput(command, started, exitStatus);
}

void CInstrumentSystem::FlushAllFileSystems() { ::FlushAllFileSystems(); }

bool CInstrumentSystem::OpenLog(const std::string& path, std::string& cause) {
    if (m_log >= 0) CloseLog(cause);
    // As an output stream opened for appending makes it: 0666 less the umask.
    m_log = open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0666);
    if (m_log >= 0) return true;
    cause = Failed(path);
    return false;
}

bool CInstrumentSystem::AppendLogLine(const std::string& line, std::string& cause) {
    if (m_log < 0) {
        cause = "the log is not open";
        return false;
    }
    // One write a line: appended whole at the end, also when another writer extended the file.
    const std::string text = line + "\r\n";
    size_t written = 0;
    while (written < text.size()) {
        const ssize_t n = write(m_log, text.data() + written, text.size() - written);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) {
            cause = std::string("log line not written whole: ") + (n < 0 ? std::strerror(errno) : "disk full");
            return false;
        }
        written += static_cast<size_t>(n);
    }
    // On the disk before the step it reports goes on: ext4 may otherwise commit the file's new size
    // ahead of its data, and a power cut then leaves the log's tail as zero bytes.
    if (fdatasync(m_log) == 0) return true;
    cause = std::string("log line not flushed: ") + std::strerror(errno);
    return false;
}

bool CInstrumentSystem::CloseLog(std::string& cause) {
    if (m_log < 0) return true;
    const int fd = m_log;
    m_log = -1;
    if (close(fd) == 0) return true;
    cause = std::string("log not closed: ") + std::strerror(errno);
    return false;
}

CUpdateSystem& GetInstrumentSystem() {
    static CInstrumentSystem system;
    return system;
}
