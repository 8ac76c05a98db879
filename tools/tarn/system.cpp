#include "system.h"

#include <cstdio>

#include "console/console.h"
#include "tarnlib/senvironment.h"
#include "tarnlib/sfileexception.h"

#include <fcntl.h>
#include <io.h>
#include <windows.h>

namespace tarn {
namespace {

using TarnLibA500::SAnsiString;
using TarnLibA500::SEnvironment;
using TarnLibA500::SFileException;

/// A standard stream for text in UTF-8.
class Output {
  public:
    explicit Output(std::FILE* stream) : stream_(stream), console_(console::Of(stream)) {}

    /// False from the first failure on.
    bool write(const std::string& text) {
        if (console_ == nullptr) {
            isWhole_ = std::fwrite(text.data(), 1, text.size(), stream_) == text.size() && isWhole_;
        } else {
            waiting_ += text;
            show(WholeCharacters(waiting_));
        }
        return isWhole_;
    }
    bool flush() {
        show(waiting_.size());
        return std::fflush(stream_) == 0 && std::ferror(stream_) == 0 && isWhole_;
    }

  private:
    // Up to a character whose last bytes may still come.
    static std::size_t WholeCharacters(const std::string& text) {
        std::size_t at = text.size();
        while (at > 0 && text.size() - at < 3 && (text[at - 1] & 0xC0) == 0x80) --at;
        if (at == 0 || text[at - 1] >= 0) return text.size();
        const auto first = static_cast<unsigned char>(text[at - 1]);
        const std::size_t announced = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : first >= 0xC0 ? 2 : 1;
        return text.size() - (at - 1) < announced ? at - 1 : text.size();
    }
    void show(std::size_t bytes) {
        if (bytes != 0) isWhole_ = console::WriteTo(console_, waiting_.data(), bytes, CP_UTF8) && isWhole_;
        waiting_.erase(0, bytes);
    }

    std::FILE* stream_;
    HANDLE console_;
    std::string waiting_;  ///< for the rest of a character; a console's
    bool isWhole_ = true;
};

Output& StandardOutput() {
    static Output output(stdout);
    return output;
}

Output& StandardError() {
    static Output output(stderr);
    return output;
}

bool isPrintingToError = false;

}  // namespace

Words ReadCommandLine() {
    Words words;
    for (const SAnsiString& word : SEnvironment::GetArguments()) words.push_back(Str(word));
    if (!words.empty()) words.erase(words.begin());
    return words;
}

void UseBinaryStreams() {
    for (std::FILE* stream : {stdin, stdout, stderr}) _setmode(_fileno(stream), _O_BINARY);
}

void Print(const std::string& text) {
    (isPrintingToError ? StandardError() : StandardOutput()).write(text);
}

void PrintToError() {
    isPrintingToError = true;
}

void PrintError(const std::string& line) {
    StandardOutput().flush();
    StandardError().write(line + "\n");
}

void PrintPieceOfError(const std::string& text) {
    StandardError().write(text);
}

bool WriteOutput(const std::string& bytes) {
    return StandardOutput().write(bytes);
}

bool FlushOutput() {
    return StandardOutput().flush();
}

std::string SystemReason(unsigned long error) {
    const std::string reason = Str(SFileException::GetSystemMessage(error).trimRight());
    return reason != "system error" ? reason : reason + " " + std::to_string(error);
}

}  // namespace tarn
