// Any file read line by line with both reader forms and a buffer length taken from the input:
// reading must end, and every line must fit the buffer and hold no line end.
//
// Input: one byte for the buffer length (0 means the settings files' 1000), then the file.

#include "foundation/TextFile.h"
#include "fuzz/FuzzSupport.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace {

template <class Reader, class Char>
void CheckRead(const std::string& path, uint32_t maxLineLength, size_t fileSize) {
    Reader reader(maxLineLength);
    VTX_FUZZ_CHECK(reader.Open(path));
    const size_t usable = maxLineLength < 2 ? 1 : maxLineLength - 1;
    size_t lines = 0;
    size_t characters = 0;
    while (!reader.IsEof()) {
        // Every read takes at least one byte of the file, so a reader that loops longer is stuck.
        VTX_FUZZ_CHECK(lines <= fileSize);
        const auto line = reader.ReadLine();
        ++lines;
        characters += line.size();
        VTX_FUZZ_CHECK(line.size() <= usable);
        VTX_FUZZ_CHECK(line.find(Char('\n')) == decltype(line)::npos);
        VTX_FUZZ_CHECK(line.find(Char(0)) == decltype(line)::npos);
    }
    VTX_FUZZ_CHECK(characters <= fileSize);
    // At the end, reading gives nothing and stays at the end.
    VTX_FUZZ_CHECK(reader.ReadLine().empty());
    VTX_FUZZ_CHECK(reader.IsEof());
    reader.Close();
    VTX_FUZZ_CHECK(!reader.IsOpen() && reader.IsEof() && reader.ReadLine().empty());
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    vtxfuzz::StartToolkit();
    vtxfuzz::TempFolder();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    const uint32_t maxLineLength = data[0] == 0 ? 1000 : data[0];
    const std::string file(reinterpret_cast<const char*>(data) + 1, size - 1);
    const std::string path = vtxfuzz::PutFile("lines.txt", file);
    CheckRead<CTextFileReader, char>(path, maxLineLength, file.size());
    CheckRead<CTextFileReaderW, wchar_t>(path, maxLineLength, file.size());
    return 0;
}
