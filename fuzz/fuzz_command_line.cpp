// The program's arguments (the input split at NUL bytes, as the kernel hands them over): each
// split at blanks in both tokenizer forms, the pieces collected in a handler and turned into the
// special command.

#include "app/CommandLine.h"
#include "fuzz/FuzzSupport.h"

#include <cstddef>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

// Joined again with the separator, the tokens give back the input less one separator at its
// very end; no token holds the separator.
template <class Tokenizer, class String, class Char>
std::vector<String> CheckedSplit(const String& input, Char separator) {
    const Tokenizer tokenizer(input, separator);
    const uint32_t count = tokenizer.GetTokenCount();
    VTX_FUZZ_CHECK(count == tokenizer.GetTokens().size());
    String joined;
    for (uint32_t i = 0; i < count; ++i) {
        const String& token = tokenizer.GetToken(i);
        VTX_FUZZ_CHECK(token.find(separator) == String::npos);
        if (i > 0) joined += separator;
        joined += token;
    }
    String expected = input;
    if (!expected.empty() && expected.back() == separator) expected.pop_back();
    VTX_FUZZ_CHECK(joined == expected);
    // An empty input has no token, a lone separator one empty token.
    VTX_FUZZ_CHECK((count == 0) == input.empty());
    VTX_FUZZ_CHECK(tokenizer.GetToken(count).empty());
    VTX_FUZZ_CHECK(tokenizer.GetToken(UINT32_MAX).empty());
    return tokenizer.GetTokens();
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    vtxfuzz::StartToolkit();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string input(reinterpret_cast<const char*>(data), size);
    std::vector<std::string> arguments;
    for (size_t from = 0;;) {
        const size_t end = input.find('\0', from);
        arguments.push_back(input.substr(from, end == std::string::npos ? std::string::npos : end - from));
        if (end == std::string::npos) break;
        from = end + 1;
    }

    CCommandLineHandler handler;
    std::vector<std::string> parameters;
    for (const std::string& argument : arguments) {
        for (const std::string& token : CheckedSplit<CStringTokenizer>(argument, ' ')) {
            handler.AddParameter(token);
            parameters.push_back(token);
        }
        // The wide form splits the same text (bytes widened one by one) into the same pieces.
        const std::wstring wide(argument.begin(), argument.end());
        const std::vector<std::wstring> wideTokens = CheckedSplit<CStringTokenizerW>(wide, L' ');
        VTX_FUZZ_CHECK(wideTokens.size() == CStringTokenizer(argument, ' ').GetTokenCount());
    }

    const int32_t count = handler.GetParameterCount();
    VTX_FUZZ_CHECK(count == static_cast<int32_t>(parameters.size()));
    for (int32_t i = 0; i < count; ++i) VTX_FUZZ_CHECK(handler.GetParameter(static_cast<uint32_t>(i)) == parameters[i]);
    VTX_FUZZ_CHECK(handler.GetParameter(static_cast<uint32_t>(count)).empty());

    // Only the pair 1 and N selects a command; everything else is the normal update.
    const eUpdateCommandLineSpecialCmdParamCmd command = GetSpecialCommandFromCommandLine(handler);
    // Numbers as the instrument's 32-bit strtol reads them: saturated at its range.
    const auto read32 = [](const std::string& text) {
        const long value = std::strtol(text.c_str(), nullptr, 10);
        return static_cast<int32_t>(value > INT32_MAX ? INT32_MAX : value < INT32_MIN ? INT32_MIN : value);
    };
    if (count != 2 || read32(parameters[0]) != 1) {
        VTX_FUZZ_CHECK(command == 0);
    } else {
        VTX_FUZZ_CHECK(command == static_cast<eUpdateCommandLineSpecialCmdParamCmd>(read32(parameters[1])));
    }
    return 0;
}
