#pragma once
// The update procedure: installs the build waiting in the new-build folder, keeps the old build
// as a dated backup, repairs the runtime library link when needed, installs the optional font
// package and auxiliary file, logs every step into the instrument's newest log file, copies that
// log to the stick and reboots. A failure stops where it happened with a text and a two-digit
// step code on the status line; nothing is undone and nothing is retried.

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "foundation/InstrumentEnums.h"
#include "log/InstrumentLog.h"
#include "update/UpdateManifest.h"
#include "update/UpdateSystem.h"

// Matches the instrument's update log files in the application folder.
inline constexpr const char kLogFilePattern[] = "*.log";
// The user manual's archive; the update does not install the manual.
inline constexpr const char kManualArchiveName[] = "Korvalin-manual.zip";

// What the procedure needs of its screen. Both are called from the procedure's worker thread.
class CUpdateScreen {
public:
    virtual ~CUpdateScreen() = default;
    virtual void ShowStatusText(const std::string& utf8) = 0;
    virtual void ShowProgress(int value, int maximum) = 0;
};

// Step codes shown on the status line; 02 and 05 have never been used.
enum eUpdateStepCode {
    eCodeNoApplication = 1,
    eCodeBackupFolder = 3,
    eCodeBackupCopy = 4,
    eCodeInstallCopy = 6,
    eCodeRemoveNewBuild = 7,
    eCodeNoLogFile = 8,
    eCodeLogScan = 9,
    eCodeLogOpen = 10,
    eCodeLogPathEmpty = 11,
    eCodeLogPathNoSeparator = 12,
    eCodeLogCopy = 13,
    eCodeLibraryCheckChinese = 14,
    eCodeLibraryCheckStandard = 15,
    eCodeLinkUnreadable = 16,
    eCodeLinkNotCurrent = 17,
    eCodeOperatingSystem = 18,
    eCodeNotSigned = 19,
};

// "Disk error... (04)": text 168 (or another), three dots, a blank and the code in parentheses.
std::string FormatStepCode(int code, uint32_t textId = 168);
// The backup name's time stamp from a modification time: DDMMYYYY_HHMM, local time.
std::string FormatBackupTimeStamp(time_t modificationTime);
// The log file's place on the stick: the mount point and the log path from its last "\" on,
// or, without one, from its last "/" on. Empty when the path has neither.
std::string StickPathOfLog(const std::string& logPath);

class CUpdateProcedure {
public:
    // The procedure works on system (not owned; null: the instrument's own), which must outlive it.
    explicit CUpdateProcedure(CUpdateScreen* screen, CUpdateSystem* system = nullptr);
    virtual ~CUpdateProcedure();
    CUpdateProcedure(const CUpdateProcedure&) = delete;
    CUpdateProcedure& operator=(const CUpdateProcedure&) = delete;

    // Read by the steps when they run, so a command delivered late still counts.
    void SetSpecialCommand(eUpdateCommandLineSpecialCmdParamCmd command) { m_specialCommand = command; }
    eUpdateCommandLineSpecialCmdParamCmd GetSpecialCommand() const { return m_specialCommand; }
    bool IsReducedUpdate() const { return m_specialCommand == 1; }

    // The worker thread's whole job: the steps, the full progress bar, and on success the
    // success text, a pause and the reboot. Returns whether the steps succeeded.
    bool RunClosingSequence();
    bool RunUpdateProcedure();

    bool OpenUpdateLog();
    // With the maker's key on the instrument: the stick's manifest is signed by it, for this
    // product, and lists every file the update will use as it is. Without a key: nothing at all.
    bool CheckUpdateSignature();
    bool CopyAuxiliaryFiles();
    bool CheckSystemLibraryLink();
    bool IsSystemLibraryCurrent();
    bool UpdateOperatingSystem();
    bool BackUpOldVersion();
    bool InstallNewVersion();
    bool InstallFontPackage();
    // After a signed update: the manifest accepted, kept in the code folder.
    bool RecordSignedRelease();
    bool FinishUpdateLog();
    // With reboot suppression: "Done..." and true; otherwise asks the privileged tool to reboot
    // and answers false.
    bool RebootInstrument();

    // Moves the bar one notch: the maximum grows with the position, so the bar creeps on
    // without ever claiming to be done. The steps do not call it: the bar stays empty until the
    // end of the run fills it, whatever the outcome.
    void ProgressStep();
    void FillProgress();
    int GetProgressPosition() const { return m_progressPosition; }
    int GetProgressMaximum() const { return m_progressMaximum; }

    const std::string& GetLogPath() const { return m_logPath; }
    const std::string& GetLogPrefix() const { return m_logPrefix; }

    // The screen goes away before the procedure may have ended (program shutdown): from then on
    // the procedure shows nothing. Waits for a screen call in progress to return.
    void DetachScreen();
    // How long the two pauses of the procedure last; the delivered program keeps 2000 ms.
    void SetPauseMilliseconds(unsigned ms) { m_pauseMs = ms; }

private:
    void ShowStatus(const std::string& text);
    void ShowCode(int code, const std::string& detail = std::string());
    void ShowProgressValue();
    void WriteLine(const std::string& line);
    void WritePrefixedLine(const std::string& text);
    void Pause();
    // The console line that says why a step refused its input or failed: the screen shows only
    // the step's text or code.
    void SayWhy(const std::string& what, const std::string& cause);
    bool IsUpdateLogCandidate(const SFoundLog& log);
    bool FontPackageRefused(const std::string& copied, const std::string& cause);
    bool SignatureRefused(const std::string& reason, const std::string& file);
    // What the manifest says a file holds; null when the update is not signed.
    const SFileContent* Expected(const std::string& manifestPath) const;
    bool MatchesManifest(const std::string& manifestPath, const std::string& path);
    // Hashes the new build during the first status's pause, where the instrument holds a key: the
    // check then finds the digests ready. A file changed since is hashed again.
    void StartHashingAhead();
    void StopHashingAhead();
    // A copy checked against the manifest; one that came out otherwise is a signature failure.
    bool CopyChecked(const std::string& from, const std::string& to, const std::string& manifestPath,
                     std::string& cause, bool& refused);
    // A file of the stick, judged by its kind (a link only to a file on the stick), then copied checked.
    bool CopyFromStick(const std::string& onStick, const std::string& to, std::string& cause, bool& refused);
    bool RunPrivileged(const std::string& command);
    bool ReadRuntimeLink(std::string& target);
    // A failure the procedure goes on after: said once on the console with its cause.
    void SayOnce(bool& said, const std::string& what, const std::string& cause);

    CUpdateSystem* m_system;

    std::mutex m_screenMutex;
    CUpdateScreen* m_screen;
    int m_progressPosition = 0;
    int m_progressMaximum = 100;
    bool m_logOpen = false;
    bool m_logWriteFailed = false;
    std::string m_logPrefix;
    std::string m_logPath;
    std::atomic<eUpdateCommandLineSpecialCmdParamCmd> m_specialCommand{0};
    unsigned m_pauseMs = 2000;
    CLogClient m_log;
    bool m_signed = false;
    CUpdateManifest m_manifest;
    std::string m_manifestBytes, m_signatureBytes;
    struct SHashedAhead {
        std::string identity;  // device, inode, size and times when it was hashed
        SFileContent content;
    };
    std::thread m_hashing;
    std::map<std::string, SHashedAhead> m_hashedAhead;  // by path; written by m_hashing until joined
};

// The worker thread's function. Its argument is a heap-allocated
// std::shared_ptr<CUpdateProcedure>, which the thread deletes; null returns 1 at once.
unsigned long UpdateThreadMain(void* procedureHolder);
