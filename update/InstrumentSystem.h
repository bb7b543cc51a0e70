#pragma once
// The instrument's own machine behind the update procedure's interface: the operating-system layer
// (update/os), the signature's key files, and the instrument's log written with POSIX calls so
// that a failed write keeps its cause.

#include "update/UpdateSystem.h"

class CInstrumentSystem : public CUpdateSystem {
public:
    CInstrumentSystem() = default;
    ~CInstrumentSystem() override;
    CInstrumentSystem(const CInstrumentSystem&) = delete;
    CInstrumentSystem& operator=(const CInstrumentSystem&) = delete;

    CInstrumentTime Now() override;
    void Pause(unsigned milliseconds) override;

    bool ScanLogs(const std::string& folder, const std::string& pattern, std::vector<SFoundLog>& logs) override;
    bool ReadLink(const std::string& link, std::string& target) override;
    bool FileExists(const std::string& pattern) override;
    bool IsAbsent(const std::string& path) override;
    bool IsReadableInput(const std::string& path, const std::string& linkTree, std::string& cause) override;
    bool ModificationTime(const std::string& path, time_t& modified) override;
    std::string Identity(const std::string& path) override;
    bool ListRegularFiles(const std::string& folder, std::vector<std::string>& files,
                          std::string& cause) override;
    bool ReadInputFile(const std::string& path, const std::string& linkTree, size_t largest, std::string& bytes,
                       std::string& cause) override;
    bool DigestFile(const std::string& path, SFileContent& content, std::string& cause) override;
    bool LoadUpdateKeys(const std::string& folder, std::vector<SUpdateKey>& keys, std::string& cause) override;
    bool IsRuntimeLibrary(const std::string& path, const std::string& soname, std::string& cause) override;
    bool IsUnpackableFontPackage(const std::string& path, const std::string& folderName,
                                 std::string& cause) override;

    bool CopyFile(const std::string& from, const std::string& to, std::string& cause,
                  const SCopyOptions& options) override;
    bool CreateFolder(const std::string& path, std::string& cause) override;
    bool RemoveFolderTree(const std::string& folder, std::string& cause) override;
    bool RemoveFile(const std::string& path, std::string& cause) override;
    bool WriteFileWhole(const std::string& path, const std::string& bytes, std::string& cause) override;
    int RunShellCommand(const std::string& command) override;
    std::string RunCommandOutput(const std::string& command, bool& started, int& exitStatus) override;
    void FlushAllFileSystems() override;

    bool OpenLog(const std::string& path, std::string& cause) override;
    bool AppendLogLine(const std::string& line, std::string& cause) override;
    bool CloseLog(std::string& cause) override;

private:
    int m_log = -1;
};

// The one the delivered program's procedure uses; it lives as long as the program.
CUpdateSystem& GetInstrumentSystem();
