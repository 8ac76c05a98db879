#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "tarnlib/sstring.h"

/// What the commands of the tool have in common. Texts are UTF-8 throughout, the library's too.
namespace tarn {

using Words = std::vector<std::string>;

/// A text of the library as a standard string.
inline std::string Str(const TarnLibA500::SAnsiString& text) {
    return std::string(text.getString(), text.getLength());
}

enum ExitStatus : int { kYes = 0, kNo = 1, kFailed = 2 };

/// The command line, a file or the system does not allow what was asked for: one line on standard error,
/// status 2.
class Failure : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

struct Command {
    const char* name;
    const char* summary;  ///< for the list of commands
    std::string help;     ///< after "usage: tarn NAME "
    ExitStatus (*run)(const Words& arguments);
    bool takesEveryWord = false;  ///< logging options too, which are otherwise taken out
};

extern const Command kTextCommand;
extern const Command kNumbersCommand;
extern const Command kVersionCompareCommand;
extern const Command kDateCommand;
extern const Command kRegistryCommand;
extern const Command kOptionsCommand;
extern const Command kTraceCommand;
extern const Command kConfigCommand;
extern const Command kFilesCommand;
extern const Command kLockCommand;
extern const Command kEncryptCommand;
extern const Command kDecryptCommand;
extern const Command kDigestCommand;
extern const Command kCompressCommand;
extern const Command kExpandCommand;
extern const Command kCrc32Command;
extern const Command kGuidCommand;
extern const Command kUrlCommand;
extern const Command kQueryCommand;
extern const Command kHtmlCommand;
extern const Command kJsCommand;
extern const Command kVbsCommand;
extern const Command kLikeCommand;
extern const Command kResolveCommand;
extern const Command kPingCommand;
extern const Command kFtpCommand;
extern const Command kMailCommand;
extern const Command kTlsCommand;
extern const Command kSftpCommand;

}  // namespace tarn
