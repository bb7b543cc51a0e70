#pragma once
// What the update reads comes from a USB stick or a folder filled by someone else: before a file is
// opened, its kind is judged, so that a FIFO is never waited on, a device never read and a link
// never leads the update out of the tree the file came from.

#include <cstddef>
#include <string>
#include <vector>

// The folder part of a path ("." without one, "/" for a name in the root).
std::string FolderOf(const std::string& path);

// The name is taken by nothing at all (not even a dangling link).
bool IsAbsent(const std::string& path);

// The path with every link along it followed, as the kernel would open it; a chain that ends at a
// name that does not exist gives that name, its folder resolved as far as it exists. Empty after
// too many links.
std::string ResolvedPath(const std::string& path);

// True when the resolved path lies inside the folder (an absolute path without a trailing "/").
bool LiesInside(const std::string& path, const std::string& folder);

// True when path names a regular file that may be read. A link is accepted only when linkTree is
// not empty and the link leads to a regular file inside linkTree. Otherwise cause says why not:
// "missing", "a link", "a link out of <tree>", "not a regular file".
bool IsReadableInput(const std::string& path, const std::string& linkTree, std::string& cause);

// The runtime library that root will install into the instrument's system: a regular file (no
// link) holding a 32-bit x86 ELF shared object whose SONAME is soname. Otherwise cause says which
// check failed.
bool IsRuntimeLibrary(const std::string& path, const std::string& soname, std::string& cause);
// The same check on a file's bytes (no type of file to judge).
bool IsRuntimeLibraryImage(const std::string& bytes, const std::string& soname, std::string& cause);

// The bytes of a small input (a manifest, a signature), judged as IsReadableInput judges it; more
// than largest bytes is refused.
bool ReadInputFile(const std::string& path, const std::string& linkTree, size_t largest, std::string& bytes,
                   std::string& cause);

// The names in an open folder, sorted, without "." and ".."; names starting with "." only with
// hidden. False when the folder cannot be read.
bool FolderNames(int folder, bool hidden, std::vector<std::string>& names);

// Every regular file below folder, by its path relative to it, hidden ones too; no link is
// followed. False at the first entry that is neither a folder nor a regular file, or cannot be
// read, with cause "why: full path".
bool ListRegularFiles(const std::string& folder, std::vector<std::string>& files, std::string& cause);
