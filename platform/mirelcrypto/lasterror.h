#pragma once

namespace mirelcrypto {

/// Copies a text into so much room, cut and terminated; its whole length.
int CopyText(const char* text, char* out, int room);

/// Adds a failure that OpenSSL itself did not notice to the thread's list of errors: a library and a reason of OpenSSL,
/// and what there is to say about it.
void Complain(int library, int reason, const char* text);
/// The same with the system's last error behind the text.
void ComplainOfSystem(int library, int reason, const char* text);

}  // namespace mirelcrypto
