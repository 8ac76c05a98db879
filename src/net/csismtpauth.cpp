// How a user logs in at a mail server.
#include <cstring>

#include "kcm/kcm.h"
#include "net/dialogue.h"
#include "net/smtpcapability.h"
#include "net/smtpfailure.h"
#include "net/smtpheader.h"
#include "security/utf8text.h"
#include "tarnlib/csismtpclient.h"

namespace TarnLibA500 {
namespace {

constexpr const char* kUnit = "csismtpclient";
constexpr const char* kStep = "CSISMTPClient::Connect";
constexpr unsigned kLoggedIn = 235;
constexpr unsigned kAsksOn = 334;

/// Zero-terminated; the memory is overwritten when it goes.
class SecretBase64 {
  public:
    SecretBase64(const unsigned char* bytes, unsigned count) : text_((count + 2ULL) / 3 * 4 + 1) {
        length_ = KCMUtility400::base64Into(text(), text_.size(), bytes, count);
    }
    char* text() noexcept { return reinterpret_cast<char*>(text_.data()); }
    unsigned length() const noexcept { return length_; }

  private:
    SecretBytes text_;
    unsigned length_ = 0;
};

}  // namespace

/// Sends "word base64" or the Base64 alone, of which no trace is left.
unsigned CSISMTPClient::sendSecret(const char* word, const unsigned char* bytes, unsigned count) {
    SecretBase64 base64(bytes, count);
    return ask(dialogue::CommandLine(word, base64.text(), base64.length()));
}

unsigned CSISMTPClient::SecurityCheck(const SAnsiString& helloReply) {
    const auto isPossible = [&](Authentication method, const char* word) {
        return (authentication_ == authNone || authentication_ == method) &&
               smtp::Offers(smtp::View(helloReply), "AUTH", word);
    };
    const Authentication method = isPossible(authLogin, "LOGIN")   ? authLogin
                                  : isPossible(authPlain, "PLAIN") ? authPlain
                                                                   : authNone;
    if (method == authNone) {
        smtp::Fail(kUnit, kStep, CSISMTPMailException::notAuthenticated,
                   "the server does not offer the way to log in");
    }
    const unsigned code = SecurityCheckHelper(method);
    if (code == kLoggedIn) return code;
    if (code == 0) failWithReply(kStep, "AUTH");
    smtp::Fail(kUnit, kStep, CSISMTPMailException::notAuthenticated, "AUTH: " + replyText_);
}

unsigned CSISMTPClient::SecurityCheckHelper(Authentication method) {
    Utf8Text user(user_);
    Utf8Text password(password_);
    const auto name = user.bytes();
    const auto secret = password.bytes();
    if (method == authLogin) {
        unsigned code = ask("AUTH LOGIN");
        if (code != kAsksOn) return code;
        code = sendSecret("", name.bytes, name.count);
        return code == kAsksOn ? sendSecret("", secret.bytes, secret.count) : code;
    }
    SecretBytes both(2ULL + name.count + secret.count);
    unsigned char* const zero = both.data();
    zero[0] = zero[1 + name.count] = 0;
    std::memcpy(zero + 1, name.bytes, name.count);
    std::memcpy(zero + 2 + name.count, secret.bytes, secret.count);
    return sendSecret("AUTH PLAIN", both.data(), both.size());
}

}  // namespace TarnLibA500
