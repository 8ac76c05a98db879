// Runs the steps of its command line with an FTP client, and tells what came of each: "STEP yes", "STEP no", a text,
// or the exception. A step is a name and its arguments, by commas.
#include <cstdio>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "tarnlib/csiftp.h"
#include "tarnlib/csisocket.h"

using namespace TarnLibA500;

namespace {

/// Of an argument: "~n" is a line end, "~0" a zero byte.
SAnsiString Decoded(const std::string& text) {
    SAnsiString decoded;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '~')
            decoded.concat(text[i]);
        else if (text[++i] == 'n')
            decoded.concat("\r\n");
        else
            decoded.concat('\0');
    }
    return decoded;
}

using Step = std::function<std::string(CSIftp&, const std::vector<SAnsiString>&)>;

Step Asks(bool (CSIftp::*member)(const SAnsiString&)) {
    return [=](CSIftp& ftp, auto& a) { return (ftp.*member)(a[0]) ? "yes" : "no"; };
}

Step Does(void (*action)(CSIftp&, int)) {
    return [=](CSIftp& ftp, auto& a) { return action(ftp, std::atoi(a[0].getString())), "done"; };
}

const std::map<std::string, Step> kSteps = {
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

std::string Run(CSIftp& ftp, const std::string& name, const std::vector<SAnsiString>& arguments) try {
    return kSteps.at(name)(ftp, arguments);
} catch (const CSIftpException& failure) {
    return std::to_string(failure.GetErrorCode()) + " " + failure.GetDetails().getString();
}

}  // namespace

int main(int count, char** words) {
    CSISocket::initialize();
    CSIftp ftp;
    for (int i = 1; i < count; ++i) {
        std::vector<SAnsiString> arguments;
        std::string rest(words[i]);
        while (arguments.size() < 4) {
            const std::size_t comma = std::min(rest.find(','), rest.size());
            arguments.push_back(Decoded(rest.substr(0, comma)));
            rest.erase(0, comma + 1);
        }
        const std::string name = arguments[0].getString();
        arguments.erase(arguments.begin());
        std::printf("%s %s\n", name.c_str(), Run(ftp, name, arguments).c_str());
    }
    return 0;
}
