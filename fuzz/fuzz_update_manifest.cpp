// A stick's manifest, signature and a key file, as a stick or a root image may hold them: each
// parser ends on any input, and what the manifest parser accepts holds only well-formed entries.

#include "fuzz/FuzzSupport.h"
#include "update/UpdateManifest.h"
#include "update/UpdateSignature.h"

#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    std::string cause;
    CUpdateManifest manifest;
    if (manifest.Parse(text, cause)) {
        VTX_FUZZ_CHECK(!manifest.GetProduct().empty() && !manifest.GetRelease().empty());
        for (const auto& file : manifest.GetFiles()) {
            const std::string bounded = "/" + file.first + "/";
            VTX_FUZZ_CHECK(bounded.size() > 2 && bounded.find("//") == std::string::npos &&
                           bounded.find("/./") == std::string::npos &&
                           bounded.find("/../") == std::string::npos);
            VTX_FUZZ_CHECK(file.second.sha256.size() == 64 && file.second.size <= (uint64_t{1} << 53));
        }
    } else {
        VTX_FUZZ_CHECK(!cause.empty());
    }
    SUpdateSignature signature;
    SUpdateKey key;
    if (ParseUpdateSignature(text, signature, cause) && ParseUpdateKey(text, key, cause)) {
        // A text cannot be both; if ever it parses as both, verifying must still only say no.
        VTX_FUZZ_CHECK(!VerifyUpdateSignature(text, signature, {key}, cause));
    }
    return 0;
}
