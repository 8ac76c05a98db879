// Runs the steps of its command line with an FTP client, or, if the first one is "sftp", with an SFTP client.
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "net/steps.h"
#include "tarnlib/csiftp.h"
#include "tarnlib/csisftp.h"
#include "tarnlib/csisocket.h"

using namespace TarnLibA500;

namespace {

using Step = std::function<std::string(CSIftp&, const steps::Arguments&)>;

Step Asks(bool (CSIftp::*member)(const SAnsiString&)) {
    return [=](CSIftp& ftp, auto& a) { return (ftp.*member)(a[0]) ? "yes" : "no"; };
}

Step Does(void (*action)(CSIftp&, int)) {
    return [=](CSIftp& ftp, auto& a) { return action(ftp, std::atoi(a[0].getString())), "done"; };
}

CSIsftp& Secure(CSIftp& ftp) {
    return dynamic_cast<CSIsftp&>(ftp);
}

const std::map<std::string, Step> kSteps = {
    {"sftp", [](CSIftp& ftp, auto& a) { return Secure(ftp).SetFingerprint(a[0]), "done"; }},
    {"key", [](CSIftp& ftp, auto& a) { return Secure(ftp).SetPrivateKey(a[0], a[1]), "done"; }},
    {"shown", [](CSIftp& ftp, auto&) { return Secure(ftp).GetServerFingerprint().getString(); }},
    {"port", Does([](CSIftp& ftp, int port) { ftp.SetPortA(static_cast<unsigned short>(port)); })},
    {"timeout", Does([](CSIftp& ftp, int seconds) { ftp.SetTimeout(static_cast<unsigned>(seconds)); })},
    {"passive", Does([](CSIftp& ftp, int) { ftp.SetPassive(true); })},
    {"disconnect", Does([](CSIftp& ftp, int) { ftp.Disconnect(); })},
    {"ascii", Does([](CSIftp& ftp, int) { ftp.SetASCII(); })},
    {"binary", Does([](CSIftp& ftp, int) { ftp.SetBinary(); })},
    {"connect", [](CSIftp& ftp, auto& a) { return ftp.Connect(a[0]) ? "yes" : "no"; }},
    {"login", [](CSIftp& ftp, auto& a) { return ftp.Login(a[0], a[1], a[2]) ? "yes" : "no"; }},
    {"connected", [](CSIftp& ftp, auto&) { return ftp.Connected() ? "yes" : "no"; }},
    {"alive", [](CSIftp& ftp, auto&) { return ftp.CheckAliveness() ? "yes" : "no"; }},
    {"pwd", [](CSIftp& ftp, auto&) { return ftp.GetWorkingDir().getString(); }},
    {"up", [](CSIftp& ftp, auto&) { return ftp.ChangeToParentDir() ? "yes" : "no"; }},
    {"put", [](CSIftp& ftp, auto& a) { return ftp.PutFile(a[0], a[1]) ? "yes" : "no"; }},
    {"cd", Asks(&CSIftp::ChangeWorkingDir)},
    {"mkdir", Asks(&CSIftp::CreateDir)},
    {"mkdirs", Asks(&CSIftp::CreateDirs)},
    {"rmdir", Asks(&CSIftp::RemoveDir)},
    {"delete", Asks(&CSIftp::RemoveFile)},
    {"isdir", Asks(&CSIftp::IsDirExist)},
    {"account", Asks(&CSIftp::SendAcct)},
    {"local", Asks(&CSIftp::ChangeLocalWorkingDir)}};

std::string Run(CSIftp& ftp, const std::string& name, const steps::Arguments& arguments) try {
    return kSteps.at(name)(ftp, arguments);
} catch (const CSIftpException& failure) {
    return std::to_string(failure.GetErrorCode()) + " " + failure.GetDetails().getString();
}

}  // namespace

int main(int count, char** words) {
    CSISocket::initialize();
    const std::unique_ptr<CSIftp> client(std::string(words[1]).starts_with("sftp") ? new CSIsftp
                                                                                   : new CSIftp);
    steps::RunAll(count, words, 3,
                  [&](auto& name, auto& arguments) { return Run(*client, name, arguments); });
    return 0;
}
