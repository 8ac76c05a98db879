#pragma once

#include "net/ostls.h"
#include "tarnlib/csharedlibrary.h"

namespace TarnLibA500 {

/// The TLS library, loaded and started.
struct CclLibrary {
    CSharedLibrary module;
    ostls::Table table;
};

/// Loads and starts it. False, and traced, when a step fails.
bool LoadCclLibrary(CclLibrary& library);

/// The functions of the library, which is loaded when it is first asked for and stays until the process ends. Null when
/// that fails; the next call tries again.
const ostls::Table* CclFunctions();

}  // namespace TarnLibA500
