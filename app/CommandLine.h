#pragma once
// The program's command line in its deliberately loose form: every argument is split at blanks and
// all pieces form one flat, numbered list of parameters, held by one thread-safe holder. The list
// turns into one number, the special command, read once at start-up.

#include "foundation/Collectors.h"
#include "foundation/InstrumentEnums.h"

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

// A string built from one separator character, or a token; the byte and the wide form.
template <class String, class Char>
class TTokenString : public String {
public:
    TTokenString() = default;
    explicit TTokenString(Char c) : String(1, c) {}
    TTokenString(const String& text) : String(text) {}  // NOLINT: a token is a string
    virtual ~TTokenString() = default;
    TTokenString(const TTokenString&) = default;
    TTokenString& operator=(const TTokenString&) = default;
};

// Splits its input at one separator character at construction. Empty tokens are kept at the
// start and between two separators, but a separator at the very end gives no empty last token.
template <class String, class Char>
class TStringTokenizer {
public:
    TStringTokenizer(const String& input, Char separator) { Split(input, TTokenString<String, Char>(separator)); }
    virtual ~TStringTokenizer() = default;

    uint32_t GetTokenCount() const { return static_cast<uint32_t>(m_tokens.size()); }
    const String& GetToken(uint32_t index) const {
        static const String empty;
        return index < m_tokens.size() ? m_tokens[index] : empty;
    }
    const std::vector<String>& GetTokens() const { return m_tokens; }

private:
    void Split(const String& input, const String& separator) {
        typename String::size_type position = 0;
        for (;;) {
            const typename String::size_type found = input.find(separator, position);
            if (found == String::npos) break;
            m_tokens.push_back(input.substr(position, found - position));
            position = found + separator.size();
        }
        if (position != input.size()) m_tokens.push_back(input.substr(position));
    }

    std::vector<String> m_tokens;
};

using CTokenString = TTokenString<std::string, char>;
using CTokenStringW = TTokenString<std::wstring, wchar_t>;
using CStringTokenizer = TStringTokenizer<std::string, char>;
using CStringTokenizerW = TStringTokenizer<std::wstring, wchar_t>;

// Appends one parameter to the application-wide list and writes "Param N: <parameter>" to the
// debug log.
void UpdateProgramCommandLineAddParameter(const std::string& parameter);

// Start-up: every argument after the program name, split at blanks, every token added in order.
void AddProgramArguments(int argc, char** argv);

// 0 unless the list is exactly the pair 1 and N; then N. Numbers are read as strtol does
// (base 10, text without digits reads as 0).
eUpdateCommandLineSpecialCmdParamCmd GetSpecialCommandFromCommandLine();
eUpdateCommandLineSpecialCmdParamCmd GetSpecialCommandFromCommandLine(CCommandLineHandler& handler);
