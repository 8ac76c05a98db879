#include "security/statusreport.h"

#include "tarnlib/straceobj.h"
#include "tarnlib/strongencryptionexception.h"

namespace TarnLibA500 {

SCrypt::Status Reported(const char* operation, SCrypt::Status status) noexcept {
    if (status == SCrypt::success) return status;
    try {
        TARN_TRACE_AT(levels::kFailure, "scrypt", "%1: %2", operation,
                      StrongEncryptionException(status).GetReason());
    } catch (const std::exception&) {
        TraceText(levels::kFailure, "scrypt", operation);  // no memory for the whole line
    }
    return status;
}

}  // namespace TarnLibA500
