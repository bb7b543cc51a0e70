// Placeholder filling: a text with any number of "<TAG_AMOUNT>" marks and any values, the values
// possibly holding the mark themselves.
//
// Input: the text, then the values, separated by NUL bytes (at most 16 values).

#include "fuzz/FuzzSupport.h"
#include "language/InstrumentLanguage.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    vtxfuzz::StartToolkit();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string input(reinterpret_cast<const char*>(data), size);
    std::vector<std::string> parts;
    for (size_t from = 0; parts.size() < 17;) {
        const size_t end = input.find('\0', from);
        parts.push_back(input.substr(from, end == std::string::npos ? std::string::npos : end - from));
        if (end == std::string::npos) break;
        from = end + 1;
    }
    const std::string text = parts[0];
    const std::vector<std::string> values(parts.begin() + 1, parts.end());

    const std::string& mark = CInstrumentLanguageDef::GetPlaceholder();
    VTX_FUZZ_CHECK(mark.size() == CInstrumentLanguageDef::GetPlaceholderLength());
    size_t marks = 0;
    for (size_t at = text.find(mark); at != std::string::npos; at = text.find(mark, at + mark.size())) ++marks;
    const size_t filled = values.size() < marks ? values.size() : marks;

    // Each filled mark is replaced by its value; text between the marks and any mark left over is
    // kept. Walking the result with the original text as a template must account for every byte.
    const std::string result = CInstrumentLanguageDef::FillPlaceholders(text, values);
    size_t inText = 0;
    size_t inResult = 0;
    for (size_t i = 0; i < filled; ++i) {
        const size_t at = text.find(mark, inText);
        VTX_FUZZ_CHECK(result.size() >= inResult + (at - inText) + values[i].size());
        VTX_FUZZ_CHECK(result.compare(inResult, at - inText, text, inText, at - inText) == 0);
        inResult += at - inText;
        VTX_FUZZ_CHECK(result.compare(inResult, values[i].size(), values[i]) == 0);
        inResult += values[i].size();
        inText = at + mark.size();
    }
    VTX_FUZZ_CHECK(result.size() >= inResult && result.size() - inResult == text.size() - inText);
    VTX_FUZZ_CHECK(result.compare(inResult, std::string::npos, text, inText, std::string::npos) == 0);

    // The list form gives the same.
    if (values.size() == 2) VTX_FUZZ_CHECK(CInstrumentLanguageDef::FillPlaceholders(text, {values[0], values[1]}) == result);
    return 0;
}
