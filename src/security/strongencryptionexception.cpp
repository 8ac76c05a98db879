#include "tarnlib/strongencryptionexception.h"

namespace TarnLibA500 {
namespace {

using Exception = StrongEncryptionException;

struct Meaning {
    SCrypt::Status status;
    Exception::ErrorCodes code;
    const char* reason;
};

constexpr Meaning kMeanings[] = {
    {SCrypt::noLibrary, Exception::libraryError, "Encryption library cannot be initialized correctly."},
    {SCrypt::keySpace, Exception::bufferInvalid, "The space passed in to make a key is too small."},
    {SCrypt::blankKey, Exception::keyBlank, "Encryption/Decryption key passed in is blank."},
    {SCrypt::invalid, Exception::bufferInvalid,
     "The buffer passed in for encryption/decryption does not look valid."},
    {SCrypt::mismatch, Exception::checksumMismatch,
     "Checksum does not match after decryption(buffer modified or wrong key used)."},
};

constexpr Meaning kUnknown = {SCrypt::success, Exception::bufferInvalid, "Unknown error."};

const Meaning& MeaningOf(SCrypt::Status status) {
    for (const Meaning& meaning : kMeanings) {
        if (meaning.status == status) return meaning;
    }
    return kUnknown;
}

}  // namespace

StrongEncryptionException::StrongEncryptionException(SCrypt::Status status)
    : errorCode_(MeaningOf(status).code), reason_(MeaningOf(status).reason) {}

StrongEncryptionException::StrongEncryptionException(const StrongEncryptionException& other) noexcept =
    default;
StrongEncryptionException& StrongEncryptionException::operator=(
    const StrongEncryptionException& other) noexcept = default;
StrongEncryptionException::~StrongEncryptionException() = default;

}  // namespace TarnLibA500
