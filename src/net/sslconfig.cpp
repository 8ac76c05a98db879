#include "tarnlib/sslconfig.h"

namespace TarnLibA500 {

SSLConfig::SSLConfig() : SSLConfig(sslTLS12) {}

SSLConfig::SSLConfig(SSLProtocol protocol) : protocol_(protocol) {}

void SSLConfig::SetCertificateStore(const SAnsiString& pemFile) {
    store_ = pemFile;
}

SAnsiString SSLConfig::GetCertificateStore() const {
    return store_;
}

SSLProtocol SSLConfig::GetProtocol() const {
    return protocol_;
}

}  // namespace TarnLibA500
