#pragma once

#include <string_view>

#include "tarnlib/sstring.h"

namespace TarnLibA500 {

/// What a caller knows a server's key by: "SHA256:" and Base64 without padding, as OpenSSH prints it, or 64 (SHA-256) or 40
/// (SHA-1) hexadecimal digits, in pairs with colons between them or without. MD5 is refused as anything else is.
class SshFingerprint {
  public:
    explicit SshFingerprint(const SAnsiString& text);

    /// False for a text without such a form; nothing matches it.
    bool isValid() const noexcept { return form_ != Form::None; }
    /// Otherwise SHA-256.
    bool isSha1() const noexcept { return bytes_ == kSha1Bytes; }
    /// A digest of the kind that isSha1 tells, in the form of the text; in OpenSSH's when that has none.
    SAnsiString textOf(const unsigned char* digest) const;
    /// Whether it is of this digest.
    bool matches(const unsigned char* digest) const;

  private:
    enum class Form { None, Base64, Hex };
    static constexpr unsigned kSha1Bytes = 20;
    static constexpr unsigned kSha256Bytes = 32;

    void readHex(std::string_view text);

    Form form_ = Form::None;
    unsigned bytes_ = kSha256Bytes;
    bool hasColons_ = false;
    bool isUpper_ = false;
    unsigned char digest_[kSha256Bytes] = {};  ///< of hexadecimal digits
    SAnsiString base64_;                       ///< the whole text, without padding
};

}  // namespace TarnLibA500
