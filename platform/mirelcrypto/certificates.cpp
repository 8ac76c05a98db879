// The certificates of a peer.
#include "mirelcrypto/certificates.h"

#include <cstdio>

#include "mirelcrypto/entries.h"
#include "mirelcrypto/lasterror.h"

namespace mirelcrypto {
namespace {

/// One line in UTF-8, the controls in it escaped.
int PrintName(const X509_NAME* name, char* text, int room) {
    constexpr unsigned long kFlags = XN_FLAG_ONELINE & ~static_cast<unsigned long>(ASN1_STRFLGS_ESC_MSB);
    BIO* const bio = BIO_new(BIO_s_mem());
    if (bio == nullptr) return -1;
    char* printed = nullptr;
    int length = -1;
    if (X509_NAME_print_ex(bio, name, 0, kFlags) >= 0 && BIO_write(bio, "", 1) == 1 &&
        BIO_get_mem_data(bio, &printed) > 0)
        length = CopyText(printed, text, room);
    BIO_free(bio);
    return length;
}

int PrintTime(const ASN1_TIME* time, char* text, int room) {
    constexpr int kYears = 1900;
    constexpr int kMost = 80;
    tm parts = {};
    char all[kMost];
    if (ASN1_TIME_to_tm(time, &parts) != 1) return -1;
    std::snprintf(all, sizeof all, "%04d-%02d-%02d %02d:%02d:%02d", parts.tm_year + kYears, parts.tm_mon + 1,
                  parts.tm_mday, parts.tm_hour, parts.tm_min, parts.tm_sec);
    return CopyText(all, text, room);
}

}  // namespace

void SubjectOf(X509* certificate, char* text, int room) {
    PrintName(X509_get_subject_name(certificate), text, room);
}

void* CertificateAt(void* certificates, int n) {
    X509* const certificate = sk_X509_value(static_cast<STACK_OF(X509)*>(certificates), n);
    return certificate == nullptr ? nullptr : osssl::Share(certificate);
}

int TextOf(void* certificate, int what, char* text, int room) {
    const auto* const asked = static_cast<const X509*>(certificate);
    if (asked == nullptr) return -1;
    switch (what) {
        case mirelSubject:
            return PrintName(X509_get_subject_name(asked), text, room);
        case mirelIssuer:
            return PrintName(X509_get_issuer_name(asked), text, room);
        case mirelNotBefore:
            return PrintTime(X509_get0_notBefore(asked), text, room);
        case mirelNotAfter:
            return PrintTime(X509_get0_notAfter(asked), text, room);
        default:
            return -1;
    }
}

void FreeCertificate(void* certificate) {
    osssl::Free(static_cast<X509*>(certificate));
}

}  // namespace mirelcrypto
