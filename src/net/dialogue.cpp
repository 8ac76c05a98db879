#include "net/dialogue.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "diag/assert/require.h"
#include "strings/base/asciichar.h"
#include "strings/base/wipe.h"

namespace TarnLibA500::dialogue {
namespace {

constexpr int kCodeDigits = 3;

/// -1 when the line does not begin with three digits.
int CodeOf(const SAnsiString& line) {
    int code = 0;
    for (int i = 0; i < kCodeDigits; ++i) {
        const char c = line.getString()[i];  // at the end of the line the terminator stops this
        if (!IsDigit(c)) return -1;
        code = code * 10 + (c - '0');
    }
    return code;
}

bool IsContinued(const SAnsiString& line) {
    return line.getLength() > kCodeDigits && line.getString()[kCodeDigits] == '-';
}

bool IsForSecrets(std::string_view word) {
    return word == "PASS" || word == "ACCT" || word == "AUTH PLAIN" || word.empty();
}

}  // namespace

Outcome ReadReply(LineSource& lines, Reply& reply) {
    reply = Reply();
    for (bool isFirst = true;; isFirst = false) {
        SAnsiString line;
        const Outcome outcome = lines.next(line);
        if (!isFirst && !line.isEmpty()) reply.text += "\r\n";
        reply.text += line;
        if (outcome != Outcome::Whole) return outcome;
        if (lines.bytesOfReply() > kMostReplyBytes) return Outcome::Failed;
        const int code = CodeOf(line);
        const bool isEnd = code < 0 ? isFirst : !IsContinued(line);
        if (!isEnd) continue;
        reply.code = std::max(code, 0);
        return Outcome::Whole;
    }
}

bool IsOneLine(const SAnsiString& text, const char* unit) {
    const std::string_view view(text.getString(), text.getLength());
    constexpr std::string_view kRefused("\r\n\0", 3);
    return Require(view.find_first_of(kRefused) == view.npos, unit, "a command is one line");
}

CommandLine::CommandLine(const char* word, const char* argument, unsigned argumentBytes)
    : wordBytes_(static_cast<unsigned>(std::strlen(word))) {
    constexpr unsigned kBlankAndEnd = 3;
    line_.setSize(wordBytes_ + argumentBytes +
                  kBlankAndEnd);  // once: a block that is left is not overwritten
    line_ += word;
    if (argument != nullptr && wordBytes_ != 0) line_ += ' ';
    if (argument != nullptr) line_.concat(argument, argumentBytes);
    line_ += "\r\n";
}

CommandLine::~CommandLine() {
    Wipe(const_cast<char*>(line_.getString()), line_.getLength());
}

SAnsiString CommandLine::shown() const {
    const char* const text = line_.getString();
    const unsigned length = line_.getLength() - 2;
    if (length == wordBytes_ || !IsForSecrets({text, wordBytes_})) return SAnsiString(text, length);
    return wordBytes_ == 0 ? SAnsiString("****") : SAnsiString(text, wordBytes_) + " ****";
}

}  // namespace TarnLibA500::dialogue
