#pragma once
// Every line-oriented text file of the instrument goes through these two templates, so the line
// conventions live in one place: written with CR LF, read back accepting LF or CR LF, read into a
// buffer of a fixed maximum length chosen by the caller.

#include <cstdint>
#include <fstream>
#include <ios>
#include <string>

// Ios names the stream family the two streams belong to; the streams carry everything it gives.
template <class Ios, class IFStream, class String>
class TTextFileReader {
    using Char = typename String::value_type;

public:
    explicit TTextFileReader(uint32_t maxLineLength) : m_maxLineLength(maxLineLength < 2 ? 2 : maxLineLength) {}
    virtual ~TTextFileReader() { Close(); }

    bool Open(const std::string& path) {
        Close();
        m_stream.clear();
        m_stream.open(path.c_str(), std::ios::in);
        m_open = m_stream.is_open() && !m_stream.fail();
        if (m_open) m_stream.peek();  // an empty file is at its end at once
        return m_open;
    }
    bool IsOpen() const { return m_open; }
    // The stream's end-of-file state only: after a failed Open the reader is failed, not at its
    // end, so callers test Open's result before they loop on IsEof.
    bool IsEof() const { return m_stream.eof(); }

    // The next line without its line end. A line longer than the buffer comes back cut at the
    // buffer's length and its rest follows as the next line, so a reader looping until IsEof
    // always ends. A NUL inside a line ends the line there.
    String ReadLine() {
        String line(m_maxLineLength, Char(0));
        if (!m_open) return String();
        m_stream.getline(&line[0], static_cast<std::streamsize>(m_maxLineLength));
        if (m_stream.fail() && !m_stream.eof() && !m_stream.bad() &&
            m_stream.gcount() == static_cast<std::streamsize>(m_maxLineLength) - 1) {
            m_stream.clear();  // the buffer was full: the rest of the line is the next read
        } else if (m_stream.fail() && !m_stream.eof()) {
            m_stream.setstate(std::ios::eofbit);  // a read error ends the file for the caller
        }
        // Look ahead, so that IsEof turns true with the last line rather than one read later.
        if (m_stream.good()) m_stream.peek();
        const typename String::size_type length = line.find(Char(0));
        if (length == String::npos) return line;
        if (length >= 1 && line[length - 1] == Char(13)) {
            line.resize(length - 1);
        } else {
            line.resize(length);
        }
        return line;
    }
    void Close() {
        if (m_stream.is_open()) m_stream.close();
        m_open = false;
    }

private:
    IFStream m_stream;
    uint32_t m_maxLineLength;
    bool m_open = false;
};

template <class Ios, class OFStream, class String>
class TTextFileWriter {
    using Char = typename String::value_type;

public:
    TTextFileWriter() = default;
    virtual ~TTextFileWriter() { Close(); }

    // append: add at the end (the file is created if needed); otherwise truncate. Binary mode,
    // so the line ends on disk are exactly the CR LF that WriteLine writes.
    bool Open(const std::string& path, bool append) {
        Close();
        m_stream.clear();
        m_stream.open(path.c_str(), append ? (std::ios::out | std::ios::binary | std::ios::app)
                                           : (std::ios::out | std::ios::binary | std::ios::trunc));
        m_open = m_stream.is_open() && !m_stream.fail();
        return m_open;
    }
    bool IsOpen() const { return m_open; }

    // Writes at the current end of the file, also when another writer extended it meanwhile.
    // A text written while the file is closed is dropped.
    void Write(const String& text) {
        if (!m_open) return;
        m_stream.seekp(0, std::ios::end);
        m_stream.write(text.data(), static_cast<std::streamsize>(text.size()));
    }
    // The text, then CR and LF, handed to the operating system: a crash of the program keeps every
    // finished line, a power cut only what the system has written to the disk by then (nothing
    // here asks it to). False when the file is not open or the stream has failed (a full disk),
    // now or before: a failed stream writes nothing more.
    bool WriteLine(const String& text) {
        if (!m_open) return false;
        Write(text);
        m_stream.put(Char(13));
        m_stream.put(Char(10));
        m_stream.flush();
        return m_stream.good();
    }
    // False when the file was not open or a write or the close failed.
    bool Close() {
        if (!m_stream.is_open()) {
            m_open = false;
            return false;
        }
        m_open = false;
        m_stream.close();
        return !m_stream.fail();
    }
    bool Good() const { return m_open && m_stream.good(); }

private:
    bool m_open = false;
    OFStream m_stream;
};

using CTextFileReader =
    TTextFileReader<std::basic_ios<char>, std::basic_ifstream<char>, std::basic_string<char>>;
using CTextFileWriter =
    TTextFileWriter<std::basic_ios<char>, std::basic_ofstream<char>, std::basic_string<char>>;
using CTextFileReaderW =
    TTextFileReader<std::basic_ios<wchar_t>, std::basic_ifstream<wchar_t>, std::basic_string<wchar_t>>;
using CTextFileWriterW =
    TTextFileWriter<std::basic_ios<wchar_t>, std::basic_ofstream<wchar_t>, std::basic_string<wchar_t>>;
