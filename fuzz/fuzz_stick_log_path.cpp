// The update log's path turned into its place on the stick: the mount point followed by the
// path's tail from its last "\" on or, without one, from its last "/" on.

#include "fuzz/FuzzSupport.h"
#include "update/locations/InstrumentLocations.h"
#include "update/Update.h"

#include <cstddef>
#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    vtxfuzz::StartToolkit();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string logPath(reinterpret_cast<const char*>(data), size);
    const std::string onStick = StickPathOfLog(logPath);
    const bool backslash = logPath.find('\\') != std::string::npos;
    if (!backslash && logPath.find('/') == std::string::npos) {
        VTX_FUZZ_CHECK(onStick.empty());
        return 0;
    }
    const std::string mountPoint = GetUsbMountPoint();
    VTX_FUZZ_CHECK(onStick.compare(0, mountPoint.size(), mountPoint) == 0);
    const std::string tail = onStick.substr(mountPoint.size());
    // The tail is the path's end and starts at the separator that won; past it there is none of
    // that kind.
    VTX_FUZZ_CHECK(!tail.empty() && tail.size() <= logPath.size());
    VTX_FUZZ_CHECK(logPath.compare(logPath.size() - tail.size(), tail.size(), tail) == 0);
    const char separator = backslash ? '\\' : '/';
    VTX_FUZZ_CHECK(tail[0] == separator);
    VTX_FUZZ_CHECK(tail.find(separator, 1) == std::string::npos);
    return 0;
}
