#pragma once
// The sandbox test binaries rewrite the instrument's fixed paths (on an instrument: its settings and
// factory values), so they run only where those are tools/instrument-sandbox's own.

#include <string>

namespace vtxtest {

// True when ROOT names a sandbox root (its marker file is there) and each of the folders the
// sandbox overlays is, in this mount namespace, that root's overlay. Otherwise false, with why.
bool InsideInstrumentSandbox(std::string& why);

}  // namespace vtxtest
