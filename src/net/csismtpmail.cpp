#include "tarnlib/csismtpmail.h"

#include "strings/base/wipe.h"

namespace TarnLibA500 {

CSISMTPMail::CSISMTPMail(const Settings& settings) : settings_(settings) {
    settings_.password.copyFrom(settings.password);  // a block of its own, which can be overwritten
}

CSISMTPMail::~CSISMTPMail() {
    Wipe(const_cast<char*>(settings_.password.getString()), settings_.password.getLength());
}

void CSISMTPMail::Send(const CSISMTPMessage& message, bool writeBcc) {
    message.check();
    rejected_.RemoveAll();
    CSISMTPClient client(settings_.host, settings_.port, settings_.localHost, settings_.user,
                         settings_.password, settings_.auth);
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
