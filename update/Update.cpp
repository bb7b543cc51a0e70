#include "update/Update.h"

#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <ctime>
#include <thread>

#include "foundation/InstrumentSettings.h"
#include "foundation/InstrumentTime.h"
#include "language/InstrumentLanguage.h"
#include "update/os/ComputerControl.h"
#include "update/os/FileInfo.h"
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
};

// The runtime link's target, or false when it cannot be read.
bool ReadLinkTarget(std::string& target) {
    char buffer[512];
    const ssize_t length = readlink(GetRuntimeLibraryLink().c_str(), buffer, sizeof(buffer) - 1);
    if (length < 0) return false;
    buffer[length] = '\0';
    target.assign(buffer, static_cast<size_t>(length));
    return true;
}

}  // namespace

std::string FormatStepCode(int code) {
    char number[16];
    std::snprintf(number, sizeof(number), "%02d", code);
    return GetText(eTextDiskError) + "... (" + number + ")";
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

CUpdateProcedure::CUpdateProcedure(CUpdateScreen* screen) : m_screen(screen), m_log("Update") {}

CUpdateProcedure::~CUpdateProcedure() { m_logWriter.Close(); }

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

void CUpdateProcedure::ShowCode(int code, const std::string& detail) { ShowStatus(FormatStepCode(code) + detail); }

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

void CUpdateProcedure::WriteLine(const std::string& line) { m_logWriter.WriteLine(line); }

void CUpdateProcedure::WritePrefixedLine(const std::string& text) { m_logWriter.WriteLine(m_logPrefix + text); }

void CUpdateProcedure::Pause() { std::this_thread::sleep_for(std::chrono::milliseconds(m_pauseMs)); }

bool CUpdateProcedure::RunPrivileged(const std::string& command) {
    return RunShellCommand(NS_ShellCommand::Privileged(command)) == 0;
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
    Pause();
    if (!OpenUpdateLog() || !CopyAuxiliaryFiles() || !CheckSystemLibraryLink()) return false;
    if (!IsSystemLibraryCurrent() && !UpdateOperatingSystem()) return false;
    if (!BackUpOldVersion() || !InstallNewVersion() || !InstallFontPackage()) return false;
    return FinishUpdateLog();
}

bool CUpdateProcedure::OpenUpdateLog() {
    if (IsReducedUpdate()) return true;
    const std::string folder = GetApplicationFolder() + GetPathSeparator();
    CFileInfoArray logs;
    logs.ScanFolder(folder, kLogFilePattern, false);
    if (logs.Count() == 0) {
        ShowCode(eCodeNoLogFile, folder);
        return false;
    }
    if (logs.HadScanError()) {
        ShowCode(eCodeLogScan);
        return false;
    }
    size_t newest = 0;
    for (size_t i = 1; i < logs.Count(); ++i) {
        if (logs.GetLastWriteTime(i).IsLaterThan(logs.GetLastWriteTime(newest))) newest = i;
    }
    m_logPath = logs.GetPath(newest);
    if (!m_logWriter.Open(m_logPath, true)) {
        ShowCode(eCodeLogOpen);
        return false;
    }
    m_logPrefix = CInstrumentTime::Now().FormatDateTime(GetSettingDateFormat() == eDateFormatEU);
    return true;
}

bool CUpdateProcedure::CopyAuxiliaryFiles() {
    if (IsReducedUpdate()) return true;
    const std::string onStick = JoinPath(GetUsbUpdateFolder(), GetAuxiliaryFileName());
    const std::string onInstrument = JoinPath(GetApplicationFolder(), GetAuxiliaryFileName());
    if (!FileExists(onStick)) {
        WritePrefixedLine(" no zip file on USB");
        return true;
    }
    if (FileExists(onInstrument)) {
        WritePrefixedLine(" zip already copied");
        return true;
    }
    if (!CopyFile(onStick, onInstrument)) {
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
    if (!ReadLinkTarget(target)) {
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
    if (ReadLinkTarget(target) && target == GetRuntimeLibraryTarget()) {
        WriteLine("version is correct, starting normal upgrade procedure");
        return true;
    }
    // Stays on the screen while the operating system is updated: the next message replaces it.
    ShowCode(eCodeLinkNotCurrent);
    return false;
}

bool CUpdateProcedure::UpdateOperatingSystem() {
    auto fail = [this](const char* line) {
        WriteLine(line);
        ShowCode(eCodeOperatingSystem);
        return false;
    };
    WriteLine("version incorrect - updating OS");
    const std::string replacement = JoinPath(GetUsbUpdateFolder(), GetRuntimeLibraryName());
    if (!FileExists(replacement)) return fail("FAIL - no prerequisites on USB");
    WriteLine("prerequisites exists on USB");
    if (!FileExists(GetPrivilegedTool())) return fail("FAIL - no prerequisites on disk");
    WriteLine("prerequisites exists on disk");
    if (!RunPrivileged(NS_ShellCommand::RemountWritable(GetRootImageFolder()))) return fail("FAIL - cannot mount OS");
    WriteLine("remounted OS");
    if (!RunPrivileged(NS_ShellCommand::CopyPlain(replacement, GetRootImageRuntimeLibraryTarget())))
        return fail("FAIL - cannot copy prerequisites to OS");
    WriteLine("copied prerequisites to OS");
    // The link names the target as the running system will see it after the reboot.
    if (!RunPrivileged(NS_ShellCommand::LinkSymbolic(GetRuntimeLibraryTarget(), GetRootImageRuntimeLibraryLink())))
        return fail("FAIL - cannot link prerequisites");
    WriteLine("link changed");
    return true;
}

bool CUpdateProcedure::BackUpOldVersion() {
    const std::string application = GetApplicationFile();
    CFileInfoArray info;
    if (info.AddFile(application) < 0) {
        ShowCode(eCodeNoApplication);
        return false;
    }
    const time_t modified = static_cast<time_t>(info.GetLastWriteTime(0).GetValue().GetValue() / 1000);
    const std::string backupFolder = GetBackupFolder();
    if (!CreateFolder(backupFolder)) {
        ShowCode(eCodeBackupFolder);
        return false;
    }
    // Named after the application, with the time it was last written.
    const std::string backup =
        JoinPath(backupFolder, GetInstrumentApplicationFileName() + "_" + FormatBackupTimeStamp(modified));
    if (!CopyFile(application, backup)) {
        ShowCode(eCodeBackupCopy);
        return false;
    }
    if (!IsReducedUpdate()) WritePrefixedLine(" Old version backed up to " + backup);
    return true;
}

bool CUpdateProcedure::InstallNewVersion() {
    const bool chinese = FileExists(GetChineseVariantMarker());
    const std::string fileName = chinese ? GetChineseApplicationFileName() : GetInstrumentApplicationFileName();
    const std::string newBuild = JoinPath(GetNewBuildFolder(), fileName);
    // The check's sense is inverted and stays so: a zero exit status stops the installation.
    if (RunShellCommand(NS_ShellCommand::LibraryCheck(newBuild)) == 0) {
        ShowCode(chinese ? eCodeLibraryCheckChinese : eCodeLibraryCheckStandard);
        return false;
    }
    if (!CopyFile(newBuild, GetApplicationFile())) {
        ShowCode(eCodeInstallCopy);
        return false;
    }
    if (!RemoveFolderTree(GetNewBuildFolder())) {
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
    if (!FileExists(package)) return true;
    if (FileExists(JoinPath(home, GetFontPackageFileName()))) return true;
    WritePrefixedLine(" Copying " + package + " to " + home);
    if (!CopyFile(package, home)) {
        ShowStatus(GetText(eTextCouldNotCopy) + ": font package");
        WritePrefixedLine(" could not copy font package");
        return false;
    }
    bool opened = false;
    const std::string printed = RunCommandOutput(NS_ShellCommand::UnpackFontPackage(home, GetFontPackageFileName()), opened);
    if (!opened || !printed.empty()) {
        ShowStatus(GetText(eTextCouldNotCopy) + ": " + printed);
        WritePrefixedLine(" Unpack error : " + printed);
        return false;
    }
    if (FileExists(GetFontFolder())) return true;
    ShowStatus(GetText(eTextCouldNotCopy) + ": font package unpack");
    WritePrefixedLine(" could not unpack font package");
    return false;
}

bool CUpdateProcedure::FinishUpdateLog() {
    if (IsReducedUpdate()) return true;
    WritePrefixedLine(" Application started");
    m_logWriter.Close();
    // The instrument's copy whole on its disk before a copy of it goes to the stick.
    FlushFileToDisk(m_logPath);
    if (m_logPath.empty()) {
        ShowCode(eCodeLogPathEmpty);
        return false;
    }
    const std::string onStick = StickPathOfLog(m_logPath);
    if (onStick.empty()) {
        ShowCode(eCodeLogPathNoSeparator);
        return false;
    }
    if (!CopyFile(m_logPath, onStick)) {
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
    FlushAllFileSystems();
    m_log.LogEvent("Rebooting the instrument");
    const int status = RunShellCommand(NS_ShellCommand::PrivilegedReboot());
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
