#include <gtest/gtest.h>

#include <map>
#include <string>
#include <thread>

#include "net/hostaddresses.h"
#include "net/ossockets.h"
#include "seam/osclock.h"
#include "support/failing.h"
#include "tarnlib/csiftp.h"
#include "tarnlib/csisocket.h"
#include "tarnlib/sfile.h"

using namespace TarnLibA500;

namespace {

/// A server that says yes to everything, for one client at a time, and remembers what was stored last.
class Server {
  public:
    Server() : listening_(socket(AF_INET, SOCK_STREAM, 0)) {
        sockaddr_storage address = {};
        int size = sizeof address;
        ParseAddress("127.0.0.1", AF_INET, address);
        bind(listening_, Generic(address), size);
        listen(listening_, 5);
        getsockname(listening_, Generic(address), &size);
        port = CSISocket::getPort(Generic(address));
        thread_ = std::thread([this] {
            for (SOCKET client; (client = accept(listening_, nullptr, nullptr)) != INVALID_SOCKET;)
                serve(client);
        });
    }
    ~Server() {
        closesocket(listening_);
        thread_.join();
    }
    unsigned short port = 0;
    std::string stored;

  private:
    static void Say(SOCKET to, const std::string& line) {
        send(to, (line + "\r\n").c_str(), static_cast<int>(line.size() + 2), 0);
    }
    std::string receive(unsigned dataPort) {
        sockaddr_storage address = {};
        ParseAddress("127.0.0.1", AF_INET, address);
        CSISocket::setPort(Generic(address), static_cast<unsigned short>(dataPort));
        const SOCKET data = socket(AF_INET, SOCK_STREAM, 0);
        std::string bytes(1 << 16, '\0');
        if (connect(data, Generic(address), sizeof(sockaddr_in)) == 0) {
            std::size_t length = 0;
            for (int some;
                 (some = recv(data, &bytes[length], static_cast<int>(bytes.size() - length), 0)) > 0;)
                length += static_cast<unsigned>(some);
            bytes.resize(length);
        }
        closesocket(data);
        return bytes;
    }
    void serve(SOCKET client) {
        static const std::map<std::string, const char*> kReplies = {
            {"USER", "331 x"}, {"PASS", "230 x"}, {"PWD\r", "257 \"/\""},
            {"CWD ", "550 x"}, {"MKD ", "257 x"}, {"STOR", "150 x"}};
        unsigned dataPort = 0;
        const int isOn = 1;
        setsockopt(client, IPPROTO_TCP, TCP_NODELAY, reinterpret_cast<const char*>(&isOn), sizeof isOn);
        Say(client, "220-x\r\n220 x");
        for (char line[200]; recv(client, line, sizeof line, 0) > 0;) {
            unsigned high = 0, low = 0;
            if (std::sscanf(line, "PORT %*d,%*d,%*d,%*d,%u,%u", &high, &low) == 2) dataPort = high << 8 | low;
            const std::string word(line, 4);
            const auto reply = kReplies.find(word);
            Say(client, reply != kReplies.end() ? reply->second : "200 x");
            if (word != "STOR") continue;
            stored = receive(dataPort);
            Say(client, "226 x");
        }
        closesocket(client);
    }
    SOCKET listening_;
    std::thread thread_;
};

/// A time-out costs no time: waiting for what does not come ends at once.
int WSAAPI SelectAtOnce(int count, fd_set* read, fd_set* write, fd_set* except, const PTIMEVAL) {
    timeval limit = {0, 200'000};
    return select(count, read, write, except, &limit);
}

}  // namespace

TEST(Ftp, EveryCallOfASessionMayFail) {
    ASSERT_TRUE(CSISocket::initialize());
    Server server;
    const char* const kLocal = "ftp-seam-test.tmp";
    const std::string content(5000, 'x');
    SFile(kLocal, SFile::readAndWrite | SFile::truncate, SFile::readWriteMask, SFile::denyNothing)
        .writeAll(content.data(), static_cast<std::uint32_t>(content.size()));
    const tarntest::Instead select(ossockets::selectReady, &SelectAtOnce);
    const auto session = [&] {
        CSIftp ftp;
        server.stored.clear();
        try {
            if (!ftp.Connect("127.0.0.1", server.port) || !ftp.Login("u", "p") || !ftp.CreateDirs("a"))
                return;
            if (ftp.PutFile(kLocal, "f")) {
                EXPECT_EQ(server.stored, content);
            }
            ftp.Disconnect();
        } catch (const CSIftpException& failure) {
            EXPECT_GT(failure.GetMessageID(), 41000);
        }
    };
    for (unsigned long nth = 1; tarntest::FailsAt<ossockets::Calls>(nth, WSAENETDOWN, session); ++nth)
        ASSERT_LT(nth, 200U);
    session();
    EXPECT_EQ(server.stored, content);
    std::remove(kLocal);
    CSISocket::uninitialize();
}
