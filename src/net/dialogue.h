#pragma once

#include "tarnlib/sstring.h"

/// What the line-based protocols have in common: a command is a line, and a reply is some lines that begin with a
/// code of three digits.
namespace TarnLibA500::dialogue {

/// How the reading of a line or a reply ended.
enum class Outcome {
    Whole,  ///< it is there
    Ended,  ///< the peer has ended, or nothing came in time
    Failed  ///< the system says no, or the peer sends more than is sane
};

/// Where lines come from.
class LineSource {
  public:
    virtual ~LineSource() = default;
    /// The next line without its end; what there was of it unless it is whole.
    virtual Outcome next(SAnsiString& line) = 0;
    /// The bytes that the peer has sent since the reply began.
    virtual unsigned bytesOfReply() const = 0;
};

/// A reply; the code is 0 when it is not whole or has none.
struct Reply {
    int code = 0;
    SAnsiString text;  ///< the lines, with CR LF between them
};

/// No reply is longer; the rest of one that is would be read as the answer to the next command.
inline constexpr unsigned kMostReplyBytes = 64 * 1024;

/// Reads a reply. Its end is the first line with a code and no "-" behind it; the code is that line's. Lines
/// without a code inside a longer reply are text.
Outcome ReadReply(LineSource& lines, Reply& reply);

/// True when a text may stand in a command: no end of a line and no zero byte. What does not is reported by
/// assertion from a unit.
bool IsOneLine(const SAnsiString& text, const char* unit);

/// A command as it is sent, which may hold a secret: it is overwritten when it goes.
class CommandLine {
  public:
    /// "WORD argument", either of them alone, and CR LF.
    CommandLine(const char* word, const char* argument, unsigned argumentBytes);
    ~CommandLine();
    CommandLine(const CommandLine&) = delete;
    CommandLine& operator=(const CommandLine&) = delete;

    const char* bytes() const noexcept { return line_.getString(); }
    unsigned size() const noexcept { return line_.getLength(); }
    /// What a trace may show, without the end of the line: "****" in place of an argument without a word, and of
    /// what follows one that is for secrets (PASS, ACCT, AUTH PLAIN).
    SAnsiString shown() const;

  private:
    SAnsiString line_;  ///< never copied
    unsigned wordBytes_;
};

}  // namespace TarnLibA500::dialogue
