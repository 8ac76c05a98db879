#include "security/statusreport.h"

#include "kcm/kcm.h"
#include "tarnlib/straceobj.h"
#include "tarnlib/strongencryptionexception.h"

namespace TarnLibA500 {

SCrypt::Status Reported(const char* operation, SCrypt::Status status) noexcept {
    if (status == SCrypt::success) return status;
    const unsigned long error = status == SCrypt::noLibrary ? KCM400::libraryError() : 0;
    try {
        if (error != 0)
            TARN_TRACE_AT(levels::kFailure, "scrypt", "cannot load libcrypto-3.dll: error %1", error);
        TARN_TRACE_AT(levels::kFailure, "scrypt", "%1: %2", operation,
                      StrongEncryptionException(status).GetReason());
    } catch (const std::exception&) {
        TraceText(levels::kFailure, "scrypt", operation);  // no memory for the whole line
    }
    return status;
}

}  // namespace TarnLibA500
