#pragma once

#include "mirelcrypto/mirelcrypto.h"

/// The entries of the table, under names that are not OpenSSL's own; mirelcrypto.h says what each does.
namespace mirelcrypto {

MirelStartup Startup;
MirelInit Init;
MirelLastError LastError;
MirelNewContext NewContext;
MirelSetStore SetStore;
MirelSetOptions SetOptions;
MirelFreeContext FreeContext;
MirelNewConnection NewConnection;
MirelSetSocket SetSocket;
MirelSetHost SetHost;
MirelConnect Connect;
MirelRead Read;
MirelPending Pending;
MirelWrite Write;
MirelShutdown Shutdown;
MirelFreeConnection FreeConnection;
MirelDescribe Describe;
MirelPeerCertificates PeerCertificates;
MirelCertificateAt CertificateAt;
MirelTextOf TextOf;
MirelFreeCertificate FreeCertificate;

}  // namespace mirelcrypto
