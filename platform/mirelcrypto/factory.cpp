// What the module offers, and its start.
#include <cstring>

#include "mirelcrypto/entries.h"
#include "mirelcrypto/osssl.h"

namespace mirelcrypto {
namespace {

struct Entry {
    const char* name;
    MirelFn function;
};

template <class Function>
Entry Named(const char* name, Function* function) {
    return {name, reinterpret_cast<MirelFn>(function)};
}

MirelFn Resolve(Factory*, const char* entry) {
    static const Entry kEntries[] = {Named("SSL_API_startup", Startup),
                                     Named("mirelcr_init", Init),
                                     Named("SSL_API_get_last_error", LastError),
                                     Named("SSL_CTX_new", NewContext),
                                     Named("SSL_CTX_set_default_pse_by_name", SetStore),
                                     Named("SSL_CTX_set_options", SetOptions),
                                     Named("SSL_CTX_free", FreeContext),
                                     Named("SSL_new", NewConnection),
                                     Named("SSL_set_fd", SetSocket),
                                     Named("SSL_set_verify_host", SetHost),
                                     Named("SSL_connect", Connect),
                                     Named("SSL_read", Read),
                                     Named("SSL_pending", Pending),
                                     Named("SSL_write", Write),
                                     Named("SSL_shutdown", Shutdown),
                                     Named("SSL_free", FreeConnection),
                                     Named("SSL_describe", Describe),
                                     Named("SSL_get_peer_certificates", PeerCertificates),
                                     Named("aux_get_Certificate_n_from_Certificates", CertificateAt),
                                     Named("aux_get_Certificate_text", TextOf),
                                     Named("aux_free_Certificate", FreeCertificate)};
    for (const Entry& known : kEntries) {
        if (entry != nullptr && std::strcmp(entry, known.name) == 0) return known.function;
    }
    return nullptr;
}

void Release(Factory*) {}

Factory* GetFactory(const FList*, const char* name) {
    static constinit Factory factory = {Resolve, Release};
    return name != nullptr && std::strcmp(name, "MIRELCCL_1") == 0 ? &factory : nullptr;
}

}  // namespace

int Startup() {
    return osssl::Started() ? 1 : 0;
}

int Init() {
    return 1;
}

}  // namespace mirelcrypto

FList* cryptolib_get_f_list(int version, const char*, const char*) {
    constexpr int kVersion = 2;
    static constinit FList list = {kVersion, mirelcrypto::GetFactory};
    return version == kVersion ? &list : nullptr;
}
