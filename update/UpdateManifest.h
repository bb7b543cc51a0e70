#pragma once
// The signed manifest of an update: which product and release it is, and the size and SHA-256 of
// every file the update may use, by its path on the stick ("update/zip", "jfonts.tgz") or in the
// new-build folder ("NEW/Application"). Text from a stick: every line is judged before it counts.
//
//     vtx-update-manifest 1
//     product korvalin
//     release 2.1.0
//     2345 0f1e...(64 hex digits) NEW/Application

#include <cstdint>
#include <map>
#include <string>

#include "update/os/FileDigest.h"

// The manifest's path of a file of the new build.
inline constexpr const char kManifestNewBuildPrefix[] = "NEW/";

class CUpdateManifest {
public:
    static constexpr size_t kLongestLine = 4096;
    static constexpr size_t kLongestPath = 1024;
    static constexpr size_t kLargestManifest = 1 << 20;

    // False, with the line and what is wrong with it, unless every line is well formed.
    bool Parse(const std::string& text, std::string& cause);

    const std::string& GetProduct() const { return m_product; }
    const std::string& GetRelease() const { return m_release; }
    // Null when the path is not listed.
    const SFileContent* Find(const std::string& path) const;
    const std::map<std::string, SFileContent>& GetFiles() const { return m_files; }

private:
    bool FileLine(const std::string& line, std::string& cause);

    std::string m_product;
    std::string m_release;
    std::map<std::string, SFileContent> m_files;
};
