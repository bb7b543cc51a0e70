#include "update/os/ComputerControl.h"

#include "foundation/DebugTrace.h"
#include "foundation/GuiHandOff.h"
#include "foundation/TextFile.h"
#include "update/os/InputChecks.h"
#include "update/os/ShellCommands.h"
#include "update/os/SiteConfiguration.h"
#include "update/locations/InstrumentLocations.h"

#include <wx/cursor.h>
#include <wx/gdicmn.h>
#include <wx/thread.h>
#include <wx/utils.h>

#include <X11/Xlib.h>
#include <fcntl.h>
#include <glob.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <algorithm>
#include <cstdlib>
#include <mutex>
#include <vector>

const char* const kPartialCopyName = ".vtx-partial-copy";
const char* const kCopyContentDiffers = "the copy differs from the file checked: ";

namespace {

const char* const kModule = "ComputerControl";

std::mutex g_shutdownProgramMutex;
std::string g_shutdownProgramOverride;

// The file that "cp from to" writes: inside "to" when that is a folder, and at the end of a chain
// of links, which cp follows; a chain that leads nowhere is refused, as cp refuses to write
// through it. With replaceLink a link in to's place is itself the file written (replaced).
bool CopyDestination(const std::string& from, const std::string& to, bool replaceLink, std::string& destination,
                     std::string& cause) {
    destination = to;
    struct stat status {};
    if (replaceLink && lstat(to.c_str(), &status) == 0 && S_ISLNK(status.st_mode)) return true;
    if (stat(to.c_str(), &status) == 0 && S_ISDIR(status.st_mode))
        destination = JoinPath(to, from.substr(from.rfind('/') + 1));
    if (lstat(destination.c_str(), &status) != 0 || !S_ISLNK(status.st_mode)) return true;
    destination = ResolvedPath(destination);
    if (destination.empty() || lstat(destination.c_str(), &status) != 0) {
        cause = "not writing through the dangling link " + to;
        return false;
    }
    return true;
}

// cp reads what a link leads to, and only a regular file is ever copied: a FIFO would be waited on
// for ever, a device read without end, a folder is not copied without -r.
bool IsCopySource(const std::string& from, std::string& cause) {
    struct stat status {};
    if (stat(from.c_str(), &status) != 0) {
        cause = from + ": " + std::strerror(errno);
        return false;
    }
    if (!S_ISREG(status.st_mode)) {
        cause = from + " is not a regular file";
        return false;
    }
    return true;
}

bool SameFile(const std::string& a, const std::string& b) {
    struct stat one {
    }, other{};
    return stat(a.c_str(), &one) == 0 && stat(b.c_str(), &other) == 0 && one.st_dev == other.st_dev &&
           one.st_ino == other.st_ino;
}

// cp over an existing file writes into it, so that file keeps its mode, owner and group; the copy
// that replaces it takes them over before it is flushed. A new file keeps what cp gave it.
bool TakeOverAndFlush(const std::string& partial, const struct stat* replaced, std::string& cause) {
    const int fd = open(partial.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        cause = partial + ": " + std::strerror(errno);
        return false;
    }
    bool ok = true;
    if (replaced != nullptr) {
        // The owner is ours already unless we are root (CanReplaceBeside); a disk that keeps no
        // owners (a FAT stick) refuses even that, and its files all have the same one anyway.
        if (fchown(fd, replaced->st_uid, replaced->st_gid) != 0)
            VtxDebugTrace(kModule, "CopyFile", "%s: owner not taken over\n", partial.c_str());
        // The mode matters most: an application without its execute bit does not start.
        ok = fchmod(fd, replaced->st_mode & 07777) == 0;
    }
    ok = ok && fsync(fd) == 0;
    if (!ok) cause = partial + ": mode or flush: " + std::strerror(errno);
    close(fd);
    return ok;
}

// cp opens an existing destination for writing and gives up when it may not: no write permission,
// a read-only disk. A running program ("Text file busy") is the one refusal the rename gets past.
bool CpMayWriteInto(const std::string& destination) {
    const int fd = open(destination.c_str(), O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (fd < 0) return errno == ETXTBSY;
    close(fd);
    return true;
}

bool InGroup(gid_t group) {
    if (group == getegid()) return true;
    std::vector<gid_t> groups(static_cast<size_t>(std::max(getgroups(0, nullptr), 0)));
    groups.resize(static_cast<size_t>(std::max(getgroups(static_cast<int>(groups.size()), groups.data()), 0)));
    return std::find(groups.begin(), groups.end(), group) != groups.end();
}

// A copy made beside the file ends as cp's only when the folder takes a new file and the new file
// can be given the old one's owner and group, which only root can give away.
bool CanReplaceBeside(const std::string& folder, const struct stat& replaced) {
    if (faccessat(AT_FDCWD, folder.c_str(), W_OK | X_OK, AT_EACCESS) != 0) return false;
    return geteuid() == 0 || (replaced.st_uid == geteuid() && InGroup(replaced.st_gid));
}

// cause, when given, is set on failure: the path and the system's reason.
bool SyncToDisk(const std::string& path, int flags, std::string* cause = nullptr) {
    const int fd = open(path.c_str(), flags | O_CLOEXEC);
    const bool synced = fd >= 0 && fsync(fd) == 0;
    if (!synced && cause != nullptr) *cause = path + ": not flushed: " + std::strerror(errno);
    if (fd >= 0) close(fd);
    return synced;
}

// The copy holds what was expected (when something is).
bool HoldsExpected(const std::string& copy, const SFileContent* expected, std::string& cause) {
    if (expected == nullptr) return true;
    SFileContent content;
    if (DigestFile(copy, content, cause) && content == *expected) return true;
    cause = kCopyContentDiffers + copy;
    return false;
}

bool CopyInto(const std::string& from, const std::string& to, bool replaceLink, const SFileContent* expected,
              std::string& destination, std::string& cause) {
    if (!IsCopySource(from, cause) || !CopyDestination(from, to, replaceLink, destination, cause)) return false;
    struct stat old {};
    const bool exists = lstat(destination.c_str(), &old) == 0;
    // A link the copy replaces is no file of its own: what it leads to is not written.
    const bool replacesLink = exists && S_ISLNK(old.st_mode);
    if (!replacesLink && SameFile(from, destination)) {
        cause = from + " and " + destination + " are the same file";
        return false;
    }
    const std::string folder = FolderOf(destination);
    const bool replaces = exists && S_ISREG(old.st_mode);
    if (replaces && !CpMayWriteInto(destination)) {
        cause = destination + ": " + std::strerror(errno);
        return false;
    }
    if (replaces && !CanReplaceBeside(folder, old)) {
        // As cp does it, in place: a power cut now leaves the file in part (docs/maintainer/crash-model.md).
        // What differs is found only once it is written.
        const int status = RunShellCommand(NS_ShellCommand::Copy(from, destination));
        if (status != 0) {
            cause = "cp into " + destination + " failed, exit status " + std::to_string(status);
            return false;
        }
        return SyncToDisk(destination, O_RDONLY, &cause) && HoldsExpected(destination, expected, cause);
    }
    const std::string partial = JoinPath(folder, kPartialCopyName);
    // Whatever an earlier power cut left under the partial name goes first.
    unlink(partial.c_str());
    const int status = RunShellCommand(NS_ShellCommand::Copy(from, partial));
    bool copied = status == 0;
    if (!copied) cause = "copy to " + partial + " failed, exit status " + std::to_string(status);
    copied = copied && HoldsExpected(partial, expected, cause) &&
             TakeOverAndFlush(partial, replaces ? &old : nullptr, cause);
    if (copied && rename(partial.c_str(), destination.c_str()) != 0) {
        cause = partial + " not renamed to " + destination + ": " + std::strerror(errno);
        copied = false;
    }
    if (!copied) {
        unlink(partial.c_str());
        return false;
    }
    // The new name on the disk too, before the next step builds on it: removing the source (the
    // new-build folder after the install) must never reach the disk ahead of this rename. A
    // rename the disk may lose is no copy to build on.
    return SyncToDisk(folder, O_RDONLY | O_DIRECTORY, &cause);
}

// Stock cursor states; touched on the GUI thread only.
bool g_busy = false;
bool g_hidden = false;

void ApplyNormalCursor() {
    if (g_hidden) {
        wxSetCursor(wxCursor(wxCURSOR_BLANK));
    } else {
        wxSetCursor(wxNullCursor);
    }
}

// False when the call came from another thread; it was then passed on to the GUI thread.
template <class Call>
bool OnGuiThread(Call call) {
    if (wxIsMainThread()) return true;
    CallOnGuiThread(call);
    return false;
}

// Everything inside the open folder, by name and relative to the folder, so that no name is ever
// read as a pattern and no link is ever followed, wherever it points. Names starting with "." are
// left, as a pattern "*" would leave them, so a folder holding one is not removed and the caller
// learns that something is left.
bool RemoveInside(int folder) {
    std::vector<std::string> names;
    if (!FolderNames(folder, false, names)) return false;
    bool removed = true;
    for (const std::string& name : names) {
        struct stat status {};
        // NOLINTNEXTLINE(bugprone-branch-clone): two failures, one outcome
        if (fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
            removed = false;
        } else if (S_ISDIR(status.st_mode)) {
            const int inner = openat(folder, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
            const bool emptied = inner >= 0 && RemoveInside(inner);
            if (inner >= 0) close(inner);
            removed = unlinkat(folder, name.c_str(), AT_REMOVEDIR) == 0 && emptied && removed;
        } else if (unlinkat(folder, name.c_str(), 0) != 0) {
            removed = false;
        }
    }
    return removed;
}

// The one caller of the C library's system(): the raw status as the wait call delivers it.
int RunShellCommandRaw(const std::string& command) { return std::system(command.c_str()); }

}  // namespace

std::string GetShutdownProgram() {
    std::lock_guard<std::mutex> lock(g_shutdownProgramMutex);
    return g_shutdownProgramOverride.empty() ? GetShutdownTool() : g_shutdownProgramOverride;
}

void SetShutdownProgramForTesting(const std::string& program) {
    std::lock_guard<std::mutex> lock(g_shutdownProgramMutex);
    g_shutdownProgramOverride = program;
}

int RunShellCommand(const std::string& command) {
    const int status = RunShellCommandRaw(command);
    if (status == -1 || !WIFEXITED(status)) return -1;
    return WEXITSTATUS(status);
}

bool ShutDownComputer(int mode) {
    const std::string command = NS_ShellCommand::Shutdown(GetShutdownProgram(), mode);
    const int status = RunShellCommand(command);
    if (status == 0) return true;
    if (status < 0) return false;
    // Refused, typically for lack of rights.
    return RunShellCommand(NS_ShellCommand::Privileged(command)) == 0;
}

bool SetComputerHostName(const std::string& name) {
    const int status = RunShellCommandRaw(NS_ShellCommand::SetHostName(name));
    VtxDebugTrace(kModule, "SetHostName", "SetHostName Res = %i\n", status);
    return status == 0;
}

bool SetComputerSystemClock(const SInstrumentDateTime& dateTime) {
    return RunShellCommand(NS_ShellCommand::SetSystemClock(dateTime.year, dateTime.month, dateTime.day,
                                                           dateTime.hour, dateTime.minute, dateTime.second)) ==
           0;
}

void ComputerBeep(unsigned frequency, unsigned length) {
    RunShellCommand(NS_ShellCommand::Beep(frequency, length));
}

bool GetComputerDiskSpace(uint64_t& totalBlocks, uint64_t& freeBlocks, uint64_t& blockSize, double& scale) {
    totalBlocks = freeBlocks = blockSize = 0;
    scale = 0;
    char program[4096];
    const ssize_t length = readlink("/proc/self/exe", program, sizeof program - 1);
    if (length <= 0) return false;
    program[length] = '\0';
    struct statvfs stats {};
    if (statvfs(program, &stats) != 0) return false;
    totalBlocks = stats.f_blocks;
    freeBlocks = stats.f_bfree;
    blockSize = stats.f_frsize != 0 ? stats.f_frsize : stats.f_bsize;
    scale = 1.0;
    return true;
}

uint32_t GetMillisecondsSinceFirstCall() {
    static std::once_flag once;
    static uint64_t base = 0;
    auto now = [] {
        timeval tv{};
        gettimeofday(&tv, nullptr);
        return static_cast<uint64_t>(tv.tv_sec) * 1000u + static_cast<uint64_t>(tv.tv_usec) / 1000u;
    };
    std::call_once(once, [&] { base = now(); });
    return static_cast<uint32_t>(now() - base);
}

bool IsKeyboardLightOn() {
    Display* display = XOpenDisplay(":0");
    if (display == nullptr) return false;
    XKeyboardState state{};
    XGetKeyboardControl(display, &state);
    XCloseDisplay(display);
    return (state.led_mask & 4u) != 0;
}

void SetBusyCursor(bool busy) {
    if (!OnGuiThread([busy] { SetBusyCursor(busy); })) return;
    if (busy == g_busy) return;
    g_busy = busy;
    if (busy) {
        wxBeginBusyCursor();
    } else {
        wxEndBusyCursor();
        ApplyNormalCursor();
    }
}

void SetCursorVisible(bool visible) {
    if (!OnGuiThread([visible] { SetCursorVisible(visible); })) return;
    if (visible == !g_hidden) return;
    g_hidden = !visible;
    // While busy, the waiting cursor stays; the new state shows when it ends.
    if (!g_busy) ApplyNormalCursor();
}

SFirmwareIdentification GetFirmwareIdentification() {
    auto firstLine = [](const std::string& path) {
        CTextFileReader reader(256);
        if (!reader.Open(path)) return std::string();
        return reader.ReadLine();
    };
    SFirmwareIdentification id;
    id.vendor = firstLine(GetFirmwareVendorFile());
    id.version = firstLine(GetFirmwareVersionFile());
    id.text = id.vendor;
    if (!id.text.empty() && !id.version.empty()) id.text += ' ';
    id.text += id.version;
    return id;
}

bool CopyFile(const std::string& from, const std::string& to, std::string* cause, const SCopyOptions& options) {
    std::string why, destination;
    const bool copied =
        CopyInto(from, to, options.how == eCopyDestination::ReplaceLink, options.expected, destination, why);
    if (!copied && cause != nullptr) *cause = why;
    return copied;
}

bool WriteFileWhole(const std::string& path, const std::string& bytes, std::string& cause) {
    const std::string folder = FolderOf(path), partial = JoinPath(folder, kPartialCopyName);
    unlink(partial.c_str());
    const int fd = open(partial.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    size_t written = 0;
    while (fd >= 0 && written < bytes.size()) {
        const ssize_t n = write(fd, bytes.data() + written, bytes.size() - written);
        if (n <= 0) break;
        written += static_cast<size_t>(n);
    }
    const bool whole = fd >= 0 && written == bytes.size() && fsync(fd) == 0;
    if (fd >= 0) close(fd);
    if (!whole || rename(partial.c_str(), path.c_str()) != 0) {
        cause = path + ": " + std::strerror(errno);
        unlink(partial.c_str());
        return false;
    }
    return SyncToDisk(folder, O_RDONLY | O_DIRECTORY, &cause);
}

bool FlushFileToDisk(const std::string& path, std::string* cause) { return SyncToDisk(path, O_RDONLY, cause); }

void FlushAllFileSystems() { sync(); }

bool FileExists(const std::string& pattern) {
    glob_t found{};
    const bool exists = glob(pattern.c_str(), 0, nullptr, &found) == 0 && found.gl_pathc > 0;
    globfree(&found);
    return exists;
}

bool CreateFolder(const std::string& path) { return mkdir(path.c_str(), 0777) == 0 || errno == EEXIST; }

bool RemoveFolderTree(const std::string& folder) {
    // The folder itself is not followed either: a link in its place is refused.
    struct stat status {};
    if (lstat(folder.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) return false;
    const int fd = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (fd < 0) return false;
    const bool emptied = RemoveInside(fd);
    close(fd);
    return rmdir(folder.c_str()) == 0 && emptied;
}

std::string RunCommandOutput(const std::string& command, bool& ok) {
    int status = 0;
    return RunCommandOutput(command, ok, status);
}

std::string RunCommandOutput(const std::string& command, bool& ok, int& exitStatus) {
    std::string output;
    exitStatus = -1;
    FILE* pipe = popen(command.c_str(), "r");
    ok = pipe != nullptr;
    if (pipe == nullptr) return output;
    char piece[128];
    size_t length = 0;
    while ((length = std::fread(piece, 1, sizeof piece, pipe)) > 0) output.append(piece, length);
    const int status = pclose(pipe);
    if (status != -1 && WIFEXITED(status)) exitStatus = WEXITSTATUS(status);
    return output;
}

int MountNetworkShare(const std::string& sharePath, const std::string& mountPoint, const std::string& userName,
                      const std::string& password) {
    // A mount point lies on another device than its parent, or is the root of its own.
    struct stat point {
    }, parent{};
    if (stat(mountPoint.c_str(), &point) == 0 && stat((mountPoint + "/..").c_str(), &parent) == 0 &&
        (point.st_dev != parent.st_dev || point.st_ino == parent.st_ino)) {
        return 0;
    }
    RunShellCommand(NS_ShellCommand::AppendShareToFileSystemTable(GetProductionFileServer(), sharePath,
                                                                  mountPoint, userName, password));
    return RunShellCommand(NS_ShellCommand::Mount(mountPoint));
}
