#pragma once

#include "tarnlib/sstring.h"

namespace TarnLibA500 {

/// The lines of a configuration text that are not read: traced one by one, and told in one text.
class ConfigLosses {
  public:
    /// "source" is what people know the text by, the name of its file.
    ConfigLosses(const SAnsiString& source, const SAnsiString& text)
        : source_(source), line_(text.getString()) {}

    /// From one place of the text to another nothing is read, because of what is missing in the first line,
    /// "=" or "]". Places come in the order of the text. "section" is empty outside of sections.
    void add(const char* missing, const SAnsiString& section, const char* from, const char* to);
    /// A line for each loss, of which only the first ones are told one by one; empty when there was none.
    SAnsiString finish();

  private:
    void tell(const SAnsiString& line);
    unsigned lineAt(const char* place);

    SAnsiString source_;
    SAnsiString told_;
    unsigned count_ = 0;
    const char* line_;  // the start of a line, and its number
    unsigned number_ = 1;
};

}  // namespace TarnLibA500
