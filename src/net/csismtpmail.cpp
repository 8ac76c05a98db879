#include "tarnlib/csismtpmail.h"

#include <memory>

#include "strings/base/wipe.h"

namespace TarnLibA500 {
namespace {

std::unique_ptr<CSISMTPClient> MakeClient(const CSISMTPMail::Settings& s) {
    if (s.tls)
        return std::make_unique<CSISMTPSClient>(s.host, s.port, s.localHost, s.user, s.password, s.auth,
                                                s.ssl);
    return std::make_unique<CSISMTPClient>(s.host, s.port, s.localHost, s.user, s.password, s.auth);
}

}  // namespace

CSISMTPMail::CSISMTPMail(const Settings& settings) : settings_(settings) {
    settings_.password.copyFrom(settings.password);  // a block of its own, which can be overwritten
}

CSISMTPMail::~CSISMTPMail() {
    Wipe(const_cast<char*>(settings_.password.getString()), settings_.password.getLength());
}

void CSISMTPMail::Send(const CSISMTPMessage& message, bool writeBcc) {
    message.check();
    rejected_.RemoveAll();
    const std::unique_ptr<CSISMTPClient> made = MakeClient(settings_);
    CSISMTPClient& client = *made;
    client.SetStartTls(settings_.startTls, settings_.ssl);
    client.SetTimeout(settings_.seconds, settings_.secondsForMessage);
    client.SetProgress(settings_.progress);
    try {
        client.establish();
        client.SendSMTPMessage(message, writeBcc);
    } catch (...) {
        client.Disconnect();
        throw;
    }
    rejected_ = client.GetRejectedRecipients();
    client.Disconnect();
}

}  // namespace TarnLibA500
