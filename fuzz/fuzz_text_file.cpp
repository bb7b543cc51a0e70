// Any file read line by line: reading ends, every line fits the buffer and holds no line end.
// Input: one byte for the buffer length (0: the settings files' 1000), then the file.

#include "foundation/TextFile.h"
#include "fuzz/FuzzSupport.h"

#include <algorithm>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    const uint32_t length = data[0] == 0 ? 1000 : data[0];
    const std::string file(reinterpret_cast<const char*>(data) + 1, size - 1);
    CTextFileReader reader(length);
    VTX_FUZZ_CHECK(reader.Open(vtxfuzz::PutFile("lines", file)));
    size_t lines = 0, characters = 0;
    while (!reader.IsEof()) {
        // Every read takes at least one byte of the file, so a reader that loops longer is stuck.
        VTX_FUZZ_CHECK(++lines <= file.size());
        const std::string line = reader.ReadLine();
        characters += line.size();
        VTX_FUZZ_CHECK(line.size() < std::max<uint32_t>(length, 2));
        VTX_FUZZ_CHECK(line.find('\n') == std::string::npos && line.find('\0') == std::string::npos);
    }
    VTX_FUZZ_CHECK(characters <= file.size() && reader.ReadLine().empty() && reader.IsEof());
    return 0;
}
