// The update log's path turned into its place on the stick: the mount point followed by the
// path's tail from its last "\" on or, without one, from its last "/" on.

#include "fuzz/FuzzSupport.h"
#include "update/Update.h"
#include "update/locations/InstrumentLocations.h"

#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string logPath(reinterpret_cast<const char*>(data), size);
    const std::string onStick = StickPathOfLog(logPath);
    const char separator = logPath.find('\\') != std::string::npos ? '\\' : '/';
    if (logPath.find(separator) == std::string::npos) {
        VTX_FUZZ_CHECK(onStick.empty());
        return 0;
    }
    const std::string mountPoint = GetUsbMountPoint();
    VTX_FUZZ_CHECK(onStick.compare(0, mountPoint.size(), mountPoint) == 0);
    // The tail is the path's end, starting at the separator that won and holding no other.
    const std::string tail = onStick.substr(mountPoint.size());
    VTX_FUZZ_CHECK(!tail.empty() && tail.size() <= logPath.size() && tail[0] == separator);
    VTX_FUZZ_CHECK(logPath.compare(logPath.size() - tail.size(), tail.size(), tail) == 0);
    VTX_FUZZ_CHECK(tail.find(separator, 1) == std::string::npos);
    return 0;
}
