// The program's arguments (the input split at NUL bytes, as the kernel hands them over), each
// split at blanks as at start-up, and the special command read from the pieces.

#include "app/CommandLine.h"
#include "fuzz/FuzzSupport.h"

#include <algorithm>
#include <climits>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string input(reinterpret_cast<const char*>(data), size);
    CCommandLineHandler handler;
    for (size_t from = 0; from <= input.size();) {
        const size_t end = std::min(input.find('\0', from), input.size());
        const std::string argument = input.substr(from, end - from);
        from = end + 1;
        // Joined again with blanks, the pieces give back the argument less one blank at its end.
        const CStringTokenizer tokens(argument, ' ');
        std::string joined;
        for (uint32_t i = 0; i < tokens.GetTokenCount(); ++i) {
            VTX_FUZZ_CHECK(tokens.GetToken(i).find(' ') == std::string::npos);
            joined += (i ? " " : "") + tokens.GetToken(i);
            handler.AddParameter(tokens.GetToken(i));
        }
        VTX_FUZZ_CHECK(joined + (joined.size() < argument.size() ? " " : "") == argument);
        VTX_FUZZ_CHECK(tokens.GetToken(tokens.GetTokenCount()).empty());
    }

    // Only the pair 1 and N selects a command; numbers as the instrument's 32-bit strtol reads them.
    const auto read32 = [](const std::string& text) {
        return static_cast<int32_t>(
            std::clamp<long long>(std::strtoll(text.c_str(), nullptr, 10), INT32_MIN, INT32_MAX));
    };
    const bool pair = handler.GetParameterCount() == 2 && read32(handler.GetParameter(0)) == 1;
    VTX_FUZZ_CHECK(
        GetSpecialCommandFromCommandLine(handler) ==
        (pair ? static_cast<eUpdateCommandLineSpecialCmdParamCmd>(read32(handler.GetParameter(1))) : 0u));
    return 0;
}
