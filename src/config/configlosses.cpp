#include "config/configlosses.h"

#include "config/configtext.h"
#include "diag/assert/levels.h"
#include "tarnlib/sstringconv.h"
#include "tarnlib/straceobj.h"

namespace TarnLibA500 {
namespace {

// A text that is no configuration could lose thousands of sections.
constexpr unsigned kMostTold = 20;

// A bracket that is never closed makes a name of several lines.
SAnsiString FirstLine(const SAnsiString& text) {
    const char* const end = FindByte(text.getString(), text.end().getPtr(), '\n');
    return SAnsiString(text.getString(), static_cast<std::uint32_t>(end - text.getString()));
}

SAnsiString LinesText(unsigned first, unsigned last) {
    return first == last ? "line " + SStringConv::ToString(first)
                         : "lines " + SStringConv::ToString(first) + " to " + SStringConv::ToString(last);
}

}  // namespace

unsigned ConfigLosses::lineAt(const char* place) {
    for (const char* end; (end = FindByte(line_, place, '\n')) != place; line_ = end + 1) ++number_;
    return number_;
}

void ConfigLosses::add(const char* missing, const SAnsiString& section, const char* from, const char* to) {
    if (++count_ > kMostTold) return;
    configtext::Trim(from, to);
    const unsigned first = lineAt(from);
    const unsigned last = lineAt(to);
    SAnsiString line = source_ + ", line " + SStringConv::ToString(first) + ": no " + missing + ", " +
                       LinesText(first, last);
    if (!section.isEmpty()) line.concat(" of [").concat(FirstLine(section)).concat("]");
    line.concat(first == last ? " is not read" : " are not read");
    tell(line);
}

SAnsiString ConfigLosses::finish() {
    if (count_ > kMostTold)
        tell(source_ + ": " + SStringConv::ToString(count_ - kMostTold) +
             " more sections end before their last line");
    return told_;
}

void ConfigLosses::tell(const SAnsiString& line) {
    TARN_TRACE_AT(levels::kLoss, "configfilereader", "%1", line);
    told_.concat(told_.isEmpty() ? "" : "\n").concat(line);
}

}  // namespace TarnLibA500
