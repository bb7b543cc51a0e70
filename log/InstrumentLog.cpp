#include "log/InstrumentLog.h"

namespace {
std::atomic<CLogInterface*> g_sink{nullptr};

void Send(const CTraceField* field, int type, const std::string& text, int context) {
    CLogInterface* sink = g_sink.load(std::memory_order_acquire);
    if (!sink) return;
    static const std::string noSource;
    sink->Log(type, field ? field->GetName() : noSource, context, text);
}

bool TracePasses(const CTraceField* field, int minLevel) { return field && field->GetLevel() > minLevel; }
}  // namespace

const char* GetLogTypeText(int type) {
    // The table keeps "Data" seventh, so the mapping goes by value, not by position.
    static const char* const texts[] = {"Internal Error", "Error",         "Warning", "Message",
                                        "Event",          "Program Event", "Data",    "Trace1",
                                        "Trace2",         "Unknown Type",  "None",    "All"};
    switch (type) {
        case eLogInternalError: return texts[0];
        case eLogError: return texts[1];
        case eLogWarning: return texts[2];
        case eLogMessage: return texts[3];
        case eLogEvent: return texts[4];
        case eLogProgramEvent: return texts[5];
        case eLogTrace1: return texts[7];
        case eLogTrace2: return texts[8];
        case eLogData: return texts[6];
        default: return texts[9];
    }
}

const char* GetTraceLevelText(int level) {
    switch (level) {
        case 0: return "None";
        case 1: return "Trace1";
        case 2: return "Trace2";
        case 3: return "All";
        default: return "Unknown Type";
    }
}

CLogInterface::CLogInterface() { g_sink.store(this, std::memory_order_release); }

// Whichever sink is current: with one sink at a time, destroying any sink leaves the program
// without one.
CLogInterface::~CLogInterface() { g_sink.store(nullptr, std::memory_order_release); }

CLogInterface* CLogInterface::GetCurrent() { return g_sink.load(std::memory_order_acquire); }

void LogWithType(const CTraceField* f, int type, const std::string& t, int c) { Send(f, type, t, c); }
void LogInternalError(const CTraceField* f, const std::string& t, int c) { Send(f, eLogInternalError, t, c); }
void LogError(const CTraceField* f, const std::string& t, int c) { Send(f, eLogError, t, c); }
void LogWarning(const CTraceField* f, const std::string& t, int c) { Send(f, eLogWarning, t, c); }
void LogMessage(const CTraceField* f, const std::string& t, int c) { Send(f, eLogMessage, t, c); }
void LogEvent(const CTraceField* f, const std::string& t, int c) { Send(f, eLogEvent, t, c); }
void LogProgramEvent(const CTraceField* f, const std::string& t, int c) { Send(f, eLogProgramEvent, t, c); }

void LogTrace1(const CTraceField* f, const std::string& t, int c) {
    if (TracePasses(f, 0)) Send(f, eLogTrace1, t, c);
}
void LogTrace2(const CTraceField* f, const std::string& t, int c) {
    if (TracePasses(f, 1)) Send(f, eLogTrace2, t, c);
}
void LogData(const CTraceField* f, const std::string& label, const std::string& value, int c) {
    if (TracePasses(f, 2)) Send(f, eLogData, label + ":" + value, c);
}

CLogTraceScope::CLogTraceScope(const CTraceField* field, std::string name, int type)
    : m_field(field), m_name(std::move(name)), m_type(type) {
    if (Passes()) Send(m_field, m_type, m_name + " Enter", 0);
}

CLogTraceScope::~CLogTraceScope() {
    if (Passes()) Send(m_field, m_type, m_name + " Exit", 0);
}

bool CLogTraceScope::Passes() const { return m_field && m_type <= m_field->GetLevel() + 5; }

CLogClient::CLogClient(const std::string& name, int level)
    : CCollectorsItem<CLogClient>(this), m_field(name, level) {}

CLogClient::~CLogClient() = default;
