#pragma once

#include "tarnlib/sstring.h"

namespace TarnLibA500 {

/// Names of files with "*" and "?". The system's own patterns also match short names that nobody sees, and
/// differ between versions.
class NamePattern {
  public:
    explicit NamePattern(const SAnsiString& pattern);
    bool matches(const wchar_t* name) const noexcept;

  private:
    bool isText_;  // what is not matches nothing
    SWCharString pattern_;
    bool takesAll_;
    bool hasPairs_;  // where narrow text has the characters that take two units, they are one
};

}  // namespace TarnLibA500
