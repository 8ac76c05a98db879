// Runs the steps of its command line with a TLS socket, and tells what came of each: "STEP yes", "STEP no", or a text.
// A step is a name and its arguments, by commas; in these "~" is a line end.
#include <cstdio>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "tarnlib/cclsocket.h"
#include "tarnlib/csisocket.h"
#include "tarnlib/sfile.h"

using namespace TarnLibA500;

namespace {

using Arguments = std::vector<std::string>;

const char* YesNo(bool yes) {
    return yes ? "yes" : "no";
}

/// The socket of the steps, and what it is made with.
struct Session {
    SSLConfig config;
    std::unique_ptr<CCLSocket> socket;
    unsigned seconds = 5;
    unsigned handshakeSeconds = 30;

    std::string make(const SAnsiString& host, const std::string& port) {
        socket = std::make_unique<CCLSocket>(host, static_cast<unsigned short>(std::stoi(port)), config);
        socket->SetHandshakeTimeout(handshakeSeconds);
        return YesNo(true);
    }
    /// Connects in clear text with a socket of its own, whose connection becomes that of the TLS socket.
    std::string takeOver(const SAnsiString& host, const std::string& port) {
        CSITcpSocket clear(host, static_cast<unsigned short>(std::stoi(port)));
        if (!clear.TcpOpen()) return "no connection";
        socket = std::make_unique<CCLSocket>(clear, config);
        return std::string(YesNo(socket->IsOpen())) + YesNo(clear.IsOpen());
    }
    std::string sendFile(const std::string& path) {
        SFile file(path.c_str(), SFile::readOnly, SFile::readWriteMask, SFile::denyNothing);
        std::vector<char> bytes(static_cast<std::size_t>(file.sizeEx()));
        file.read(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
        return YesNo(socket->Send(bytes.data(), static_cast<unsigned>(bytes.size()), seconds));
    }
    /// Whether exactly the bytes of the file come.
    std::string getFile(const std::string& path) {
        SFile file(path.c_str(), SFile::readOnly, SFile::readWriteMask, SFile::denyNothing);
        std::vector<char> bytes(static_cast<std::size_t>(file.sizeEx())), received(bytes.size());
        file.read(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
        return YesNo(socket->GetBuffer(static_cast<unsigned>(bytes.size()), received.data(), seconds) &&
                     received == bytes);
    }
    std::string line() {
        char text[CSITcpSocket::kLineBytes];
        return socket->GetLine(text, seconds) ? text : "no";
    }
};

using Step = std::function<std::string(Session&, const Arguments&)>;

const std::map<std::string, Step> kSteps = {
    {"store", [](Session& s, auto& a) { return s.config.SetCertificateStore(a[0].c_str()), "set"; }},
    {"protocol",
     [](Session& s, auto& a) { return s.config = SSLConfig(SSLProtocol(std::stoi(a[0]))), "set"; }},
    {"timeout",
     [](Session& s, auto& a) { return s.seconds = s.handshakeSeconds = unsigned(std::stoi(a[0])), "set"; }},
    {"socket", [](Session& s, auto& a) { return s.make(a[0].c_str(), a[1]); }},
    {"takeover", [](Session& s, auto& a) { return s.takeOver(a[0].c_str(), a[1]); }},
    {"open", [](Session& s, auto&) { return YesNo(s.socket->TcpOpen()); }},
    {"clear", [](Session& s, auto&) { return YesNo(s.socket->SetupBaseTcp()); }},
    {"negotiate", [](Session& s, auto&) { return YesNo(s.socket->NegotiateCCL()); }},
    {"send", [](Session& s, auto& a) { return YesNo(s.socket->SendString(a[0].c_str(), s.seconds)); }},
    {"put", [](Session& s, auto& a) { return s.sendFile(a[0]); }},
    {"get", [](Session& s, auto& a) { return s.getFile(a[0]); }},
    {"line", [](Session& s, auto&) { return s.line(); }},
    {"data", [](Session& s, auto& a) { return YesNo(s.socket->GetData(unsigned(std::stoi(a[0])), false)); }},
    {"isopen", [](Session& s, auto&) { return YesNo(s.socket->IsOpen()); }},
    {"cipher", [](Session& s, auto&) { return s.socket->GetCipher().getString(); }},
    {"why", [](Session& s, auto&) { return s.socket->GetFailureText().getString(); }},
    {"abort", [](Session& s, auto&) { return s.socket->AbortSocket(), "done"; }}};

}  // namespace

int main(int count, char** words) {
    CSISocket::initialize();
    Session session;
    for (int i = 1; i < count; ++i) {
        Arguments arguments;
        std::string rest(words[i]);
        for (std::size_t at; (at = rest.find('~')) != rest.npos;) rest.replace(at, 1, "\r\n");
        while (arguments.size() < 3) {
            const std::size_t comma = std::min(rest.find(','), rest.size());
            arguments.push_back(rest.substr(0, comma));
            rest.erase(0, comma + 1);
        }
        const std::string name = arguments[0];
        arguments.erase(arguments.begin());
        std::printf("%s %s\n", name.c_str(), kSteps.at(name)(session, arguments).c_str());
    }
    return 0;
}
