#include "tarnlib/strongencryption.h"

#include "diag/assert/levels.h"
#include "kcm/kcmalg.h"
#include "security/secretstring.h"
#include "strings/base/wipe.h"
#include "tarnlib/encryptionkeyfactory.h"
#include "waiting/waiting.h"

namespace TarnLibA500 {
namespace {

using TextOperation = SCrypt::Status (SCrypt::*)(const SAnsiString&, const SCrypt::Key&, SAnsiString&) const;

constinit waiting::Lock turns;
constinit bool isInitialised = false;  // guarded by the lock
constexpr SCrypt crypt;

void Require(SCrypt::Status status) {
    if (status != SCrypt::success) throw StrongEncryptionException(status);
}

/// The built-in key for as long as the object lives.
class BuiltInKey {
  public:
    BuiltInKey() {
        const SecretString passPhrase(EncryptionKeyFactory::makeStringKey());
        Require(crypt.makeKey(passPhrase.getString(), key_, KCMAlg400::SHA256));
    }
    ~BuiltInKey() { Wipe(key_.bytes, sizeof key_.bytes); }
    BuiltInKey(const BuiltInKey&) = delete;
    BuiltInKey& operator=(const BuiltInKey&) = delete;
    const SCrypt::Key& key() const { return key_; }

  private:
    SCrypt::Key key_;
};

SAnsiString Convert(const SAnsiString& text, TextOperation operation) {
    const waiting::Guard turn(turns);
    if (!isInitialised) Require(crypt.Init());
    isInitialised = true;
    const BuiltInKey key;
    SAnsiString result;
    Require((crypt.*operation)(text, key.key(), result));
    return result;
}

}  // namespace

SAnsiString StrongEncryption::encrypt(const SAnsiString& text) {
    return Convert(text, &SCrypt::encrypt);
}

SAnsiString StrongEncryption::decrypt(const SAnsiString& text) {
    return Convert(text, &SCrypt::decrypt);
}

}  // namespace TarnLibA500
