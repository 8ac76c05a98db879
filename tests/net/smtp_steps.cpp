// Runs the steps of its command line with a mail client.
#include <functional>
#include <memory>

#include "net/steps.h"
#include "tarnlib/csismtpclient.h"
#include "tarnlib/csisocket.h"
#include "tarnlib/senvironment.h"
#include "tarnlib/sfilesys.h"

using namespace TarnLibA500;

namespace {

std::unique_ptr<CSISMTPClient> client;
CSISMTPMessage message;

SIArray<SAnsiString> List(const steps::Arguments& addresses) {
    SIArray<SAnsiString> list;
    for (const SAnsiString& address : addresses) {
        if (!address.isEmpty()) list.Add(address);
    }
    return list;
}

std::string Rejected() {
    std::string all;
    for (const SAnsiString& address : client->GetRejectedRecipients())
        all += (all.empty() ? "" : " ") + std::string(address.getString());
    return all.empty() ? "none" : all;
}

unsigned Number(const SAnsiString& digits) {
    return static_cast<unsigned>(std::atoi(digits.getString()));
}

/// Host, port, local host, user, password, LOGIN or PLAIN.
void Make(const steps::Arguments& a) {
    const auto method = a[5] == "LOGIN"   ? CSISMTPClient::authLogin
                        : a[5] == "PLAIN" ? CSISMTPClient::authPlain
                                          : CSISMTPClient::authNone;
    client = std::make_unique<CSISMTPClient>(a[0], static_cast<unsigned short>(Number(a[1])), a[2], a[3],
                                             a[4], method);
}

/// "required" or another word, and the store.
void SetStartTls(const steps::Arguments& a) {
    SSLConfig config;
    config.SetCertificateStore(a[1]);
    client->SetStartTls(
        a[0] == "required" ? CSISMTPClient::startTlsRequired : CSISMTPClient::startTlsIfOffered, config);
}

/// What there is of messages.
unsigned Left() {
    const SAnsiString folder = SFileSys::getTempDirname() + "smtp";
    return SFileSys::exists(folder) ? SFileSys::countAll(folder) : 0;
}

using Step = std::function<std::string(const steps::Arguments&)>;

template <class Setter>
Step Sets(Setter setter) {
    return [=](const steps::Arguments& a) { return setter(a), "done"; };
}

const std::map<std::string, Step> kSteps = {
    {"client", Sets(Make)},
    {"starttls", Sets(SetStartTls)},
    {"timeout", Sets([](auto& a) { client->SetTimeout(Number(a[0]), Number(a[0])); })},
    {"temporary", Sets([](auto& a) { SEnvironment::Set("TMP", a[0]); })},
    {"left", [](auto&) { return std::to_string(Left()); }},
    {"from", Sets([](auto& a) { message.SetSender(a[0]); })},
    {"to", Sets([](auto& a) { message.SetTo(List(a)); })},
    {"cc", Sets([](auto& a) { message.SetCc(List(a)); })},
    {"bcc", Sets([](auto& a) { message.SetBcc(List(a)); })},
    {"reply", Sets([](auto& a) { message.SetReplyTo(List(a)); })},
    {"subject", Sets([](auto& a) { message.SetSubject(a[0]); })},
    {"body", Sets([](auto& a) { message.SetBody(a[0]); })},
    {"format", Sets([](auto& a) { message.SetBodyFormat(a[0]); })},
    {"attach",
     Sets([](auto& a) { message.AddAttachment(CSISMTPMessage::MimeAttachment(a[0], a[1], a[2])); })},
    {"disconnect", Sets([](auto&) { client->Disconnect(); })},
    {"connect", [](auto&) { return client->Connect() ? "yes" : "no"; }},
    {"alive", [](auto&) { return client->CheckAliveness() ? "yes" : "no"; }},
    {"send", [](auto& a) { return std::to_string(client->SendSMTPMessage(message, a[0] == "bcc")); }},
    {"code", [](auto&) { return std::to_string(client->GetLastReplyCode()); }},
    {"reply text", [](auto&) { return client->GetLastReplyText().getString(); }},
    {"rejected", [](auto&) { return Rejected(); }}};

std::string Run(const std::string& name, const steps::Arguments& arguments) try {
    return kSteps.at(name)(arguments);
} catch (const CSISMTPMailException& failure) {
    return std::to_string(failure.GetErrorCode()) + " " + failure.toString().getString();
}

}  // namespace

int main(int count, char** words) {
    CSISocket::initialize();
    steps::RunAll(count, words, 6, Run);
    return 0;
}
