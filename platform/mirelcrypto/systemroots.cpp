// The certificates that the system trusts.
#include <memory>

#include "mirelcrypto/certificates.h"
#include "mirelcrypto/lasterror.h"
#include "seam/nothrow.h"

namespace mirelcrypto {
namespace {

class SystemStore {
  public:
    explicit SystemStore(const wchar_t* name) : store_(osssl::OpenStore(name)) {}
    ~SystemStore() {
        if (store_ != nullptr) osssl::CloseStore(store_);
    }
    SystemStore(const SystemStore&) = delete;
    SystemStore& operator=(const SystemStore&) = delete;

    bool isOpen() const { return store_ != nullptr; }
    /// The one behind another, which is given back; null at the end.
    PCCERT_CONTEXT next(PCCERT_CONTEXT before) const { return CertEnumCertificatesInStore(store_, before); }
    bool has(PCCERT_CONTEXT certificate) const {
        const PCCERT_CONTEXT found = CertFindCertificateInStore(store_, X509_ASN_ENCODING, 0,
                                                                CERT_FIND_EXISTING, certificate, nullptr);
        if (found != nullptr) CertFreeCertificateContext(found);
        return found != nullptr;
    }

  private:
    HCERTSTORE store_;
};

/// Administrators, and the maker of the system, allow some roots for other purposes only.
bool IsForServers(PCCERT_CONTEXT certificate) {
    constexpr DWORD kFlags = CERT_FIND_PROP_ONLY_ENHKEY_USAGE_FLAG;
    DWORD size = 0;
    if (CertGetEnhancedKeyUsage(certificate, kFlags, nullptr, &size) == FALSE)
        return GetLastError() == static_cast<DWORD>(CRYPT_E_NOT_FOUND);  // no property: for all purposes
    // The purposes stand behind the first.
    const std::unique_ptr<CERT_ENHKEY_USAGE[]> room(
        new (seam::kNoThrow) CERT_ENHKEY_USAGE[size / sizeof(CERT_ENHKEY_USAGE) + 1]);
    CERT_ENHKEY_USAGE* const usage = room.get();
    SetLastError(0);  // it tells "no purpose" and "all purposes" apart
    if (usage == nullptr || CertGetEnhancedKeyUsage(certificate, kFlags, usage, &size) == FALSE) return false;
    for (DWORD i = 0; i < usage->cUsageIdentifier; ++i) {
        if (strcmp(usage->rgpszUsageIdentifier[i], szOID_PKIX_KP_SERVER_AUTH) == 0) return true;
    }
    return usage->cUsageIdentifier == 0 && GetLastError() == static_cast<DWORD>(CRYPT_E_NOT_FOUND);
}

}  // namespace

bool TrustSystemRoots(SSL_CTX* context) {
    const SystemStore roots(L"ROOT");
    const SystemStore refused(L"Disallowed");
    if (!roots.isOpen() || !refused.isOpen()) {
        ComplainOfSystem(ERR_LIB_X509, X509_R_LOADING_DEFAULTS, "the system's trusted certificates");
        return false;
    }
    for (PCCERT_CONTEXT root = nullptr; (root = roots.next(root)) != nullptr;) {
        if (refused.has(root) || !IsForServers(root)) continue;
        const unsigned char* at = root->pbCertEncoded;
        X509* const certificate = d2i_X509(nullptr, &at, static_cast<long>(root->cbCertEncoded));
        const bool isTrusted =
            certificate == nullptr || osssl::Trust(context, certificate);  // one may be damaged
        X509_free(certificate);
        if (isTrusted) continue;
        CertFreeCertificateContext(root);
        return false;
    }
    ERR_clear_error();
    return true;
}

}  // namespace mirelcrypto
