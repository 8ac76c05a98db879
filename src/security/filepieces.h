#pragma once

#include <cstdint>

#include "security/secretbytes.h"
#include "tarnlib/sfile.h"
#include "tarnlib/sprogress.h"

namespace TarnLibA500 {

/// A file to be read from front to back, or written.
constexpr int kReadFromFront = SFile::readOnly | SFile::sequential | SFile::noInherit;

/// A file as it is worked through: a piece at a time, in memory that is overwritten at the end.
class FilePieces {
  public:
    FilePieces(SFile& file, SProgress* progress, std::uint32_t pieceBytes = kPieceBytes)
        : file_(file), progress_(progress), total_(file.sizeEx()), memory_(pieceBytes) {}

    /// The next piece; its count is 0 at the end.
    bool next() {
        if (progress_ != nullptr)
            progress_->advance(static_cast<unsigned long long>(done_),
                               static_cast<unsigned long long>(total_));
        count_ = static_cast<std::uint32_t>(file_.read(memory_.data(), memory_.size()));
        done_ += count_;
        return count_ != 0;
    }
    unsigned char* data() noexcept { return memory_.data(); }
    std::uint32_t count() const noexcept { return count_; }

    static constexpr std::uint32_t kPieceBytes = 64 * 1024;

  private:
    SFile& file_;
    SProgress* progress_;
    long long total_;
    long long done_ = 0;
    std::uint32_t count_ = 0;
    SecretBytes memory_;
};

}  // namespace TarnLibA500
