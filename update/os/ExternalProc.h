#pragma once
// Starts another program directly, without a shell, with its standard output and standard error
// on pipes, and lets the caller wait for it or ask whether it still runs.

#include <cstdint>
#include <string>

// One started program. The record frees nothing: the pipes' read ends stay open when it is
// dropped; whoever wants the output reads them (readProcOutput) and closes them (closeProcPipes).
struct CExternalProc {
    // Blank-separated, no quoting or escaping. Leading NAME=value tokens are appended to the
    // program's environment (an inherited NAME stays before them); the first other token is the
    // program path; argument 0 is its last component.
    std::string commandLine;
    int32_t pid = 0;            // 0 until started, -1 when the fork failed
    int outPipe[2] = {-1, -1};  // read end, write end
    int errPipe[2] = {-1, -1};
    int32_t status = 0;     // as the wait call delivers it
    bool finished = false;  // set once the process has been reaped
};

void startProc(CExternalProc& proc);
// Blocks until the process has ended, unless it is already known to have ended.
void waitForCompletion(CExternalProc& proc);
// True while the process runs; false once it has ended or when its state cannot be read.
bool stillRunning(CExternalProc& proc);

// Reads both pipes until the program has closed them (blocking, whatever the read ends' mode).
// Either text may be null to discard that stream. False on a read error; true at once for a
// program that never started.
bool readProcOutput(CExternalProc& proc, std::string* out, std::string* err);
// Closes what is still open of both pipes.
void closeProcPipes(CExternalProc& proc);

// Runs "\"" program "\"" plus " " arguments (when not empty) and optionally waits for it. The
// quotes become part of the program path, as the command line has no quoting.
void RunExternalProgram(bool wait, const std::string& programPath, const std::string& arguments);
