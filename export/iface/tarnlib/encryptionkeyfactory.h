#pragma once

#include "tarnlib/sstring.h"
#include "tarnlib/tarnapi.h"

namespace TarnLibA500 {

/// The pass phrase that is built into the library.
class TARN_API EncryptionKeyFactory {
  public:
    /// The pass phrase, made anew: it stands whole in no file. The caller overwrites it.
    static SAnsiString makeStringKey();
};

}  // namespace TarnLibA500
