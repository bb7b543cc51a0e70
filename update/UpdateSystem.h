#pragma once
// Everything the update procedure asks of the machine, in one interface: the files it judges,
// copies and removes, the commands it runs, its log, the clock and its pauses. The procedure
// holds its decisions; this interface holds none. CInstrumentSystem (update/InstrumentSystem.h)
// is the instrument's own; a stand-in answering from a table lets every outcome of the procedure
// be tried without a disk, a stick or a second process.

#include <ctime>
#include <string>
#include <vector>

#include "foundation/InstrumentTime.h"
#include "update/UpdateSignature.h"
#include "update/os/ComputerControl.h"

// A "*.log" file of the code folder, as the folder scan found it.
struct SFoundLog {
    std::string path;
    time_t modified = 0;  // the entry's own modification time (a link's, not its target's)
    bool link = false;
    bool leadsOutOf = false;    // a link whose resolved path lies outside the scanned folder
    bool leadsToOther = false;  // a link to something that exists and is not a regular file
};

class CUpdateSystem {
public:
    virtual ~CUpdateSystem() = default;

    virtual CInstrumentTime Now() = 0;
    virtual void Pause(unsigned milliseconds) = 0;

    // The regular files (and links) matching pattern in folder, in the shell's order. False when
    // the folder could not be read.
    virtual bool ScanLogs(const std::string& folder, const std::string& pattern,
                          std::vector<SFoundLog>& logs) = 0;
    virtual bool ReadLink(const std::string& link, std::string& target) = 0;
    // True when the pattern matches at least one path.
    virtual bool FileExists(const std::string& pattern) = 0;
    virtual bool IsAbsent(const std::string& path) = 0;
    virtual bool IsReadableInput(const std::string& path, const std::string& linkTree, std::string& cause) = 0;
    // The modification time of the first match of path, when it is a file; false otherwise.
    virtual bool ModificationTime(const std::string& path, time_t& modified) = 0;
    // What tells a file apart from the same name holding other bytes later; empty when absent.
    virtual std::string Identity(const std::string& path) = 0;
    virtual bool ListRegularFiles(const std::string& folder, std::vector<std::string>& files,
                                  std::string& cause) = 0;
    virtual bool ReadInputFile(const std::string& path, const std::string& linkTree, size_t largest,
                               std::string& bytes, std::string& cause) = 0;
    virtual bool DigestFile(const std::string& path, SFileContent& content, std::string& cause) = 0;
    virtual bool LoadUpdateKeys(const std::string& folder, std::vector<SUpdateKey>& keys,
                                std::string& cause) = 0;
    virtual bool IsRuntimeLibrary(const std::string& path, const std::string& soname, std::string& cause) = 0;
    // Whether the package at path may be unpacked in its folder: only members under folderName,
    // and room for them on that disk.
    virtual bool IsUnpackableFontPackage(const std::string& path, const std::string& folderName,
                                         std::string& cause) = 0;

    virtual bool CopyFile(const std::string& from, const std::string& to, std::string& cause,
                          const SCopyOptions& options) = 0;
    virtual bool CreateFolder(const std::string& path, std::string& cause) = 0;
    virtual bool RemoveFolderTree(const std::string& folder, std::string& cause) = 0;
    virtual bool RemoveFile(const std::string& path, std::string& cause) = 0;
    virtual bool WriteFileWhole(const std::string& path, const std::string& bytes, std::string& cause) = 0;
    // The shell's exit status, -1 when the command did not end normally.
    virtual int RunShellCommand(const std::string& command) = 0;
    // What the command printed; started is false when it could not be started.
    virtual std::string RunCommandOutput(const std::string& command, bool& started, int& exitStatus) = 0;
    virtual void FlushAllFileSystems() = 0;

    // The instrument's log, opened for appending (made when missing). One line at a time, ended
    // with CR LF, each on the disk before the next.
    virtual bool OpenLog(const std::string& path, std::string& cause) = 0;
    virtual bool AppendLogLine(const std::string& line, std::string& cause) = 0;
    virtual bool CloseLog(std::string& cause) = 0;
};
