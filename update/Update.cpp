#include "update/Update.h"

#include <cstdio>
#include <cstring>
#include <ctime>
#include <thread>

#include "foundation/InstrumentSettings.h"
#include "foundation/InstrumentTime.h"
#include "language/InstrumentLanguage.h"
#include "language/LanguageTables.h"
#include "update/InstrumentSystem.h"
#include "update/os/ShellCommands.h"
#include "update/ConsoleLines.h"
#include "update/locations/InstrumentLocations.h"

#ifndef VTX_SUPPRESS_REBOOT
#define VTX_SUPPRESS_REBOOT 0
#endif

namespace {

// Text ids of the status line.
enum : uint32_t {
    eTextDone = 92,
    eTextDiskError = 168,
    eTextCopyingFiles = 418,
    eTextCouldNotCopy = 419,
    eTextUpgradeSuccessful = 422,
    eTextRestartingApplication = 423,
    eTextUpdateNotSigned = NS_LanguageTexts::kTextUpdateNotSigned,
};

// Where root takes the runtime from in a signed update: the copy that was checked, in the user's
// home folder, never the stick a second time.
constexpr char kCheckedRuntimeName[] = ".vtx-checked-runtime";

// A file's path in the manifest: on the stick from its top, in the new-build folder from "NEW/".
std::string ManifestPathOnStick(const std::string& path) { return path.substr(GetUsbMountPoint().size() + 1); }

std::string InstrumentPathOf(const std::string& manifestPath) {
    const std::string prefix = kManifestNewBuildPrefix;
    if (manifestPath.compare(0, prefix.size(), prefix) == 0)
        return JoinPath(GetNewBuildFolder(), manifestPath.substr(prefix.size()));
    return JoinPath(GetUsbMountPoint(), manifestPath);
}

template <class Action>
struct SAtScopeEnd {
    Action action;
    ~SAtScopeEnd() { action(); }
};
template <class Action>
SAtScopeEnd(Action) -> SAtScopeEnd<Action>;

}  // namespace

std::string FormatStepCode(int code, uint32_t textId) {
    char number[16];
    std::snprintf(number, sizeof(number), "%02d", code);
    return GetText(textId) + "... (" + number + ")";
}

std::string FormatBackupTimeStamp(time_t modificationTime) {
    struct tm local {};
    localtime_r(&modificationTime, &local);
    char stamp[32];
    std::snprintf(stamp, sizeof(stamp), "%02u%02u%04u_%02u%02u", static_cast<unsigned>(local.tm_mday),
                  static_cast<unsigned>(local.tm_mon + 1), static_cast<unsigned>(local.tm_year + 1900),
                  static_cast<unsigned>(local.tm_hour), static_cast<unsigned>(local.tm_min));
    return stamp;
}

std::string StickPathOfLog(const std::string& logPath) {
    // A path written on the other operating system the framework ran on uses "\": it wins.
    std::string::size_type separator = logPath.rfind('\\');
    if (separator == std::string::npos) separator = logPath.rfind('/');
    if (separator == std::string::npos) return std::string();
    return GetUsbMountPoint() + logPath.substr(separator);
}

CUpdateProcedure::CUpdateProcedure(CUpdateScreen* screen, CUpdateSystem* system)
    : m_system(system != nullptr ? system : &GetInstrumentSystem()), m_screen(screen), m_log("Update") {}

CUpdateProcedure::~CUpdateProcedure() {
    StopHashingAhead();
    std::string cause;
    if (m_logOpen && !m_system->CloseLog(cause)) SayWhy("update log", cause);
}

void CUpdateProcedure::DetachScreen() {
    std::lock_guard<std::mutex> lock(m_screenMutex);
    m_screen = nullptr;
}

void CUpdateProcedure::ShowStatus(const std::string& text) {
    // The program log gets every status text too: a service engineer reading the console sees
    // what the screen said. Logged before the screen takes the text, whose change asks for a
    // repaint: so a paint is always reported after this line (the screenshots of the end-to-end
    // runs wait for one). Logged after, the paint could come first, and none would follow.
    m_log.LogEvent(NS_ConsoleLines::kStatus + text);
    std::lock_guard<std::mutex> lock(m_screenMutex);
    if (m_screen) m_screen->ShowStatusText(text);
}

void CUpdateProcedure::ShowCode(int code, const std::string& detail) {
    ShowStatus(FormatStepCode(code) + detail);
}

void CUpdateProcedure::ShowProgressValue() {
    std::lock_guard<std::mutex> lock(m_screenMutex);
    if (m_screen) m_screen->ShowProgress(m_progressPosition, m_progressMaximum);
}

void CUpdateProcedure::ProgressStep() {
    if (m_progressPosition >= m_progressMaximum) return;
    ++m_progressMaximum;
    ++m_progressPosition;
    ShowProgressValue();
}

void CUpdateProcedure::FillProgress() {
    m_progressPosition = m_progressMaximum;
    ShowProgressValue();
}

void CUpdateProcedure::WriteLine(const std::string& line) {
    // A line the log did not take does not stop the update, which the screen reports as the log
    // cannot: the console says once why the log lacks lines.
    std::string cause;
    if (m_logOpen && !m_system->AppendLogLine(line, cause))
        SayOnce(m_logWriteFailed, "update log incomplete", cause);
}

void CUpdateProcedure::WritePrefixedLine(const std::string& text) { WriteLine(m_logPrefix + text); }

void CUpdateProcedure::SayWhy(const std::string& what, const std::string& cause) {
    m_log.LogEvent(what + ": " + cause);
}

void CUpdateProcedure::SayOnce(bool& said, const std::string& what, const std::string& cause) {
    if (said) return;
    said = true;
    SayWhy(what, cause);
}

void CUpdateProcedure::Pause() { m_system->Pause(m_pauseMs); }

bool CUpdateProcedure::RunPrivileged(const std::string& command) {
    return m_system->RunShellCommand(NS_ShellCommand::Privileged(command)) == 0;
}

bool CUpdateProcedure::ReadRuntimeLink(std::string& target) {
    return m_system->ReadLink(GetRuntimeLibraryLink(), target);
}

bool CUpdateProcedure::RunClosingSequence() {
    m_log.LogEvent("Update procedure started, special command " + std::to_string(GetSpecialCommand()));
    const bool succeeded = RunUpdateProcedure();
    // Logged before the bar fills, as a status is logged before it shows (see ShowStatus).
    m_log.LogEvent(succeeded ? NS_ConsoleLines::kSucceeded : NS_ConsoleLines::kFailed);
    FillProgress();
    if (!succeeded) return false;
    ShowStatus(GetText(eTextUpgradeSuccessful) + "...\n" + GetText(eTextRestartingApplication));
    Pause();
    RebootInstrument();
    return true;
}

bool CUpdateProcedure::RunUpdateProcedure() {
    ShowStatus(GetText(eTextCopyingFiles) + "...");
    StartHashingAhead();
    Pause();
    const bool opened = OpenUpdateLog();
    StopHashingAhead();
    if (!opened || !CheckUpdateSignature() || !CopyAuxiliaryFiles() || !CheckSystemLibraryLink()) return false;
    if (!IsSystemLibraryCurrent() && !UpdateOperatingSystem()) return false;
    if (!BackUpOldVersion() || !InstallNewVersion() || !InstallFontPackage() || !RecordSignedRelease())
        return false;
    return FinishUpdateLog();
}

bool CUpdateProcedure::OpenUpdateLog() {
    if (IsReducedUpdate()) return true;
    const std::string folder = GetApplicationFolder() + GetPathSeparator();
    std::vector<SFoundLog> logs;
    const bool scanned = m_system->ScanLogs(GetApplicationFolder(), kLogFilePattern, logs);
    if (logs.empty()) {
        ShowCode(eCodeNoLogFile, folder);
        return false;
    }
    if (!scanned) {
        ShowCode(eCodeLogScan);
        return false;
    }
    const SFoundLog* newest = nullptr;
    for (const SFoundLog& log : logs) {
        if (!IsUpdateLogCandidate(log)) continue;
        if (newest == nullptr || log.modified > newest->modified) newest = &log;
    }
    if (newest == nullptr) {
        ShowCode(eCodeNoLogFile, folder);
        return false;
    }
    m_logPath = newest->path;
    std::string cause;
    if (!m_system->OpenLog(m_logPath, cause)) {
        SayWhy("update log not opened", cause);
        ShowCode(eCodeLogOpen);
        return false;
    }
    m_logOpen = true;
    m_logPrefix = m_system->Now().FormatDateTime(GetSettingDateFormat() == eDateFormatEU);
    return true;
}

bool CUpdateProcedure::IsUpdateLogCandidate(const SFoundLog& log) {
    // The log is the code folder's own trace: a link out of it would have every update append to,
    // and copy to the stick, a file of somebody else's. A link into the folder that leads nowhere
    // is still a log: opened for appending, it is made.
    if (log.leadsOutOf) {
        SayWhy("not taken as the update log", log.path + " leads out of " + GetApplicationFolder());
        return false;
    }
    if (log.leadsToOther) {
        SayWhy("not taken as the update log", log.path + " leads to something that is not a regular file");
        return false;
    }
    return true;
}

bool CUpdateProcedure::SignatureRefused(const std::string& reason, const std::string& file) {
    SayWhy("update not signed", reason + ": " + file);
    WriteLine("FAIL - update not signed: " + reason + ": " + file);
    ShowStatus(FormatStepCode(eCodeNotSigned, eTextUpdateNotSigned));
    return false;
}

const SFileContent* CUpdateProcedure::Expected(const std::string& manifestPath) const {
    return m_signed ? m_manifest.Find(manifestPath) : nullptr;
}

void CUpdateProcedure::StartHashingAhead() {
    if (m_system->IsAbsent(GetUpdateKeysFolder()) || m_system->IsAbsent(GetNewBuildFolder())) return;
    m_hashing = std::thread([this] {
        std::vector<std::string> files;
        std::string cause;
        m_system->ListRegularFiles(GetNewBuildFolder(), files, cause);
        for (const std::string& file : files) {
            const std::string path = JoinPath(GetNewBuildFolder(), file);
            SHashedAhead hashed{m_system->Identity(path), SFileContent()};
            if (m_system->DigestFile(path, hashed.content, cause) && hashed.identity == m_system->Identity(path))
                m_hashedAhead[path] = hashed;
        }
    });
}

void CUpdateProcedure::StopHashingAhead() {
    if (m_hashing.joinable()) m_hashing.join();
}

bool CUpdateProcedure::MatchesManifest(const std::string& manifestPath, const std::string& path) {
    const SFileContent* listed = m_manifest.Find(manifestPath);
    if (listed == nullptr) return SignatureRefused("not listed", path);
    SFileContent content;
    std::string cause;
    const auto ahead = m_hashedAhead.find(path);
    if (ahead != m_hashedAhead.end() && ahead->second.identity == m_system->Identity(path)) {
        content = ahead->second.content;
    } else if (!m_system->DigestFile(path, content, cause)) {
        return SignatureRefused(cause, path);
    }
    if (content != *listed) return SignatureRefused("differs from the manifest", path);
    return true;
}

bool CUpdateProcedure::CopyChecked(const std::string& from, const std::string& to,
                                   const std::string& manifestPath, std::string& cause, bool& refused) {
    refused = false;
    const SFileContent* expected = Expected(manifestPath);
    if (m_signed && expected == nullptr) {
        refused = true;
        return SignatureRefused("not listed", from);
    }
    if (m_system->CopyFile(from, to, cause, SCopyOptions{eCopyDestination::FollowLinks, expected})) return true;
    if (cause.compare(0, std::strlen(kCopyContentDiffers), kCopyContentDiffers) == 0) {
        refused = true;
        return SignatureRefused("changed while copied", from);
    }
    return false;
}

bool CUpdateProcedure::CopyFromStick(const std::string& onStick, const std::string& to, std::string& cause,
                                     bool& refused) {
    refused = false;
    return m_system->IsReadableInput(onStick, GetUsbMountPoint(), cause) &&
           CopyChecked(onStick, to, ManifestPathOnStick(onStick), cause, refused);
}

bool CUpdateProcedure::CheckUpdateSignature() {
    std::vector<SUpdateKey> keys;
    std::string cause;
    const bool keysRead = m_system->LoadUpdateKeys(GetUpdateKeysFolder(), keys, cause);
    if (keysRead && keys.empty()) return true;
    WriteLine("*** Checking update signature ***");
    if (!keysRead) {
        // A key folder that cannot be read must never pass for one that holds no key.
        SayWhy("update key refused", cause);
        WriteLine("FAIL - update key refused: " + cause);
        ShowStatus(FormatStepCode(eCodeNotSigned, eTextUpdateNotSigned));
        return false;
    }
    const std::string manifestFile = GetUpdateManifest(), signatureFile = GetUpdateManifestSignature();
    const std::string stick = GetUsbMountPoint();
    if (!m_system->ReadInputFile(manifestFile, stick, CUpdateManifest::kLargestManifest, m_manifestBytes, cause))
        return SignatureRefused(cause == "missing" ? "no manifest" : "manifest " + cause, manifestFile);
    if (!m_system->ReadInputFile(signatureFile, stick, 4096, m_signatureBytes, cause))
        return SignatureRefused(cause == "missing" ? "no signature" : "signature " + cause, signatureFile);
    SUpdateSignature signature;
    if (!ParseUpdateSignature(m_signatureBytes, signature, cause) ||
        !VerifyUpdateSignature(m_manifestBytes, signature, keys, cause))
        return SignatureRefused(cause, signatureFile);
    if (!m_manifest.Parse(m_manifestBytes, cause)) return SignatureRefused(cause, manifestFile);
    if (m_manifest.GetProduct() != GetProductFolderName())
        return SignatureRefused("for another product, " + m_manifest.GetProduct(), manifestFile);

    // Every file listed is there, and every file the update is going to use is listed as it is.
    for (const auto& listed : m_manifest.GetFiles()) {
        const std::string path = InstrumentPathOf(listed.first);
        if (m_system->IsAbsent(path)) return SignatureRefused("listed but missing", path);
    }
    std::vector<std::pair<std::string, std::string>> used;  // manifest path, path
    const std::string auxiliary = JoinPath(GetUsbUpdateFolder(), GetAuxiliaryFileName());
    const std::string fonts = JoinPath(stick, GetFontPackageFileName());
    const std::string runtime = JoinPath(GetUsbUpdateFolder(), GetRuntimeLibraryName());
    std::string target;
    if (!IsReducedUpdate() && m_system->FileExists(auxiliary) &&
        !m_system->FileExists(JoinPath(GetApplicationFolder(), GetAuxiliaryFileName())))
        used.emplace_back(ManifestPathOnStick(auxiliary), auxiliary);
    if (!(ReadRuntimeLink(target) && target == GetRuntimeLibraryTarget()) && m_system->FileExists(runtime))
        used.emplace_back(ManifestPathOnStick(runtime), runtime);
    if (!IsReducedUpdate() && m_system->FileExists(fonts) &&
        !m_system->FileExists(JoinPath(GetUserHomeFolder(), GetFontPackageFileName())))
        used.emplace_back(ManifestPathOnStick(fonts), fonts);
    std::vector<std::string> build;
    if (!m_system->IsAbsent(GetNewBuildFolder()) &&
        !m_system->ListRegularFiles(GetNewBuildFolder(), build, cause)) {
        const std::string::size_type split = cause.find(": ");
        return SignatureRefused(cause.substr(0, split), cause.substr(split + 2));
    }
    for (const std::string& file : build)
        used.emplace_back(kManifestNewBuildPrefix + file, JoinPath(GetNewBuildFolder(), file));
    for (const auto& file : used) {
        if (!MatchesManifest(file.first, file.second)) return false;
    }
    m_signed = true;
    WriteLine("signed release " + m_manifest.GetRelease() + " accepted");
    return true;
}

bool CUpdateProcedure::RecordSignedRelease() {
    if (!m_signed) return true;
    const std::string record = GetReleaseRecord();
    std::string cause;
    if (m_system->WriteFileWhole(record, m_manifestBytes, cause) &&
        m_system->WriteFileWhole(record + ".minisig", m_signatureBytes, cause)) {
        WriteLine("release " + m_manifest.GetRelease() + " recorded in " + record);
        return true;
    }
    // The update itself is whole: only the note of which release it was is missing.
    SayWhy("release not recorded", cause);
    WriteLine("release not recorded: " + cause);
    return true;
}

bool CUpdateProcedure::CopyAuxiliaryFiles() {
    if (IsReducedUpdate()) return true;
    const std::string onStick = JoinPath(GetUsbUpdateFolder(), GetAuxiliaryFileName());
    const std::string onInstrument = JoinPath(GetApplicationFolder(), GetAuxiliaryFileName());
    if (!m_system->FileExists(onStick)) {
        WritePrefixedLine(" no zip file on USB");
        return true;
    }
    if (m_system->FileExists(onInstrument)) {
        WritePrefixedLine(" zip already copied");
        return true;
    }
    std::string cause;
    bool refused = false;
    if (!CopyFromStick(onStick, onInstrument, cause, refused)) {
        if (refused) return false;
        SayWhy("auxiliary file not copied", cause);
        // "auxillary" is how service staff have always searched the logs for this step.
        ShowStatus(GetText(eTextCouldNotCopy) + ": auxillary files");
        WritePrefixedLine(" could not copy auxillary files");
        return false;
    }
    WritePrefixedLine(" auxillary files copied");
    return true;
}

bool CUpdateProcedure::CheckSystemLibraryLink() {
    WriteLine("*** Performing systems check ***");
    std::string target;
    if (!ReadRuntimeLink(target)) {
        WriteLine("FAIL - cannot read link version");
        WriteLine("Contact service!");
        ShowCode(eCodeLinkUnreadable);
        return false;
    }
    WriteLine("version read done");
    return true;
}

bool CUpdateProcedure::IsSystemLibraryCurrent() {
    std::string target;
    if (ReadRuntimeLink(target) && target == GetRuntimeLibraryTarget()) {
        WriteLine("version is correct, starting normal upgrade procedure");
        return true;
    }
    // Stays on the screen while the operating system is updated: the next message replaces it.
    ShowCode(eCodeLinkNotCurrent);
    return false;
}

bool CUpdateProcedure::UpdateOperatingSystem() {
    auto fail = [this](const std::string& line) {
        WriteLine(line);
        ShowCode(eCodeOperatingSystem);
        return false;
    };
    WriteLine("version incorrect - updating OS");
    const std::string replacement = JoinPath(GetUsbUpdateFolder(), GetRuntimeLibraryName());
    if (!m_system->FileExists(replacement)) return fail("FAIL - no prerequisites on USB");
    // Root makes this file the runtime of every C++ program of the instrument from the next boot
    // on: anything but the library itself would leave an instrument that starts nothing.
    std::string cause, source = replacement;
    const std::string checked = JoinPath(GetUserHomeFolder(), kCheckedRuntimeName);
    if (m_signed) {
        bool refused = false;
        if (!CopyChecked(replacement, checked, ManifestPathOnStick(replacement), cause, refused)) {
            if (refused) return false;
            SayWhy("runtime not installed", cause);
            return fail("FAIL - runtime on USB refused: cannot be copied for its check");
        }
        source = checked;
    }
    // Whatever the outcome, the checked copy has done its job once root has been asked.
    const SAtScopeEnd removeChecked{[&] {
        std::string left;
        if (m_signed && !m_system->RemoveFile(checked, left)) SayWhy("checked runtime left in place", left);
    }};
    if (!m_system->IsRuntimeLibrary(source, GetRuntimeLibraryLinkName(), cause)) {
        SayWhy("runtime not installed", replacement + ": " + cause);
        return fail("FAIL - runtime on USB refused: " + cause);
    }
    WriteLine("prerequisites exists on USB");
    if (!m_system->FileExists(GetPrivilegedTool())) return fail("FAIL - no prerequisites on disk");
    WriteLine("prerequisites exists on disk");
    if (!RunPrivileged(NS_ShellCommand::RemountWritable(GetRootImageFolder())))
        return fail("FAIL - cannot mount OS");
    WriteLine("remounted OS");
    if (!RunPrivileged(NS_ShellCommand::CopyPlain(source, GetRootImageRuntimeLibraryTarget())))
        return fail("FAIL - cannot copy prerequisites to OS");
    WriteLine("copied prerequisites to OS");
    // The link names the target as the running system will see it after the reboot.
    if (!RunPrivileged(
            NS_ShellCommand::LinkSymbolic(GetRuntimeLibraryTarget(), GetRootImageRuntimeLibraryLink())))
        return fail("FAIL - cannot link prerequisites");
    WriteLine("link changed");
    return true;
}

bool CUpdateProcedure::BackUpOldVersion() {
    const std::string application = GetApplicationFile();
    time_t modified = 0;
    if (!m_system->ModificationTime(application, modified)) {
        ShowCode(eCodeNoApplication);
        return false;
    }
    const std::string backupFolder = GetBackupFolder();
    std::string cause;
    if (!m_system->CreateFolder(backupFolder, cause)) {
        SayWhy("no backup folder", cause);
        ShowCode(eCodeBackupFolder);
        return false;
    }
    // Named after the application, with the time it was last written.
    const std::string backup =
        JoinPath(backupFolder, GetInstrumentApplicationFileName() + "_" + FormatBackupTimeStamp(modified));
    if (!m_system->CopyFile(application, backup, cause, SCopyOptions())) {
        SayWhy("no backup made", cause);
        ShowCode(eCodeBackupCopy);
        return false;
    }
    if (!IsReducedUpdate()) WritePrefixedLine(" Old version backed up to " + backup);
    return true;
}

bool CUpdateProcedure::InstallNewVersion() {
    const bool chinese = m_system->FileExists(GetChineseVariantMarker());
    const std::string fileName = chinese ? GetChineseApplicationFileName() : GetInstrumentApplicationFileName();
    const std::string newBuild = JoinPath(GetNewBuildFolder(), fileName);
    // Judged before the library check reads it: a FIFO there would hold the update for ever. A
    // build that is not there at all goes the way it always went.
    std::string cause;
    if (!m_system->IsAbsent(newBuild) && !m_system->IsReadableInput(newBuild, GetNewBuildFolder(), cause)) {
        SayWhy("new build not installed", newBuild + ": " + cause);
        ShowCode(eCodeInstallCopy);
        return false;
    }
    // The check's sense is inverted and stays so: a zero exit status stops the installation.
    if (m_system->RunShellCommand(NS_ShellCommand::LibraryCheck(newBuild)) == 0) {
        ShowCode(chinese ? eCodeLibraryCheckChinese : eCodeLibraryCheckStandard);
        return false;
    }
    bool refused = false;
    if (!CopyChecked(newBuild, GetApplicationFile(), kManifestNewBuildPrefix + fileName, cause, refused)) {
        if (refused) return false;
        SayWhy("new build not installed", cause);
        ShowCode(eCodeInstallCopy);
        return false;
    }
    if (!m_system->RemoveFolderTree(GetNewBuildFolder(), cause)) {
        SayWhy("new-build folder not removed", cause);
        ShowCode(eCodeRemoveNewBuild);
        return false;
    }
    if (!IsReducedUpdate()) WritePrefixedLine(" New version copied");
    return true;
}

bool CUpdateProcedure::InstallFontPackage() {
    if (IsReducedUpdate()) return true;
    const std::string home = GetUserHomeFolder();
    const std::string package = JoinPath(GetUsbMountPoint(), GetFontPackageFileName());
    if (!m_system->FileExists(package)) return true;
    if (m_system->FileExists(JoinPath(home, GetFontPackageFileName()))) return true;
    WritePrefixedLine(" Copying " + package + " to " + home);
    std::string cause;
    bool refused = false;
    if (!CopyFromStick(package, home, cause, refused)) {
        if (refused) return false;
        SayWhy("font package not copied", cause);
        ShowStatus(GetText(eTextCouldNotCopy) + ": font package");
        WritePrefixedLine(" could not copy font package");
        return false;
    }
    // tar writes into the home folder, beside the code folder: the whole package is judged before
    // any of it is unpacked. A package refused does not stay, or the next update would take the
    // fonts for installed.
    const std::string copied = JoinPath(home, GetFontPackageFileName());
    if (!m_system->IsUnpackableFontPackage(copied, GetFontFolderName(), cause))
        return FontPackageRefused(copied, cause);
    bool opened = false;
    int status = -1;
    const std::string printed = m_system->RunCommandOutput(
        NS_ShellCommand::UnpackFontPackage(home, GetFontPackageFileName()), opened, status);
    if (!opened || !printed.empty()) {
        ShowStatus(GetText(eTextCouldNotCopy) + ": " + printed);
        WritePrefixedLine(" Unpack error : " + printed);
        return false;
    }
    if (status != 0) return FontPackageRefused(copied, "tar ended with status " + std::to_string(status));
    if (m_system->FileExists(GetFontFolder())) return true;
    ShowStatus(GetText(eTextCouldNotCopy) + ": font package unpack");
    WritePrefixedLine(" could not unpack font package");
    return false;
}

bool CUpdateProcedure::FontPackageRefused(const std::string& copied, const std::string& cause) {
    SayWhy("font package not unpacked", cause);
    std::string left;
    if (!m_system->RemoveFile(copied, left)) SayWhy("font package left in place", left);
    ShowStatus(GetText(eTextCouldNotCopy) + ": font package unpack");
    WritePrefixedLine(" font package refused: " + cause);
    WritePrefixedLine(" could not unpack font package");
    return false;
}

bool CUpdateProcedure::FinishUpdateLog() {
    if (IsReducedUpdate()) return true;
    WritePrefixedLine(" Application started");
    // The screen goes on as if the log were whole: the update itself is. The console says why the
    // copy on the stick may lack this run's lines.
    std::string cause;
    if (m_logOpen && !m_system->CloseLog(cause)) SayWhy("update log", cause);
    m_logOpen = false;
    // Each line is on the disk already (AppendLogLine): the copy on the stick is made of lines the
    // instrument's disk holds.
    if (m_logPath.empty()) {
        ShowCode(eCodeLogPathEmpty);
        return false;
    }
    const std::string onStick = StickPathOfLog(m_logPath);
    if (onStick.empty()) {
        ShowCode(eCodeLogPathNoSeparator);
        return false;
    }
    // A log whose name holds a backslash would otherwise land beside the stick, not on it.
    const std::string stick = GetUsbMountPoint() + GetPathSeparator();
    if (onStick.compare(0, stick.size(), stick) != 0) {
        SayWhy("log not copied", onStick + " lies outside " + stick);
        ShowCode(eCodeLogCopy);
        return false;
    }
    // The stick is the visitor's: a link there is replaced, never written through.
    if (!m_system->CopyFile(m_logPath, onStick, cause, SCopyOptions{eCopyDestination::ReplaceLink, nullptr})) {
        SayWhy("log not copied", cause);
        ShowCode(eCodeLogCopy);
        return false;
    }
    return true;
}

bool CUpdateProcedure::RebootInstrument() {
    if (VTX_SUPPRESS_REBOOT) {
        ShowStatus(GetText(eTextDone) + "...");
        m_log.LogEvent(NS_ConsoleLines::kRebootSuppressed);
        return true;
    }
    // The installed build and the stick's log go onto their media before the power goes.
    m_system->FlushAllFileSystems();
    m_log.LogEvent("Rebooting the instrument");
    const int status = m_system->RunShellCommand(NS_ShellCommand::PrivilegedReboot());
    // Normally the machine goes down before anyone reads this; when it does not, the console
    // tells the service engineer why the instrument is still on this screen.
    m_log.LogEvent(NS_ConsoleLines::kRebootReturned + std::to_string(status));
    return false;
}

unsigned long UpdateThreadMain(void* procedureHolder) {
    if (!procedureHolder) return 1;
    std::unique_ptr<std::shared_ptr<CUpdateProcedure>> holder(
        static_cast<std::shared_ptr<CUpdateProcedure>*>(procedureHolder));
    (*holder)->RunClosingSequence();
    return 0;
}
