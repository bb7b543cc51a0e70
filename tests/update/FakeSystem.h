#pragma once
// A machine for the update procedure held in memory: files, folders, links and FIFOs by absolute
// path, commands answered from a table, failures injected by name. It records every command and
// copy, and judges inputs as the instrument's layer does, on the bytes it holds.
#include <fnmatch.h>

#include <map>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "update/UpdateSystem.h"
#include "update/os/FontPackage.h"
#include "update/os/InputChecks.h"

struct SFakeNode {
    enum class eKind { File, Folder, Link, Fifo, Absent } kind = eKind::File;
    std::string bytes;  // a file's content, a link's target
    time_t modified = 0;
    int version = 0;
};

class CFakeSystem : public CUpdateSystem {
public:
    using eKind = SFakeNode::eKind;
    std::map<std::string, SFakeNode> nodes;
    std::vector<std::string> commands;           // every command run, in order
    std::vector<std::string> copies;             // "from > to" of every copy that took its name
    std::map<std::string, int> statuses;         // exit status of a command, by the command's start
    std::map<std::string, std::string> printed;  // what a command prints, by its start
    std::map<std::string, std::string> failing;  // operation or "copy <to>" -> its cause
    uint64_t available = uint64_t{1} << 30;
    CInstrumentTime now{25, 11, 2026, 14, 7};

    void File(const std::string& path, const std::string& bytes, time_t modified = 1000000000) {
        std::lock_guard<std::recursive_mutex> lock(m_mutex);
        Parents(path);
        nodes[path] = SFakeNode{eKind::File, bytes, modified, ++m_version};
    }
    void Link(const std::string& path, const std::string& target) {
        std::lock_guard<std::recursive_mutex> lock(m_mutex);
        Parents(path);
        nodes[path] = SFakeNode{eKind::Link, target, 0, ++m_version};
    }
    void Folder(const std::string& path) {
        std::lock_guard<std::recursive_mutex> lock(m_mutex);
        Parents(path);
        nodes[path] = SFakeNode{eKind::Folder, "", 0, 0};
    }
    void Fifo(const std::string& path) {
        std::lock_guard<std::recursive_mutex> lock(m_mutex);
        Parents(path);
        nodes[path] = SFakeNode{eKind::Fifo, "", 0, 0};
    }
    // The bytes of the file at path (through links); empty when there is none.
    std::string Bytes(const std::string& path) {
        const SFakeNode* node = Find(Resolve(path));
        return node != nullptr && node->kind == eKind::File ? node->bytes : std::string();
    }
    bool Has(const std::string& path) const { return nodes.count(path) != 0; }

    CInstrumentTime Now() override { return now; }
    void Pause(unsigned) override {}

    bool ScanLogs(const std::string& folder, const std::string& pattern, std::vector<SFoundLog>& logs) override {
        std::lock_guard<std::recursive_mutex> lock(m_mutex);
        for (const auto& entry : nodes) {
            const std::string& path = entry.first;
            if (FolderOf(path) != folder || fnmatch(pattern.c_str(), Name(path).c_str(), FNM_PERIOD) != 0)
                continue;
            const eKind kind = entry.second.kind;
            if (kind != eKind::File && kind != eKind::Link) continue;
            SFoundLog log{path, entry.second.modified, kind == eKind::Link, false, false};
            if (log.link) {
                const std::string target = Resolve(path);
                const SFakeNode* node = Find(target);
                log.leadsOutOf = target.compare(0, folder.size() + 1, folder + "/") != 0;
                log.leadsToOther = node != nullptr && node->kind != eKind::File;
            }
            logs.push_back(log);
        }
        return Fail("scan") == nullptr;
    }
    bool ReadLink(const std::string& link, std::string& target) override {
        const SFakeNode* node = Find(link);
        if (node == nullptr || node->kind != eKind::Link) return false;
        target = node->bytes;
        return true;
    }
    bool FileExists(const std::string& pattern) override {
        std::lock_guard<std::recursive_mutex> lock(m_mutex);
        const bool folderOnly = pattern.size() > 1 && pattern.back() == '/';
        const std::string wanted = folderOnly ? pattern.substr(0, pattern.size() - 1) : pattern;
        for (const auto& entry : nodes) {
            if (fnmatch(wanted.c_str(), entry.first.c_str(), FNM_PATHNAME | FNM_PERIOD) != 0) continue;
            if (!folderOnly || Kind(Resolve(entry.first)) == eKind::Folder) return true;
        }
        return false;
    }
    bool IsAbsent(const std::string& path) override { return Find(path) == nullptr; }
    bool IsReadableInput(const std::string& path, const std::string& linkTree, std::string& cause) override {
        const SFakeNode* node = Find(path);
        if (node != nullptr && node->kind == eKind::Link) {
            const std::string target = Resolve(path);
            if (linkTree.empty()) return Refuse(cause, "a link");
            if (target.compare(0, linkTree.size() + 1, linkTree + "/") != 0)
                return Refuse(cause, "a link out of " + linkTree);
            node = Find(target);
        }
        if (node == nullptr) return Refuse(cause, "missing");
        return node->kind == eKind::File || Refuse(cause, "not a regular file");
    }
    bool ModificationTime(const std::string& path, time_t& modified) override {
        const SFakeNode* node = Find(path);
        if (node == nullptr || (node->kind != eKind::File && node->kind != eKind::Link)) return false;
        modified = node->modified;
        return true;
    }
    std::string Identity(const std::string& path) override {
        const SFakeNode* node = Find(path);
        return node == nullptr ? std::string() : path + "#" + std::to_string(node->version);
    }
    bool ListRegularFiles(const std::string& folder, std::vector<std::string>& files,
                          std::string& cause) override {
        std::lock_guard<std::recursive_mutex> lock(m_mutex);
        for (const auto& entry : nodes) {
            if (entry.first.compare(0, folder.size() + 1, folder + "/") != 0) continue;
            if (entry.second.kind == eKind::Folder) continue;
            if (entry.second.kind != eKind::File) return Refuse(cause, "not a regular file: " + entry.first);
            files.push_back(entry.first.substr(folder.size() + 1));
        }
        return true;
    }
    bool ReadInputFile(const std::string& path, const std::string& linkTree, size_t largest, std::string& bytes,
                       std::string& cause) override {
        if (!IsReadableInput(path, linkTree, cause)) return false;
        bytes = Bytes(path);
        return bytes.size() <= largest || Refuse(cause, "larger than " + std::to_string(largest) + " bytes");
    }
    bool DigestFile(const std::string& path, SFileContent& content, std::string& cause) override {
        if (Kind(Resolve(path)) != eKind::File) return Refuse(cause, "cannot be read");
        content = DigestBytes(Bytes(path));
        return true;
    }
    bool LoadUpdateKeys(const std::string& folder, std::vector<SUpdateKey>& keys, std::string& cause) override {
        std::lock_guard<std::recursive_mutex> lock(m_mutex);
        if (const std::string* why = Fail("keys")) return Refuse(cause, *why);
        for (const auto& entry : nodes) {
            if (FolderOf(entry.first) != folder || Name(entry.first)[0] == '.') continue;
            SUpdateKey key;
            key.name = entry.first;
            if (!ParseUpdateKey(entry.second.bytes, key, cause))
                return Refuse(cause, cause + ": " + entry.first);
            keys.push_back(key);
        }
        return true;
    }
    bool IsRuntimeLibrary(const std::string& path, const std::string& soname, std::string& cause) override {
        return IsReadableInput(path, std::string(), cause) && IsRuntimeLibraryImage(Bytes(path), soname, cause);
    }
    bool IsUnpackableFontPackage(const std::string& path, const std::string& folderName,
                                 std::string& cause) override {
        return IsUnpackableFontPackageImage(Bytes(path), folderName, available, cause);
    }

    bool CopyFile(const std::string& from, const std::string& to, std::string& cause,
                  const SCopyOptions& options) override {
        std::lock_guard<std::recursive_mutex> lock(m_mutex);
        if (Kind(Resolve(from)) != eKind::File) return Refuse(cause, from + ": not a regular file");
        std::string destination = Kind(Resolve(to)) == eKind::Folder ? Resolve(to) + "/" + Name(from) : to;
        if (Kind(destination) == eKind::Link && options.how == eCopyDestination::FollowLinks) {
            destination = Resolve(destination);
            if (Find(FolderOf(destination)) == nullptr)
                return Refuse(cause, destination + ": not writing through");
        }
        if (const std::string* why = Fail("copy " + destination)) return Refuse(cause, *why);
        if (Kind(FolderOf(destination)) != eKind::Folder) return Refuse(cause, destination + ": no folder");
        const std::string bytes = Bytes(from);
        if (options.expected != nullptr && DigestBytes(bytes) != *options.expected)
            return Refuse(cause, kCopyContentDiffers + destination);
        nodes[destination] = SFakeNode{eKind::File, bytes, 2000000000, ++m_version};
        copies.push_back(from + " > " + destination);
        return true;
    }
    bool CreateFolder(const std::string& path, std::string& cause) override {
        if (const std::string* why = Fail("mkdir")) return Refuse(cause, *why);
        if (Find(path) == nullptr) Folder(path);
        return true;
    }
    bool RemoveFolderTree(const std::string& folder, std::string& cause) override {
        cause = folder + ": not emptied";
        std::lock_guard<std::recursive_mutex> lock(m_mutex);
        bool whole = Fail("remove") == nullptr;
        for (auto at = nodes.lower_bound(folder + "/");
             at != nodes.end() && at->first.compare(0, folder.size() + 1, folder + "/") == 0;) {
            if (Name(at->first)[0] == '.') {
                whole = false;
                ++at;
            } else {
                at = nodes.erase(at);
            }
        }
        if (whole) nodes.erase(folder);
        return whole;
    }
    bool RemoveFile(const std::string& path, std::string& cause) override {
        std::lock_guard<std::recursive_mutex> lock(m_mutex);
        return nodes.erase(path) == 1 || Refuse(cause, path + ": No such file or directory");
    }
    bool WriteFileWhole(const std::string& path, const std::string& bytes, std::string& cause) override {
        if (const std::string* why = Fail("write " + path)) return Refuse(cause, *why);
        File(path, bytes);
        return true;
    }
    int RunShellCommand(const std::string& command) override {
        std::lock_guard<std::recursive_mutex> lock(m_mutex);
        commands.push_back(command);
        return Answer(statuses, command, command.compare(0, 2, "[[") == 0 ? 127 : 0);
    }
    std::string RunCommandOutput(const std::string& command, bool& started, int& exitStatus) override {
        exitStatus = RunShellCommand(command);
        started = Fail("start") == nullptr;
        return Answer(printed, command, std::string());
    }
    void FlushAllFileSystems() override { commands.push_back("sync"); }

    bool OpenLog(const std::string& path, std::string& cause) override {
        if (const std::string* why = Fail("log open")) return Refuse(cause, *why);
        m_log = Resolve(path);
        if (Find(m_log) == nullptr) File(m_log, "");
        return true;
    }
    bool AppendLogLine(const std::string& line, std::string& cause) override {
        if (const std::string* why = Fail("log write")) return Refuse(cause, *why);
        std::lock_guard<std::recursive_mutex> lock(m_mutex);
        nodes[m_log].bytes += line + "\r\n";
        ++nodes[m_log].version;
        return true;
    }
    bool CloseLog(std::string& cause) override {
        const std::string* why = Fail("log close");
        return why == nullptr || Refuse(cause, *why);
    }

private:
    static std::string Name(const std::string& path) { return path.substr(path.rfind('/') + 1); }
    static bool Refuse(std::string& cause, const std::string& why) {
        cause = why;
        return false;
    }
    template <class Value>
    static Value Answer(const std::map<std::string, Value>& table, const std::string& command, Value otherwise) {
        for (const auto& row : table)
            if (command.compare(0, row.first.size(), row.first) == 0) otherwise = row.second;
        return otherwise;
    }
    const std::string* Fail(const std::string& operation) const {
        const auto at = failing.find(operation);
        return at == failing.end() ? nullptr : &at->second;
    }
    void Parents(const std::string& path) {
        for (std::string folder = FolderOf(path); folder.size() > 1 && !Has(folder); folder = FolderOf(folder))
            nodes[folder] = SFakeNode{eKind::Folder, "", 0, 0};
    }
    const SFakeNode* Find(const std::string& path) {
        std::lock_guard<std::recursive_mutex> lock(m_mutex);
        const auto at = nodes.find(path);
        return at == nodes.end() ? nullptr : &at->second;
    }
    eKind Kind(const std::string& path) {
        const SFakeNode* node = Find(path);
        return node == nullptr ? eKind::Absent : node->kind;
    }
    // Links followed, relative ones from their folder; a name that does not exist comes back itself.
    std::string Resolve(std::string path) {
        for (int hops = 0; hops < 8; ++hops) {
            const SFakeNode* node = Find(path);
            if (node == nullptr || node->kind != eKind::Link) return path;
            path = node->bytes[0] == '/' ? node->bytes : FolderOf(path) + "/" + node->bytes;
        }
        return path;
    }

    std::recursive_mutex m_mutex;
    std::string m_log;
    int m_version = 0;
};
