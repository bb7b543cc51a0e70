#pragma once
// The program's command line in its deliberately loose form: every argument is split at blanks and
// all pieces form one flat, numbered list of parameters, held by one thread-safe holder. The list
// turns into one number, the special command, read once at start-up.

#include "foundation/Collectors.h"
#include "foundation/InstrumentEnums.h"
#include "foundation/StringTokenizer.h"

#include <cstdint>
#include <deque>
#include <mutex>
#include <string>
#include <vector>

// One application-wide instance, reached through CSingleton<CCommandLineHandler>.
class CCommandLineHandler {
public:
    CCommandLineHandler() = default;
    virtual ~CCommandLineHandler() = default;
    CCommandLineHandler(const CCommandLineHandler&) = delete;
    CCommandLineHandler& operator=(const CCommandLineHandler&) = delete;

    void AddParameter(const std::string& parameter);
    int32_t GetParameterCount();
    // The parameter at index, or the handler's own empty string for any index not below the
    // count. References stay valid while parameters are added.
    const std::string& GetParameter(uint32_t index);

private:
    std::mutex m_mutex;
    const std::string m_empty;
    std::deque<std::string> m_parameters;
};

// Appends one parameter to the application-wide list and writes "Param N: <parameter>" to the
// debug log.
void UpdateProgramCommandLineAddParameter(const std::string& parameter);

// Start-up: every argument after the program name, split at blanks, every token added in order.
void AddProgramArguments(int argc, char** argv);

// 0 unless the list is exactly the pair 1 and N; then N. Numbers are read as a 32-bit strtol does
// (base 10, text without digits reads as 0).
eUpdateCommandLineSpecialCmdParamCmd GetSpecialCommandFromCommandLine();
eUpdateCommandLineSpecialCmdParamCmd GetSpecialCommandFromCommandLine(CCommandLineHandler& handler);
