// A font package's bytes, as a stick may hold them, through the check that runs before tar: it
// ends on any input, and what it accepts holds only folders and files inside the font folder.

#include "fuzz/FuzzSupport.h"
#include "update/os/FontPackage.h"

#include <algorithm>
#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    std::string cause;
    const bool accepted = IsUnpackableFontPackageImage(bytes, "jfonts", 1u << 30, cause);
    VTX_FUZZ_CHECK(accepted == cause.empty());
    // The tar stream alone, in pieces of every size: the same verdict as whole.
    CFontPackageMembers whole("jfonts"), pieces("jfonts");
    const bool wholeOk = whole.Feed(data, size) && whole.Finish();
    bool piecesOk = true;
    for (size_t at = 0, step = 1; at < size && piecesOk; at += step, step = step % 700 + 1)
        piecesOk = pieces.Feed(data + at, std::min(step, size - at));
    piecesOk = piecesOk && pieces.Finish();
    VTX_FUZZ_CHECK(wholeOk == piecesOk && whole.UnpackedBytes() == pieces.UnpackedBytes());
    return 0;
}
