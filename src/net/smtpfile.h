#pragma once

#include <memory>
#include <string_view>

#include "tarnlib/sfile.h"
#include "tarnlib/sstring.h"

namespace TarnLibA500::smtp {

/// What is written to a file, in blocks. What fails is thrown as SFileException.
class MessageFile {
  public:
    explicit MessageFile(SFile& file);

    void write(std::string_view bytes);
    void write(const char* text) { write(std::string_view(text)); }
    void write(const SAnsiString& text) { write(std::string_view(text.getString(), text.getLength())); }
    /// Room for so many bytes, at most kMostRoom, and what of it has been written.
    char* room(unsigned bytes) {
        if (count_ + bytes > kBlockBytes) flush();
        return block_.get() + count_;
    }
    void wrote(unsigned bytes) noexcept { count_ += bytes; }
    /// Hands what is left to the file.
    void flush();

    static constexpr unsigned kMostRoom = 4096;

  private:
    static constexpr unsigned kBlockBytes = 256 * 1024;

    SFile& file_;
    std::unique_ptr<char[]> block_;
    unsigned count_ = 0;
};

/// A new file in the directory "smtp" for temporary files, open for reading and writing for this process alone,
/// and gone with the object. Throws SFileException and SFileSysException.
class TemporaryFile {
  public:
    TemporaryFile();

    SFile& file() noexcept { return file_; }

  private:
    /// Removes the file with its name.
    struct Name {
        Name();
        ~Name();
        Name(const Name&) = delete;
        Name& operator=(const Name&) = delete;
        SAnsiString path;
        SWCharString systemPath;

      private:
        explicit Name(const SAnsiString& made) noexcept : path(made) {}
    };

    Name name_;
    SFile file_;  ///< closed before the name goes
};

}  // namespace TarnLibA500::smtp
