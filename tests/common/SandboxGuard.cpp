#include "tests/common/SandboxGuard.h"

#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

namespace vtxtest {

bool InsideInstrumentSandbox(std::string& why) {
    const char* root = std::getenv("ROOT");
    if (root == nullptr || *root == '\0') {
        why = "ROOT is not set";
        return false;
    }
    if (access((std::string(root) + "/record/.sandbox").c_str(), F_OK) != 0) {
        why = std::string(root) + " is no sandbox root";
        return false;
    }
    // mount point, the overlay's name, its upper layer in the root
    const char* const overlays[][3] = {{"/home", "vtx-home", "/home"},     {"/media", "vtx-media", "/media"},
                                       {"/opt", "vtx-opt", "/opt"},        {"/mnt", "vtx-mnt", "/mnt"},
                                       {"/usr/lib", "vtx-usr-lib", "/usr-lib"}};
    for (const auto& overlay : overlays) {
        // The last mount on a point is the one that is seen.
        std::ifstream mounts("/proc/self/mountinfo");
        bool ours = false;
        for (std::string line; std::getline(mounts, line);) {
            std::istringstream fields(line);
            std::string id, parent, device, inside, point, rest;
            fields >> id >> parent >> device >> inside >> point;
            if (point != overlay[0]) continue;
            const std::string::size_type tail = line.find(" - ");
            ours = tail != std::string::npos &&
                   line.find(std::string(" overlay ") + overlay[1] + " ", tail) == tail + 2 &&
                   line.find("upperdir=" + std::string(root) + overlay[2] + ",", tail) != std::string::npos;
        }
        if (!ours) {
            why = std::string(overlay[0]) + " is not the sandbox's";
            return false;
        }
    }
    return true;
}

}  // namespace vtxtest
