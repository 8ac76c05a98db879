#include "kcm/libcrypto.h"

#include <atomic>
#include <cwchar>
#include <memory>

#include "kcm/kcm.h"
#include "seam/nothrow.h"
#include "seam/osmodules.h"
#include "waiting/waiting.h"

namespace KCM400::libcrypto {
namespace {

constexpr wchar_t kName[] = L"libcrypto-3.dll";
constexpr DWORD kMostUnits = 0x8000;  // of a path

constinit std::atomic<const Functions*> kept{nullptr};
constinit std::atomic<DWORD> loadError{ERROR_SUCCESS};

// Null is the program.
HMODULE LoadBeside(HMODULE module) {
    const std::unique_ptr<wchar_t[]> path(new (seam::kNoThrow) wchar_t[kMostUnits + std::size(kName)]);
    if (path == nullptr) return SetLastError(ERROR_NOT_ENOUGH_MEMORY), nullptr;
    const DWORD length = osmodules::Path(module, path.get(), kMostUnits);
    if (length == 0 || length >= kMostUnits) return nullptr;
    std::wcscpy(std::wcsrchr(path.get(), L'\\') + 1, kName);
    return osmodules::Load(path.get(), LOAD_WITH_ALTERED_SEARCH_PATH);
}

HMODULE Load() {
    // A name that is loaded already leads to that module, whatever lies elsewhere.
    if (osmodules::Loaded(kName) != nullptr) return osmodules::Load(kName, 0);
    const HMODULE beside = LoadBeside(osmodules::At(&kept));
    return beside != nullptr ? beside : LoadBeside(nullptr);
}

struct Resolver {
    template <class Function>
    bool operator()(const char* name, Function*& function) const {
        function = reinterpret_cast<Function*>(osmodules::Find(module, name));
        return function != nullptr;
    }
    HMODULE module;
};

bool ResolveAll(const Resolver& resolve, Functions& to) {
    return resolve("OPENSSL_init_crypto", to.initialize) && resolve("ERR_clear_error", to.clearErrors) &&
           resolve("RAND_bytes_ex", to.randomBytes) && resolve("EVP_MD_fetch", to.fetchDigest) &&
           resolve("EVP_MD_free", to.freeDigest) && resolve("EVP_MD_CTX_new", to.newDigest) &&
           resolve("EVP_MD_CTX_free", to.freeDigestContext) &&
           resolve("EVP_DigestInit_ex2", to.beginDigest) && resolve("EVP_DigestUpdate", to.updateDigest) &&
           resolve("EVP_DigestFinal_ex", to.finishDigest) && resolve("EVP_Digest", to.digestAll) &&
           resolve("EVP_CIPHER_fetch", to.fetchCipher) && resolve("EVP_CIPHER_free", to.freeCipher) &&
           resolve("EVP_CIPHER_CTX_new", to.newCipher) &&
           resolve("EVP_CIPHER_CTX_free", to.freeCipherContext) &&
           resolve("EVP_CipherInit_ex2", to.beginCipher) && resolve("EVP_CipherUpdate", to.updateCipher) &&
           resolve("EVP_CipherFinal_ex", to.finishCipher);
}

bool LoadAll(Functions& to) {
    const HMODULE module = Load();
    const bool isWhole = module != nullptr && ResolveAll({module}, to);
    loadError = isWhole ? ERROR_SUCCESS : GetLastError();
    if (!isWhole && module != nullptr) osmodules::Free(module);
    return isWhole;
}

}  // namespace

// The lock is not held while the system loads: somebody may come here with the loader's lock. Two threads that come at once
// find the same functions.
const Functions* Get() noexcept {
    static constinit waiting::Lock lock;
    static constinit Functions functions{};
    if (const Functions* const known = kept.load(std::memory_order_acquire)) return known;
    Functions found{};
    if (!LoadAll(found)) return nullptr;
    const waiting::Guard guard(lock);
    if (!guard.holds()) return nullptr;
    if (kept.load(std::memory_order_relaxed) == nullptr) functions = found;
    kept.store(&functions, std::memory_order_release);
    return &functions;
}

}  // namespace KCM400::libcrypto

unsigned long KCM400::libraryError() {
    return libcrypto::loadError;
}
