#pragma once
// A program-log sink for the console: one line per message on standard error,
// "<type text> [<source>] <text>", with line breaks inside the text shown as \r and \n.

#include <string>

#include "log/InstrumentLog.h"

class CStderrLogSink : public CLogInterface {
public:
    // With stamps, each line begins with "vtx-bench log <seconds> ", the CLOCK_MONOTONIC time at
    // which it was written, for the measuring scripts and the end-to-end runs (they time the
    // update's pauses by its lines).
    explicit CStderrLogSink(bool stamped = false);
    ~CStderrLogSink() override;

    // Any thread; each line goes out in one write, so lines of several threads never mix.
    void Log(int type, const std::string& source, int context, const std::string& text) override;
    void Flush() override;

    // The line as written, line end included.
    static std::string FormatLine(int type, const std::string& source, const std::string& text);

private:
    const bool m_stamped;

protected:
    // Where the lines go; standard error unless a test says otherwise.
    virtual int GetDescriptor() const;
};
