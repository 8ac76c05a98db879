#include "tarnlib/scrypt.h"

#include <algorithm>
#include <utility>

#include "security/ciphertext.h"
#include "security/secretbytes.h"
#include "security/statusreport.h"
#include "security/utf8text.h"
#include "tarnlib/sscrambler.h"
#include "tarnlib/stringhelper.h"

// Encrypting and decrypting texts and bytes.
namespace TarnLibA500 {
namespace {

using Status = SCrypt::Status;
using ByteStr = SCrypt::ByteStr;
using Array = SIArray<unsigned char>;

constexpr std::uint64_t kMaxBytes = 0xFFFFFFFF;

// ------------------------------------------------------------------------------------------------ sources

ByteStr toByteStr(const Array& bytes) {
    return {bytes.Data(), bytes.GetSize()};
}

ByteStr toByteStr(const SSimpleBuffer& bytes) {
    return {bytes.getBufferProtected(), bytes.getNBytes()};
}

/// What is to be encrypted: the bytes themselves, or a text's in UTF-8.
template <class Container, class Use>
Status UseClearBytes(const Container& bytes, Use use) {
    return use(toByteStr(bytes));
}

template <class Use>
Status UseClearBytes(const SAnsiString& text, Use use) {
    Utf8Text utf8(text);
    return use(utf8.bytes());
}

/// What printable text stands for.
class DecodedText {
  public:
    explicit DecodedText(const SAnsiString& text)
        : bytes_(text.getLength()),  // never more bytes than symbols
          isWhole_(SStringHelper::fromString(text, bytes_.data(), bytes_.size(), count_)) {}
    bool isWhole() const { return isWhole_; }
    ByteStr bytes() { return {bytes_.data(), count_}; }

  private:
    SecretBytes bytes_;
    std::uint32_t count_ = 0;
    bool isWhole_;
};

// ------------------------------------------------------------------------------------------------ outputs

unsigned char* MakeRoom(Array& bytes, std::uint32_t count) {
    bytes.SetSize(count);
    return bytes.Data();
}

unsigned char* MakeRoom(SSimpleBuffer& bytes, std::uint32_t count) {
    bytes = SSimpleBuffer(count);
    return bytes.getBuffer();
}

void Cut(Array& bytes, std::uint32_t count) {
    bytes.SetSize(count);
}

void Cut(SSimpleBuffer& bytes, std::uint32_t count) {
    if (count != 0) {
        bytes.releaseBuffer(count);
    } else {
        bytes.empty();
    }
}

// ------------------------------------------------------------------------------------------------ the work

std::uint32_t EncryptedSize(const ByteStr& clear) {
    std::uint32_t size = 0;
    SCrypt::getCrypttextNumBytes(clear.count, SCrypt::kVersion, size);
    return size;
}

template <class Container>
Status EncryptTo(Container& cipher, const ByteStr& clear, const SCrypt::Key& key) {
    const std::uint32_t size = EncryptedSize(clear);
    unsigned char* const room = MakeRoom(cipher, size);
    const Status status = ciphertext::Encrypt(clear, key, room, size);
    Cut(cipher, status == SCrypt::success ? size : 0);
    return status;
}

Status EncryptTo(SAnsiString& cipher, const ByteStr& clear, const SCrypt::Key& key) {
    SecretBytes bytes(EncryptedSize(clear));
    const Status status = ciphertext::Encrypt(clear, key, bytes.data(), bytes.size());
    if (status == SCrypt::success) cipher = SScrambler::BinToAscii(bytes.data(), bytes.size());
    return status;
}

// Into a new object: the output may be the source.
template <class Source, class Output>
Status EncryptInto(Output& cipher, const Source& clear, const SCrypt::Key& key) {
    Output fresh;
    const Status status = StatusOf("encrypt", [&] {
        return UseClearBytes(clear, [&](const ByteStr& bytes) { return EncryptTo(fresh, bytes, key); });
    });
    cipher = status == SCrypt::success ? std::move(fresh) : Output();
    return status;
}

// The room that a clear text may need, whatever the version proves to be.
std::uint32_t MostClearBytes(const ByteStr& cipher) {
    constexpr std::uint32_t kHeader = ciphertext::kSmallestHeader;
    return cipher.count > kHeader ? cipher.count - kHeader : 0;
}

template <class Container>
Status DecryptTo(Container& clear, const ByteStr& cipher, const SCrypt::Key& key, int& version) {
    std::uint32_t count = 0;
    SCrypt::getCleartextNumBytes(cipher.count, version, count);  // the zeros of a failure
    std::uint32_t decrypted = 0;
    unsigned char* const room = MakeRoom(clear, MostClearBytes(cipher));
    const Status status = ciphertext::Decrypt(cipher, key, version, room, decrypted);
    Cut(clear, status == SCrypt::success ? decrypted : count);
    return status;
}

template <class Container>
Status DecryptInto(Container& clear, const Container& source, const SCrypt::Key& key, int* version) {
    const ByteStr cipher = toByteStr(source);
    const int announced = ciphertext::HeaderVersion(cipher);
    int proved = announced;
    Container fresh;
    const Status status = StatusOf("decrypt", [&] { return DecryptTo(fresh, cipher, key, proved); });
    clear = status != SCrypt::noLibrary ? std::move(fresh) : Container();
    if (version != nullptr) *version = status == SCrypt::success ? proved : announced;
    return status;
}

Status DecryptTo(SAnsiString& clear, const ByteStr& cipher, const SCrypt::Key& key) {
    SecretBytes bytes(MostClearBytes(cipher));
    int version = ciphertext::HeaderVersion(cipher);
    std::uint32_t count = 0;
    const Status status = ciphertext::Decrypt(cipher, key, version, bytes.data(), count);
    if (status != SCrypt::success) return status;
    return TextFromUtf8({bytes.data(), count}, clear) ? SCrypt::success : SCrypt::invalid;
}

template <class Action>
Status DecryptTextInto(SAnsiString& clear, Action action) {
    SAnsiString fresh;
    const Status status = StatusOf("decrypt", [&] { return action(fresh); });
    clear = fresh;
    return status;
}

}  // namespace

Status SCrypt::Init() const noexcept {
    return success;
}

// ------------------------------------------------------------------------------------------------ encrypting

Status SCrypt::encrypt(const Array& clear, const Key& key, Array& cipher) const {
    return EncryptInto(cipher, clear, key);
}

Status SCrypt::encrypt(const SSimpleBuffer& clear, const Key& key, SSimpleBuffer& cipher) const {
    return EncryptInto(cipher, clear, key);
}

Status SCrypt::encrypt(const SAnsiString& clear, const Key& key, SAnsiString& cipher) const {
    return EncryptInto(cipher, clear, key);
}

Status SCrypt::encrypt(const SAnsiString& clear, const Key& key, Array& cipher) const {
    return EncryptInto(cipher, clear, key);
}

Status SCrypt::encrypt(const SAnsiString& clear, const Key& key, SSimpleBuffer& cipher) const {
    return EncryptInto(cipher, clear, key);
}

// ------------------------------------------------------------------------------------------------ decrypting

Status SCrypt::decrypt(const Array& cipher, const Key& key, Array& clear, int* version) const {
    return DecryptInto(clear, cipher, key, version);
}

Status SCrypt::decrypt(const SSimpleBuffer& cipher, const Key& key, SSimpleBuffer& clear,
                       int* version) const {
    return DecryptInto(clear, cipher, key, version);
}

Status SCrypt::decrypt(const Array& cipher, const Key& key, SAnsiString& clear) const {
    return DecryptTextInto(clear,
                           [&](SAnsiString& fresh) { return DecryptTo(fresh, toByteStr(cipher), key); });
}

Status SCrypt::decrypt(const SSimpleBuffer& cipher, const Key& key, SAnsiString& clear) const {
    return DecryptTextInto(clear,
                           [&](SAnsiString& fresh) { return DecryptTo(fresh, toByteStr(cipher), key); });
}

Status SCrypt::decrypt(const SAnsiString& cipher, const Key& key, SAnsiString& clear) const {
    return DecryptTextInto(clear, [&](SAnsiString& fresh) {
        if (ciphertext::IsBlank(key)) return blankKey;
        DecodedText decoded(cipher);
        return decoded.isWhole() ? DecryptTo(fresh, decoded.bytes(), key) : invalid;
    });
}

// ------------------------------------------------------------------------------------------------ sizes

Status SCrypt::getCrypttextNumBytes(std::uint32_t clearBytes, int version, std::uint32_t& cipherBytes) {
    constexpr std::uint32_t kBlock = 8;
    const std::uint64_t blocks = std::uint64_t{clearBytes} / kBlock * kBlock + kBlock;
    const std::uint64_t size = version == 2   ? std::uint64_t{clearBytes} + 52
                               : version == 1 ? blocks + 31  // deliberately not the 32 of its header
                                              : blocks + 28;
    const bool isKnown = ciphertext::FindLayout(version) != nullptr && size <= kMaxBytes;
    cipherBytes = isKnown ? static_cast<std::uint32_t>(size) : 0;
    return isKnown ? success : Reported("getCrypttextNumBytes", invalid);
}

Status SCrypt::getCleartextNumBytes(std::uint32_t cipherBytes, int version, std::uint32_t& clearBytes) {
    const ciphertext::Layout* const layout = ciphertext::FindLayout(version);
    const bool fits = layout != nullptr && cipherBytes >= layout->headerSize;
    clearBytes = fits ? cipherBytes - layout->headerSize : 0;
    return fits ? success : Reported("getCleartextNumBytes", invalid);
}

int SCrypt::getHeaderVersion(const Array& cipher) const {
    return ciphertext::HeaderVersion(toByteStr(cipher));
}

int SCrypt::getHeaderVersion(const SAnsiString& cipher) const {
    int version = ciphertext::kNoVersion;
    StatusOf("getHeaderVersion", [&] {
        DecodedText decoded(cipher);
        if (decoded.isWhole()) version = ciphertext::HeaderVersion(decoded.bytes());
        return success;
    });
    return version;
}

// ------------------------------------------------------------------------------------------------ as text

SAnsiString SCrypt::toText(const Array& bytes) {
    return SScrambler::BinToAscii(bytes.Data(), bytes.GetSize());
}

Status SCrypt::toBinary(const SAnsiString& text, Array& bytes) {
    Array fresh;
    const Status status = StatusOf("toBinary", [&] {
        DecodedText decoded(text);
        if (!decoded.isWhole()) return invalid;
        const ByteStr source = decoded.bytes();
        unsigned char* const room = MakeRoom(fresh, source.count);
        std::copy(source.bytes, source.bytes + source.count, room);
        return success;
    });
    bytes = status == success ? std::move(fresh) : Array();
    return status;
}

std::uint32_t SCrypt::getToTextSize(std::uint32_t bytes) noexcept {
    return SScrambler::GetAsciiSize(bytes);
}

}  // namespace TarnLibA500
