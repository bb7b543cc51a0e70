#include "app/CommandLine.h"

#include "foundation/DebugTrace.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdlib>

void CCommandLineHandler::AddParameter(const std::string& parameter) {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_parameters.push_back(parameter);
}

int32_t CCommandLineHandler::GetParameterCount() {
    std::lock_guard<std::mutex> lock(m_mutex);
    return static_cast<int32_t>(m_parameters.size());
}

const std::string& CCommandLineHandler::GetParameter(uint32_t index) {
    std::lock_guard<std::mutex> lock(m_mutex);
    return index < m_parameters.size() ? m_parameters[index] : m_empty;
}

void UpdateProgramCommandLineAddParameter(const std::string& parameter) {
    CCommandLineHandler* handler = CSingleton<CCommandLineHandler>::GetInstance();
    if (!handler) return;  // only after the holder was destroyed at exit
    handler->AddParameter(parameter);
    if (!VtxDebugTraceEnabled()) return;
    const int32_t count = handler->GetParameterCount();
    const std::string text =
        "Param " + std::to_string(count) + ": " + handler->GetParameter(static_cast<uint32_t>(count - 1)) + "\n";
    VtxDebugTrace("Update", "UpdateProgramCommandLineAddParameter", "%s", text.c_str());
}

void AddProgramArguments(int argc, char** argv) {
    if (!argv) return;
    for (int i = 1; i < argc; ++i) {
        if (!argv[i]) continue;
        const CStringTokenizer tokens(argv[i], ' ');
        for (const std::string& token : tokens.GetTokens()) UpdateProgramCommandLineAddParameter(token);
    }
}

namespace {
// As strtol reads it on the instrument's 32-bit PC, where long has 32 bits: a number beyond that
// range saturates instead of wrapping round ("4294967297" is not 1). Where long is wider, the
// saturation is done by hand.
int32_t ReadNumber(const std::string& text) {
#if LONG_MAX == INT32_MAX
    return static_cast<int32_t>(std::strtol(text.c_str(), nullptr, 10));
#else
    const long long value = std::strtoll(text.c_str(), nullptr, 10);
    return static_cast<int32_t>(std::clamp<long long>(value, INT32_MIN, INT32_MAX));
#endif
}
}  // namespace

eUpdateCommandLineSpecialCmdParamCmd GetSpecialCommandFromCommandLine(CCommandLineHandler& handler) {
    const int32_t count = handler.GetParameterCount();
    if (count == 0) return 0;
    if (ReadNumber(handler.GetParameter(0)) == 1 && count == 2)
        return static_cast<eUpdateCommandLineSpecialCmdParamCmd>(ReadNumber(handler.GetParameter(1)));
    return 0;
}

eUpdateCommandLineSpecialCmdParamCmd GetSpecialCommandFromCommandLine() {
    CCommandLineHandler* handler = CSingleton<CCommandLineHandler>::GetInstance();
    return handler ? GetSpecialCommandFromCommandLine(*handler) : 0;
}
