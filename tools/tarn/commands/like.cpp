#include "assertwatch.h"
#include "command.h"
#include "options.h"
#include "streams.h"
#include "system.h"
#include "tarnlib/squerystring.h"

namespace tarn {
namespace {

using TarnLibA500::SAnsiString;
using TarnLibA500::SQueryString;

constexpr const char* kHelp =
    "-pattern P [-file F] [-invert] [-count]\n\n"
    "Prints the lines that match a pattern from their start to their end; %order% finds a word anywhere.\n\n"
    "  -pattern P    % any characters, _ one character, [a-z_] one of these, [^a-z] one of all others\n"
    "  -file F       the lines; otherwise, or for -, standard input\n"
    "  -invert       takes the lines that do not match\n"
    "  -count        prints how many lines there are instead\n\n"
    "Exit status: 0 when there was such a line; 1 when there was none.\n";

/// Cuts what is read into lines.
class Lines {
  public:
    explicit Lines(const std::string& name) : source_(name) {}
    /// The next line without its end; false when there is none.
    bool next(std::string& line) {
        std::size_t end = rest_.find('\n', at_);
        while (end == std::string::npos && readMore()) end = rest_.find('\n', searched_);
        if (at_ == rest_.size()) return false;
        line.assign(rest_, at_, end != std::string::npos ? end - at_ : end);
        at_ = end != std::string::npos ? end + 1 : rest_.size();
        if (!line.empty() && line.back() == '\r') line.pop_back();
        return true;
    }

  private:
    bool readMore() {
        constexpr std::size_t kBlock = 64 * 1024;
        const std::string more = source_.read(kBlock);
        rest_.erase(0, at_);
        at_ = 0;
        searched_ = rest_.size();
        rest_ += more;
        return !more.empty();
    }

    Source source_;
    std::string rest_;          // what was read
    std::size_t at_ = 0;        // where the next line begins in it
    std::size_t searched_ = 0;  // how far there is no line end
};

SQueryString Parse(const std::string& text) {
    SQueryString pattern(text.c_str());
    const AssertWatch watch;  // a fault is reported there, too
    if (pattern.parse()) return pattern;
    throw Failure("-pattern: the [ at character " + std::to_string(pattern.GetFaultPosition() + 1) +
                  " has no ]");
}

ExitStatus ShowLike(const Words& arguments) {
    const Options options(arguments,
                          {.required = {"pattern"}, .values = {"file"}, .switches = {"invert", "count"}});
    SQueryString pattern = Parse(options.value("pattern"));
    Lines lines(options.has("file") ? options.value("file") : "-");
    unsigned long long found = 0;
    for (std::string line; lines.next(line);) {
        const SAnsiString text(line.data(), static_cast<std::uint32_t>(line.size()));
        if (pattern.like(text) == options.has("invert")) continue;
        ++found;
        if (!options.has("count")) Print(line + "\n");
    }
    if (options.has("count")) Print(std::to_string(found) + "\n");
    return found != 0 ? kYes : kNo;
}

}  // namespace

const Command kLikeCommand = {"like", "finds lines by a pattern", kHelp, ShowLike};

}  // namespace tarn
