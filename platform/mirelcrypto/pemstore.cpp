// Certificates and a key from a PEM file.
#include <cstring>
#include <memory>
#include <utility>

#include "mirelcrypto/certificates.h"
#include "mirelcrypto/lasterror.h"
#include "seam/nothrow.h"
#include "seam/ostext.h"

namespace mirelcrypto {
namespace {

/// Bytes that may hold a key: overwritten when they go.
class SecretBytes {
  public:
    SecretBytes() = default;
    SecretBytes(unsigned char* bytes, std::size_t count) : bytes_(bytes), count_(count) {}
    ~SecretBytes() { OPENSSL_clear_free(bytes_, count_); }
    SecretBytes(const SecretBytes&) = delete;
    SecretBytes& operator=(const SecretBytes&) = delete;

    bool allocate(std::size_t count) {
        bytes_ = static_cast<unsigned char*>(OPENSSL_malloc(count));
        count_ = count;
        return bytes_ != nullptr;
    }
    unsigned char* get() const { return bytes_; }
    int count() const { return static_cast<int>(count_); }

  private:
    unsigned char* bytes_ = nullptr;
    std::size_t count_ = 0;
};

class File {
  public:
    explicit File(const wchar_t* path) : handle_(osssl::OpenFile(path)) {}
    ~File() {
        if (isOpen()) osssl::CloseFile(handle_);
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    bool isOpen() const { return handle_ != INVALID_HANDLE_VALUE; }
    bool readAll(SecretBytes& bytes) const {
        constexpr LONGLONG kMost = 64LL << 20;
        LARGE_INTEGER size = {};
        if (!osssl::SizeOf(handle_, size)) return false;
        SetLastError(ERROR_FILE_TOO_LARGE);
        if (size.QuadPart > kMost) return false;
        const auto count = static_cast<DWORD>(size.QuadPart);
        DWORD done = 0;
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        if (!bytes.allocate(count + 1) || !osssl::ReadFrom(handle_, bytes.get(), count, done)) return false;
        SetLastError(ERROR_HANDLE_EOF);
        return done == count;
    }

  private:
    HANDLE handle_;
};

struct Free {
    void operator()(X509* certificate) const { X509_free(certificate); }
    void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
    void operator()(BIO* bio) const { BIO_free(bio); }
    void operator()(STACK_OF(X509) * certificates) const { sk_X509_pop_free(certificates, X509_free); }
};
template <class Object>
using Owned = std::unique_ptr<Object, Free>;

/// One block of a PEM file.
class Block {
  public:
    Block() = default;
    ~Block() {
        OPENSSL_free(name_);
        OPENSSL_free(header_);
        OPENSSL_clear_free(bytes_, static_cast<std::size_t>(length_));
    }
    Block(const Block&) = delete;
    Block& operator=(const Block&) = delete;

    /// False at the end, and for a block that is damaged, which leaves an error.
    bool read(BIO* from) {
        ERR_set_mark();
        const bool isRead = PEM_read_bio(from, &name_, &header_, &bytes_, &length_) == 1;
        const bool isEnd = !isRead && ERR_GET_REASON(ERR_peek_last_error()) == PEM_R_NO_START_LINE;
        isEnd ? ERR_pop_to_mark() : ERR_clear_last_mark();
        return isRead;
    }
    bool isCertificate() const {
        return isCalled(PEM_STRING_X509) || isCalled(PEM_STRING_X509_OLD) || isTrusted();
    }
    bool isKey() const { return std::strstr(name_, "PRIVATE KEY") != nullptr; }
    bool isEncrypted() const {
        return isCalled(PEM_STRING_PKCS8) || std::strstr(header_, "ENCRYPTED") != nullptr;
    }
    bool isRevocationList() const { return isCalled(PEM_STRING_X509_CRL); }
    X509* toCertificate() const {
        const unsigned char* at = bytes_;
        return isTrusted() ? d2i_X509_AUX(nullptr, &at, length_) : d2i_X509(nullptr, &at, length_);
    }
    EVP_PKEY* toKey() const {
        const unsigned char* at = bytes_;
        return d2i_AutoPrivateKey(nullptr, &at, length_);
    }

  private:
    bool isCalled(const char* name) const { return std::strcmp(name_, name) == 0; }
    bool isTrusted() const { return isCalled(PEM_STRING_X509_TRUSTED); }

    char* name_ = nullptr;
    char* header_ = nullptr;
    unsigned char* bytes_ = nullptr;
    long length_ = 0;
};

/// What a file has: certificates, and a key perhaps.
class Store {
  public:
    bool read(const SecretBytes& bytes) {
        certificates_.reset(sk_X509_new_null());
        const Owned<BIO> bio(osssl::NewBio(bytes.get(), bytes.count()));
        if (certificates_ == nullptr || bio == nullptr) return false;
        for (;;) {
            Block block;
            if (!block.read(bio.get())) return ERR_peek_error() == 0;
            if (!take(block)) return false;
        }
    }
    bool use(SSL_CTX* context) const {
        int trusted = 0;
        bool hasOwn = key_ == nullptr;
        for (int i = 0; i < sk_X509_num(certificates_.get()); ++i) {
            X509* const certificate = sk_X509_value(certificates_.get(), i);
            if (key_ != nullptr && X509_check_private_key(certificate, key_.get()) == 1) {
                if (!osssl::UseCertificate(context, certificate)) return false;
                hasOwn = true;
            } else {
                ERR_clear_error();  // of a key that is another's
                if (!osssl::Trust(context, certificate)) return false;
                ++trusted;
            }
        }
        if (trusted == 0) return refuse(X509_R_NO_CERTIFICATE_FOUND, "none to trust");
        if (!hasOwn) return refuse(X509_R_NO_CERTIFICATE_FOUND, "none for the private key");
        return key_ == nullptr || osssl::UseKey(context, key_.get());
    }

  private:
    static bool refuse(int reason, const char* text) {
        Complain(ERR_LIB_X509, reason, text);
        return false;
    }
    bool take(const Block& block) {
        if (block.isRevocationList())
            return refuse(X509_R_METHOD_NOT_SUPPORTED, "a list of revoked certificates");
        if (block.isCertificate()) {
            X509* const certificate = block.toCertificate();
            if (certificate == nullptr || sk_X509_push(certificates_.get(), certificate) > 0)
                return certificate != nullptr;
            X509_free(certificate);
            return false;
        }
        if (!block.isKey()) return true;  // parameters of a key
        if (block.isEncrypted()) return refuse(X509_R_METHOD_NOT_SUPPORTED, "the private key is encrypted");
        if (key_ != nullptr) return refuse(X509_R_METHOD_NOT_SUPPORTED, "more than one private key");
        key_.reset(block.toKey());
        return key_ != nullptr;
    }

    Owned<STACK_OF(X509)> certificates_;
    Owned<EVP_PKEY> key_;
};

using WidePath = std::unique_ptr<wchar_t[]>;

/// Null when it is not UTF-8, or there is no memory.
WidePath Widen(const char* path) {
    const int size = ostext::ToWide(CP_UTF8, MB_ERR_INVALID_CHARS, path, -1, nullptr, 0);
    WidePath wide(size > 0 ? new (seam::kNoThrow) wchar_t[static_cast<unsigned>(size)] : nullptr);
    if (wide != nullptr) ostext::ToWide(CP_UTF8, MB_ERR_INVALID_CHARS, path, -1, wide.get(), size);
    return wide;
}

bool ReadFile(const char* path, SecretBytes& bytes) {
    const WidePath wide = Widen(path);
    if (wide != nullptr) {
        const File file(wide.get());
        if (file.isOpen() && file.readAll(bytes)) return true;
    }
    ComplainOfSystem(ERR_LIB_BIO, BIO_R_NO_SUCH_FILE, "the file cannot be read");
    return false;
}

}  // namespace

bool UsePemFile(SSL_CTX* context, const char* path) {
    SecretBytes bytes;
    Store store;
    if (!ReadFile(path, bytes) || !store.read(bytes) || !store.use(context)) return false;
    // What is in the file is trusted for itself, not for a root that is not there.
    return X509_STORE_set_flags(SSL_CTX_get_cert_store(context), X509_V_FLAG_PARTIAL_CHAIN) == 1;
}

}  // namespace mirelcrypto
