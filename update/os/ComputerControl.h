#pragma once
// The thin layer over the instrument PC's operating system: power, host name, clock, speaker,
// network share, disk space, firmware and keyboard state, and the small file operations of the
// update. Shell commands are judged only by their exit status. Operations needing full rights go
// through the privileged tool, which runs its one argument as a command.

#include <cstdint>
#include <string>

#include "update/os/FileDigest.h"

// Date and time as the instrument's clock setting hands it over.
struct SInstrumentDateTime {
    uint16_t year = 0;
    uint16_t month = 0;
    uint16_t dayOfWeek = 0;
    uint16_t day = 0;
    uint16_t hour = 0;
    uint16_t minute = 0;
    uint16_t second = 0;
    uint16_t millisecond = 0;
};

struct SFirmwareIdentification {
    std::string vendor;   // first line of the BIOS vendor
    std::string version;  // first line of the BIOS version
    std::string text;     // "vendor version" (only the one that is present when the other is empty)
};

// mode 2 restarts, anything else powers off. When the plain command runs but fails, it is run
// again through the privileged tool. True when one of the runs ended with exit code 0.
bool ShutDownComputer(int mode);
bool SetComputerHostName(const std::string& name);
// Day of week and milliseconds are not used.
bool SetComputerSystemClock(const SInstrumentDateTime& dateTime);
void ComputerBeep(unsigned frequency, unsigned length);
// Statistics of the file system holding the running program; scale is 1.0. On failure all four
// are 0 and the result is false.
bool GetComputerDiskSpace(uint64_t& totalBlocks, uint64_t& freeBlocks, uint64_t& blockSize, double& scale);
// Wall-clock milliseconds since the first call (which returns 0).
uint32_t GetMillisecondsSinceFirstCall();
// The third keyboard light (bit 2 of the light mask) of display ":0"; false without a display.
bool IsKeyboardLightOn();
// The toolkit's stock waiting cursor or the normal one. Nothing happens when the state already
// is the requested one. Calls from other threads are passed on to the GUI thread.
void SetBusyCursor(bool busy);
// A blank cursor over all windows, or the normal one; same rules as SetBusyCursor.
void SetCursorVisible(bool visible);
SFirmwareIdentification GetFirmwareIdentification();

// Where a copy goes when a link has the destination's name.
enum class eCopyDestination {
    FollowLinks,  // as cp: through the chain of links to the file it ends at
    ReplaceLink,  // the link itself is replaced by the copy: it is never written through
};

struct SCopyOptions {
    eCopyDestination how = eCopyDestination::FollowLinks;
    // What the copy must hold, checked on the copy itself before it takes the destination's name:
    // a stick may answer a second read differently from the first.
    const SFileContent* expected = nullptr;
};
// The start of the cause of a copy that did not hold what was expected.
extern const char* const kCopyContentDiffers;

// Copies with cp through the shell (the paths may hold any character) as "cp from to" would, into
// "to" or, when "to" is a folder, into the file of from's name inside it. A power cut never leaves
// part of a file under that name: cp writes kPartialCopyName in the same folder, which is flushed
// to the disk and then renamed over the real name. On failure the partial copy is removed and the
// real name is untouched; a partial copy left by a power cut is replaced by the next copy into
// that folder. Renaming also replaces a program that is running, where cp would fail. As with cp,
// an existing file keeps its mode, owner and group, and one that cp may not write is refused.
// Where the copy beside could not end as cp's (a folder the user may not write, a file of another
// owner), the file is written in place, as cp writes it, and a power cut may leave it in part.
// Refused before cp runs, where cp would fail or never end: a source that is not a regular file
// (a FIFO, a device, a folder), a destination link that leads nowhere, the same file on both
// sides. cause, when given, says why a copy failed.
bool CopyFile(const std::string& from, const std::string& to, std::string* cause = nullptr,
              const SCopyOptions& options = SCopyOptions());
// ".vtx-partial-copy": hidden, so no pattern of the update ("*.log", "Application_*") matches it.
extern const char* const kPartialCopyName;
// Writes bytes as the whole file at path, which a power cut leaves as it was or as written: the
// bytes go to a partial file beside it, flushed, then renamed over it.
bool WriteFileWhole(const std::string& path, const std::string& bytes, std::string& cause);
// fsync of one file; false when it cannot be opened or flushed, and cause, when given, says why.
bool FlushFileToDisk(const std::string& path, std::string* cause = nullptr);
// sync(): everything written so far goes to its disk, the USB stick included.
void FlushAllFileSystems();
// True when the glob pattern matches at least one path.
bool FileExists(const std::string& pattern);
// Mode 0777; true when created or when the name already exists, whatever that entry is: a file in
// the folder's place fails the caller's next step instead.
bool CreateFolder(const std::string& path);
// Deletes the folder with everything in it; links inside are removed, never followed, and a link
// in the folder's place is refused. Names are never read as patterns. Names starting with "." are
// left, as the shell's "folder/*" leaves them, so a folder holding one stays (with only those
// inside) and the result is false. True when everything was removed.
bool RemoveFolderTree(const std::string& folder);
// Everything the command printed on its standard output; ok is false only when the command could
// not be started.
std::string RunCommandOutput(const std::string& command, bool& ok);
// The same, with the command's exit status (-1 when it did not end normally).
std::string RunCommandOutput(const std::string& command, bool& ok, int& exitStatus);
// The C library's system(): the command's exit status, -1 when the shell could not run or the
// command was ended by a signal.
int RunShellCommand(const std::string& command);
// Adds the share of the production file server to the file-system table and mounts it, unless
// mountPoint already is a mount point (then 0). The mount command's exit status otherwise.
int MountNetworkShare(const std::string& sharePath, const std::string& mountPoint, const std::string& userName,
                      const std::string& password);

// Test seams.
std::string GetShutdownProgram();
// Another program in place of GetShutdownTool(); empty restores it.
void SetShutdownProgramForTesting(const std::string& program);
