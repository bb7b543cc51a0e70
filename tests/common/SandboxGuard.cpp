#include "tests/common/SandboxGuard.h"

#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <vector>

namespace vtxtest {

bool InsideInstrumentSandbox(std::string& why) {
    const char* env = std::getenv("ROOT");
    const std::string root = env != nullptr ? env : "";
    why = root.empty() ? "ROOT is not set" : root + " is no sandbox root";
    if (root.empty() || access((root + "/record/.sandbox").c_str(), F_OK) != 0) return false;
    // mount point, the overlay's name, its upper layer in the root (made from tools/sandbox-areas)
    const char* const overlays[][3] = {
#include "SandboxOverlays.inc"
    };
    std::vector<std::string> mounts;
    std::ifstream mountinfo("/proc/self/mountinfo");
    for (std::string line; std::getline(mountinfo, line);) mounts.push_back(line);
    for (const auto& overlay : overlays) {
        why = std::string(overlay[0]) + " is not the sandbox's";
        bool ours = false;  // the last mount on the point is the one that is seen
        for (const std::string& line : mounts) {
            std::string id, parent, device, inside, point;
            std::istringstream(line) >> id >> parent >> device >> inside >> point;
            const std::string::size_type tail = line.find(" - overlay " + std::string(overlay[1]) + " ");
            if (point == overlay[0])
                ours = tail != std::string::npos &&
                       line.find("upperdir=" + root + overlay[2] + ",", tail) != std::string::npos;
        }
        if (!ours) return false;
    }
    return true;
}

}  // namespace vtxtest
