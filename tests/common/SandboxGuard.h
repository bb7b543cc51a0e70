#pragma once
// The sandbox test binaries delete and rewrite files at the instrument's fixed paths. On a real
// instrument those hold its settings and factory values, so they run only where those paths are
// the instrument sandbox's own (tools/instrument-sandbox).

#include <string>

namespace vtxtest {

// True when ROOT names a sandbox root (its marker file is there) and each of the folders the
// sandbox overlays is, in this mount namespace, that root's overlay. Otherwise false, with why.
bool InsideInstrumentSandbox(std::string& why);

}  // namespace vtxtest
