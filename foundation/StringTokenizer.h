#pragma once
// The framework's string splitter: the command line and the user log's multi-line entries are cut
// with it, so both keep its one rule on empty pieces.

#include <cstdint>
#include <string>
#include <vector>

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
    TStringTokenizer(const String& input, Char separator) {
        Split(input, TTokenString<String, Char>(separator));
    }
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
