#pragma once

#include "net/smtpfile.h"

namespace TarnLibA500::smtp {

/// Bytes that come in pieces, as lines of Base64: 76 characters and CR LF.
class Base64Lines {
  public:
    explicit Base64Lines(MessageFile& file) : file_(file) {}

    void add(const unsigned char* bytes, unsigned count);
    /// Writes what does not fill a line.
    void finish();

  private:
    static constexpr unsigned kLineBytes = 57;

    void writeLine(const unsigned char* bytes, unsigned count);

    MessageFile& file_;
    unsigned kept_ = 0;
    unsigned char line_[kLineBytes];  ///< the beginning of a line that has not come to its end
};

}  // namespace TarnLibA500::smtp
