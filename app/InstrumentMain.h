#pragma once
// The program's main controller. It brings the instrument up (cursor, quality-control file,
// settings, layout values), creates every registered view, hands the special command from the
// command line to the update view while switching to it, and runs the tick thread, which posts
// the 100 ms, 1 s, 1 min and 2 min ticks to the active view. Its destruction stops the tick thread
// (waiting a bounded time) and destroys the views.

#include <cstdint>
#include <map>
#include <string>

#include "app/WorkerThread.h"
#include "foundation/InstrumentEnums.h"
#include "log/InstrumentLog.h"

class CInstrumentBase;
class CInstrumentViewInterface;

// The factory quality-control values: "key = value" lines in the code directory's QC file.
class CInstrumentFactoryQC {
public:
    CInstrumentFactoryQC() = default;
    virtual ~CInstrumentFactoryQC() = default;

    // The instrument's file; false when it is missing, unreadable or holds a line that is not
    // "key = value" (the values read so far are dropped then).
    bool Read();
    bool ReadFile(const std::string& path);

    bool Has(const std::string& key) const { return m_values.count(key) != 0; }
    // Empty for a key the file does not hold.
    std::string Get(const std::string& key) const;
    size_t GetCount() const { return m_values.size(); }

private:
    std::map<std::string, std::string> m_values;
};

// Posts the active view's due ticks: one tick of the tick thread. The counter (application-wide,
// starting at 0) counts only calls that found an active view; the 1 s tick comes with every 10th,
// the 1 min tick with every 600th and the 2 min tick with every 1200th, each after the ones
// before it. False, with nothing posted and nothing counted, when no view is active.
bool PostDueTicks();
int32_t GetTickCounter();
void SetTickCounter(int32_t value);

class CInstrumentMain : public CLogClient, public CEnumEventThreadHandler<unsigned long> {
public:
    enum : unsigned long { kIdleEvent = 0, kStopEvent = 1 };
    enum : uint32_t { kTickMs = 100, kStopWaitMs = 1000 };
    enum : int { kTickThreadPriorityClass = 2 };

    // GUI thread: the whole start-up of the instrument; never fails (failures are logged).
    explicit CInstrumentMain(CInstrumentBase* drawingContext);
    // GUI thread: stops the tick thread (at most kStopWaitMs), destroys every view and the
    // view-side instrument object.
    ~CInstrumentMain() override;

    // The tick thread: the event value is not looked at.
    void OnEvent(unsigned long value) override;

    eUpdateCommandLineSpecialCmdParamCmd GetSpecialCommand() const { return m_specialCommand; }

private:
    eUpdateCommandLineSpecialCmdParamCmd m_specialCommand = 0;
};
