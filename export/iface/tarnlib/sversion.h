#pragma once

#include "tarnlib/sstring.h"
#include "tarnlib/tarnapi.h"

/// Version texts such as "5.0.12".
///
/// Components stand between blanks, full stops and commas and compare as signed decimal numbers up to
/// 2147483647. The function keeps no state and may be called from any thread.
///
///     if (SVersion::CompareVersions(installed, "5.0.2") < 0) Upgrade();
///     SVersion::CompareVersions("1,10", "1.9");    //  1: numbers, not texts
///     SVersion::CompareVersions("1.2", "1.2.0");   // -1: the common components agree, and more components win
namespace TarnLibA500 {

/// Compares version texts.
class TARN_API SVersion {
  public:
    /// -1, 0 or 1: the first pair of components that differ decides, then the number of components. A
    /// component that is no number is reported by assertion and counts as 0.
    static int CompareVersions(const SAnsiString& a, const SAnsiString& b);
};

}  // namespace TarnLibA500
