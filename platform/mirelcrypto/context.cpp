// Contexts: what all connections of one configuration have in common.
#include "mirelcrypto/certificates.h"
#include "mirelcrypto/entries.h"
#include "mirelcrypto/lasterror.h"
#include "mirelcrypto/osssl.h"

namespace mirelcrypto {
namespace {

/// OpenSSL tells the number of the verification's failure, but not which certificate it is about.
int Verified(int isGood, X509_STORE_CTX* verification) {
    constexpr int kMostSubject = 256;
    if (isGood != 0) return isGood;
    const int code = X509_STORE_CTX_get_error(verification);
    char subject[kMostSubject] = "";
    X509* const certificate = X509_STORE_CTX_get_current_cert(verification);
    if (certificate != nullptr) SubjectOf(certificate, subject, sizeof subject);
    ERR_raise_data(ERR_LIB_X509, X509_R_CERTIFICATE_VERIFICATION_FAILED, "%d: %s: %s", code,
                   X509_verify_cert_error_string(code), subject);
    return 0;
}

bool Prepare(SSL_CTX* context, int protocol) {
    constexpr std::size_t kReadBytes = 64 * 1024;
    // The older two sign with SHA-1, which level 1 and above refuse.
    const char* const ciphers = protocol < TLS1_2_VERSION ? "DEFAULT@SECLEVEL=0" : "DEFAULT@SECLEVEL=2";
    SSL_CTX_set_verify(context, SSL_VERIFY_PEER, Verified);
    // Several records are one call to the system, and not two each.
    SSL_CTX_set_read_ahead(context, 1);
    SSL_CTX_set_default_read_buffer_len(context, kReadBytes);
    return osssl::SetProtocol(context, protocol) && osssl::SetCiphers(context, ciphers);
}

}  // namespace

void* NewContext(int protocol) {
    ERR_clear_error();
    if (protocol < TLS1_VERSION || protocol > TLS1_2_VERSION) {
        Complain(ERR_LIB_SSL, SSL_R_UNKNOWN_PROTOCOL, "769 to 771 are known");
        return nullptr;
    }
    SSL_CTX* const context = osssl::NewContext();
    if (context == nullptr || Prepare(context, protocol)) return context;
    osssl::Free(context);
    return nullptr;
}

int SetStore(void* context, const char* pemFile) {
    ERR_clear_error();
    return context != nullptr && pemFile != nullptr && UsePemFile(static_cast<SSL_CTX*>(context), pemFile)
               ? 1
               : 0;
}

long SetOptions(void* context, long options) {
    ERR_clear_error();
    auto* const changed = static_cast<SSL_CTX*>(context);
    if (changed == nullptr) return -1;
    if ((options & mirelNoCompression) != 0) SSL_CTX_set_options(changed, SSL_OP_NO_COMPRESSION);
    if ((options & mirelNoRenegotiation) != 0) SSL_CTX_set_options(changed, SSL_OP_NO_RENEGOTIATION);
    if ((options & mirelSystemRoots) != 0 && !TrustSystemRoots(changed)) return -1;
    return options;
}

void FreeContext(void* context) {
    osssl::Free(static_cast<SSL_CTX*>(context));
}

}  // namespace mirelcrypto
