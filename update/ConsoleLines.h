#pragma once
// The console lines (standard error) that tell how an update run is going and how it ended, and the
// forms of the console's other lines that tools read. They are an interface: tools/run-update-session,
// tools/screenshot, the test harness (tools/harness) and the benchmarks wait for them or parse them,
// and they read the texts from this file. The session refuses a program that does not contain each
// of the first five, so a text changed in the code rather than here fails a run at once instead of
// letting it wait for its time-out.
// One definition a line, as the tools read it.

namespace NS_ConsoleLines {

inline constexpr char kStatus[] = "Status: ";  // followed by the status text just shown
inline constexpr char kSucceeded[] = "Update procedure succeeded";
inline constexpr char kFailed[] = "Update procedure failed";
inline constexpr char kRebootSuppressed[] = "Update procedure done, reboot suppressed";
inline constexpr char kRebootReturned[] = "The reboot command returned, exit status ";  // and the status

// The first line: this, then the build's version.
inline constexpr char kBuild[] = "vtx-update ";
// Every event line of the update procedure begins so: the log type's text, then the procedure's
// source in brackets (log/StderrLogSink.cpp's form; the source is the procedure's trace field). The
// lines above follow it, a status's line breaks written as \n and \r.
inline constexpr char kUpdateEvent[] = "Event [Update] ";
// With VTX_REPORT_PAINTS, every log line begins with this, the CLOCK_MONOTONIC seconds and a blank.
inline constexpr char kStamp[] = "vtx-bench log ";
// With VTX_REPORT_PAINTS, a drawing pass of a window is reported when it starts (this, the seconds,
// a blank, the window's class), once it has been handled (the same), and after the first pass once
// more (this and the seconds alone).
inline constexpr char kPaint[] = "vtx-bench paint ";
inline constexpr char kDrawn[] = "vtx-bench drawn ";
inline constexpr char kFirstPaint[] = "vtx-bench first-paint ";

}  // namespace NS_ConsoleLines
