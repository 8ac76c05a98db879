#include "tarnlib/sha256.h"

#include <cstring>

#include "diag/assert/levels.h"
#include "diag/assert/require.h"
#include "kcm/kcm.h"

namespace TarnLibA500 {
namespace {

constexpr const char* kUnit = "sha256";

}  // namespace

struct SHA256::Work {
    void begin() {
        if (!hasBegun) digester.init();
        hasBegun = true;
    }

    KCM400::Digester digester{KCMAlg400::SHA256};
    bool hasBegun = false;
};

SHA256::SHA256() : work_(new Work) {}

SHA256::~SHA256() {
    delete work_;
}

void SHA256::Update(const void* bytes, std::uint32_t count) {
    if (!Require(bytes != nullptr || count == 0, kUnit, "bytes != NULL || count == 0")) return;
    work_->begin();
    work_->digester.update(static_cast<const unsigned char*>(bytes), count);
}

bool SHA256::Finish(unsigned char (&digest)[kDigestBytes]) {
    work_->begin();
    work_->hasBegun = false;
    const bool isMade = work_->digester.finish(digest, sizeof digest) != KCM400::kFailed;
    if (isMade) return true;
    std::memset(digest, 0, sizeof digest);
    TraceText(levels::kFailure, kUnit, "the cryptographic module cannot make a digest");
    return false;
}

}  // namespace TarnLibA500
