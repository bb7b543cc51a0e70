#pragma once
// Collects the toolkit's log records while alive (debug level included) and restores the previous
// log target and level afterwards. Main thread only.
#include <wx/log.h>

#include <string>
#include <vector>

namespace vtxtest {

class CTraceCapture : public wxLog {
public:
    struct Record {
        wxLogLevel level;
        std::string text;
        std::string function;
        std::string module;  // the record's source file field
    };

    explicit CTraceCapture(wxLogLevel level = wxLOG_Max) : m_oldLevel(wxLog::GetLogLevel()) {
        m_old = wxLog::SetActiveTarget(this);
        wxLog::SetLogLevel(level);
    }
    ~CTraceCapture() override {
        wxLog::SetActiveTarget(m_old);
        wxLog::SetLogLevel(m_oldLevel);
    }

    const std::vector<Record>& Records() const { return m_records; }
    std::vector<std::string> Texts() const {
        std::vector<std::string> texts;
        for (const Record& r : m_records) texts.push_back(r.text);
        return texts;
    }

protected:
    void DoLogRecord(wxLogLevel level, const wxString& msg, const wxLogRecordInfo& info) override {
        m_records.push_back(Record{level, msg.utf8_string(), info.func ? info.func : "",
                                   info.filename ? info.filename : ""});
    }

private:
    wxLog* m_old = nullptr;
    wxLogLevel m_oldLevel;
    std::vector<Record> m_records;
};

}  // namespace vtxtest
