#pragma once
// The program-log lines (on the console, standard error) that tell how an update run is going and
// how it ended. They are an interface: tools/run-update-session, tools/screenshot and the
// end-to-end runs (tools/sandbox_run.py) wait for them, and they read the texts from this file.
// The session refuses a program that does not contain every one of them, so a text changed in
// the code rather than here fails a run at once instead of letting it wait for its time-out.
// One definition a line, as the tools read it.

namespace NS_ConsoleLines {

inline constexpr char kStatus[] = "Status: ";  // followed by the status text just shown
inline constexpr char kSucceeded[] = "Update procedure succeeded";
inline constexpr char kFailed[] = "Update procedure failed";
inline constexpr char kRebootSuppressed[] = "Update procedure done, reboot suppressed";
inline constexpr char kRebootReturned[] = "The reboot command returned, exit status ";  // and the status

}  // namespace NS_ConsoleLines
