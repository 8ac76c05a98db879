#pragma once

#include "mirelcrypto/osssl.h"

namespace mirelcrypto {

/// All certificates that the system trusts to name servers are trusted. False when they cannot be read.
bool TrustSystemRoots(SSL_CTX* context);

/// What a PEM file has is used as MirelSetStore says. False when it cannot be, or not all of it.
bool UsePemFile(SSL_CTX* context, const char* path);

/// The subject of a certificate, cut to the room.
void SubjectOf(X509* certificate, char* text, int room);

}  // namespace mirelcrypto
