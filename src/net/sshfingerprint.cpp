#include "net/sshfingerprint.h"

#include <cstring>

#include "kcm/kcm.h"

namespace TarnLibA500 {
namespace {

constexpr std::string_view kPrefix = "SHA256:";
constexpr unsigned kLetters = 43;  // of a digest, without padding
constexpr std::string_view kBase64 = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::string_view kDigits = "0123456789abcdef";
constexpr std::string_view kUpperDigits = "0123456789ABCDEF";

std::string_view View(const SAnsiString& text) {
    return {text.getString(), text.getLength()};
}

/// -1 for what is no hexadecimal digit.
int DigitValue(char c) {
    const std::size_t value = kDigits.find(c);
    return static_cast<int>(value != kDigits.npos ? value : kUpperDigits.find(c));
}

}  // namespace

SshFingerprint::SshFingerprint(const SAnsiString& text) {
    std::string_view rest = View(text);
    if (!rest.starts_with(kPrefix)) {
        readHex(rest);
        return;
    }
    rest.remove_prefix(kPrefix.size());
    if (rest.size() == kLetters + 1 && rest.back() == '=') rest.remove_suffix(1);
    if (rest.size() != kLetters || rest.find_first_not_of(kBase64) != rest.npos) return;
    form_ = Form::Base64;
    base64_ = SAnsiString(text.getString(), static_cast<std::uint32_t>(kPrefix.size() + kLetters));
}

/// Pairs of digits, with a colon after each but the last or without any.
void SshFingerprint::readHex(std::string_view text) {
    constexpr std::size_t kWithColon = 3;
    hasColons_ = text.size() >= kWithColon && text[2] == ':';
    const std::size_t step = hasColons_ ? kWithColon : 2;
    const std::size_t bytes = (text.size() + step - 2) / step;
    if ((bytes != kSha1Bytes && bytes != kSha256Bytes) || text.size() != bytes * step - (step - 2)) return;
    for (std::size_t i = 0; i != bytes; ++i) {
        const std::string_view pair = text.substr(i * step, step);
        const int high = DigitValue(pair[0]);
        const int low = DigitValue(pair[1]);
        if (high < 0 || low < 0 || (pair.size() == kWithColon && pair[2] != ':')) return;
        digest_[i] = static_cast<unsigned char>(high << 4 | low);
    }
    isUpper_ = text.find_first_of("ABCDEF") != text.npos;
    form_ = Form::Hex;
    bytes_ = static_cast<unsigned>(bytes);
}

SAnsiString SshFingerprint::textOf(const unsigned char* digest) const {
    if (form_ != Form::Hex) {
        char base64[kLetters + 2];
        KCMUtility400::base64Into(base64, sizeof base64, digest, kSha256Bytes);
        return SAnsiString(kPrefix.data()).concat(base64, kLetters);
    }
    const std::string_view digits = isUpper_ ? kUpperDigits : kDigits;
    SAnsiString text;
    for (unsigned i = 0; i != bytes_; ++i) {
        if (hasColons_ && i != 0) text.concat(':');
        text.concat(digits[digest[i] >> 4]).concat(digits[digest[i] & 15]);
    }
    return text;
}

bool SshFingerprint::matches(const unsigned char* digest) const {
    if (form_ == Form::Hex) return std::memcmp(digest, digest_, bytes_) == 0;
    return isValid() && View(textOf(digest)) == View(base64_);
}

}  // namespace TarnLibA500
