#pragma once
// The program log: typed, leveled messages that every module sends to one process-wide sink.
// Trace messages pass only when the trace level of the module's trace field allows them.

#include <atomic>
#include <utility>
#include <string>

#include "foundation/Collectors.h"

enum eLogType {
    eLogInternalError = 0,
    eLogError = 1,
    eLogWarning = 2,
    eLogMessage = 3,
    eLogEvent = 4,
    eLogProgramEvent = 5,
    eLogTrace1 = 6,
    eLogTrace2 = 7,
    eLogData = 8,
};

// "Internal Error" ... "Data"; "Unknown Type" for any other value.
const char* GetLogTypeText(int type);

// A module's named trace level (0 "None" to 3 "All"); its name is the source of its messages.
class CTraceField {
public:
    explicit CTraceField(std::string name, int level = 0) : m_name(std::move(name)), m_level(level) {}
    virtual ~CTraceField() = default;
    const std::string& GetName() const { return m_name; }
    int GetLevel() const { return m_level.load(std::memory_order_relaxed); }
    void SetLevel(int level) { m_level.store(level, std::memory_order_relaxed); }

private:
    std::string m_name;
    std::atomic<int> m_level;
};

// "None", "Trace1", "Trace2", "All"; "Unknown Type" outside 0 to 3.
const char* GetTraceLevelText(int level);

// The abstract log sink. Building one makes it the current sink; destroying it leaves none.
// A sink must accept calls from any thread.
class CLogInterface {
public:
    CLogInterface();
    virtual ~CLogInterface();
    CLogInterface(const CLogInterface&) = delete;
    CLogInterface& operator=(const CLogInterface&) = delete;

    virtual void Log(int type, const std::string& source, int context, const std::string& text) = 0;
    // Pushes out whatever the sink buffers.
    virtual void Flush() = 0;

    static CLogInterface* GetCurrent();
};

// Each does nothing without a sink. The field gives the source name and the trace filter; a null
// field logs with an empty source (traces of a null field never pass).
void LogWithType(const CTraceField* field, int type, const std::string& text, int context = 0);
void LogInternalError(const CTraceField* field, const std::string& text, int context = 0);
void LogError(const CTraceField* field, const std::string& text, int context = 0);
void LogWarning(const CTraceField* field, const std::string& text, int context = 0);
void LogMessage(const CTraceField* field, const std::string& text, int context = 0);
void LogEvent(const CTraceField* field, const std::string& text, int context = 0);
void LogProgramEvent(const CTraceField* field, const std::string& text, int context = 0);
void LogTrace1(const CTraceField* field, const std::string& text, int context = 0);
void LogTrace2(const CTraceField* field, const std::string& text, int context = 0);
void LogData(const CTraceField* field, const std::string& label, const std::string& value, int context = 0);

// Traces "<name> Enter" and "<name> Exit" around a scope.
class CLogTraceScope {
public:
    CLogTraceScope(const CTraceField* field, std::string name, int type);
    ~CLogTraceScope();
    CLogTraceScope(const CLogTraceScope&) = delete;
    CLogTraceScope& operator=(const CLogTraceScope&) = delete;

private:
    bool Passes() const;
    const CTraceField* m_field;
    std::string m_name;
    int m_type;
};

class CLogList;
class CLogClient;
template <>
struct CCollectorTraits<CLogClient> {
    using Collector = CLogList;
};

// A self-registering log client with its own trace field; modules log through it.
class CLogClient : public CCollectorsItem<CLogClient> {
public:
    explicit CLogClient(const std::string& name, int level = 0);
    ~CLogClient() override;

    CTraceField& GetTraceField() { return m_field; }
    const CTraceField& GetTraceField() const { return m_field; }
    void LogError(const std::string& text, int context = 0) const { ::LogError(&m_field, text, context); }
    void LogWarning(const std::string& text, int context = 0) const { ::LogWarning(&m_field, text, context); }
    void LogMessage(const std::string& text, int context = 0) const { ::LogMessage(&m_field, text, context); }
    void LogEvent(const std::string& text, int context = 0) const { ::LogEvent(&m_field, text, context); }
    void LogTrace1(const std::string& text, int context = 0) const { ::LogTrace1(&m_field, text, context); }
    void LogTrace2(const std::string& text, int context = 0) const { ::LogTrace2(&m_field, text, context); }

private:
    CTraceField m_field;
};

class CLogList : public CObjectCollectorHandler<CLogClient> {};
