#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <random>
#include <string>

#include "net/hostaddresses.h"
#include "net/loopback.h"
#include "net/ossockets.h"
#include "seam/osclock.h"
#include "support/alloc_hooks.h"
#include "support/failing.h"
#include "tarnlib/csiftp.h"
#include "tarnlib/csisocket.h"
#include "tarnlib/sfile.h"

using namespace TarnLibA500;

namespace {

/// What a server says to a word, "" standing for the greeting and "xxxx" for the end of a transfer; to others 200.
const std::map<std::string, const char*> kReplies = {
    {"", "220-x\r\n220 x"}, {"USER", "331 x"}, {"PASS", "230 x"}, {"PWD\r", "257 \"/\""},   {"CWD ", "550 x"},
    {"MKD ", "257 x"},      {"STOR", "150 x"}, {"xxxx", "226 x"}, {"EPSV", "229 x (|||9|)"}};

std::string ReplyTo(const std::string& word) {
    const auto reply = kReplies.find(word);
    return reply != kReplies.end() ? reply->second : "200 x";
}

/// A server that says yes to everything, for one client at a time, and remembers what was stored last.
class Server {
  public:
    unsigned short port() const { return server_.port; }
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
        connect(data, Generic(address), sizeof(sockaddr_in));
        bytes.resize(static_cast<unsigned>(std::max(0, recv(data, bytes.data(), 1 << 16, MSG_WAITALL))));
        closesocket(data);
        return bytes;
    }
    void serve(SOCKET client) {
        unsigned dataPort = 0;
        const int isOn = 1;
        setsockopt(client, IPPROTO_TCP, TCP_NODELAY, reinterpret_cast<const char*>(&isOn), sizeof isOn);
        Say(client, ReplyTo(""));
        for (char line[200]; recv(client, line, sizeof line, 0) > 0;) {
            unsigned high = 0, low = 0;
            if (std::sscanf(line, "PORT %*d,%*d,%*d,%*d,%u,%u", &high, &low) == 2) dataPort = high << 8 | low;
            const std::string word(line, 4);
            Say(client, ReplyTo(word));
            if (word != "STOR") continue;
            stored = receive(dataPort);
            Say(client, ReplyTo("xxxx"));
        }
    }
    tarntest::LoopbackServer server_{[this](SOCKET client) { serve(client); }};
};

/// A time-out costs no time: waiting for what does not come ends at once.
int WSAAPI SelectAtOnce(int count, fd_set* read, fd_set* write, fd_set* except, const PTIMEVAL) {
    timeval limit = {0, 200'000};
    return select(count, read, write, except, &limit);
}

/// In place of a server one that has gone mad: what it says is right, or a reply to something else, whole, cut or
/// doubled, or bytes that mean nothing.
struct Madness {
    static inline std::string asked;
    static inline std::mt19937 dice;

    static int WSAAPI Send(SOCKET, const char* bytes, int count, int) {
        asked.assign(bytes, static_cast<std::size_t>(std::min(count, 4)));
        return count;
    }
    static int WSAAPI Receive(SOCKET, char* to, int room, int) {
        std::string said = ReplyTo(asked) + "\r\n";
        for (unsigned odd = dice() % 24; odd < 4; odd = dice() % 24) {
            if (odd == 0) said.insert(dice() % said.size(), std::next(kReplies.begin(), dice() % 9)->second);
            if (odd == 1) said.resize(1 + dice() % said.size());
            if (odd == 2) said[dice() % said.size()] = static_cast<char>(dice());
            if (odd == 3) said.insert(dice() % said.size(), dice() % 3000, static_cast<char>(dice()));
        }
        const int count = std::min(room, static_cast<int>(said.size()));
        std::memcpy(to, said.data(), static_cast<std::size_t>(count));
        return count;
    }
    static int WSAAPI Select(int, fd_set*, fd_set*, fd_set* refused, const PTIMEVAL) {
        if (refused != nullptr) refused->fd_count = 0;
        return 1;
    }
};

/// A server, and a file to put on it.
class Ftp : public testing::Test {
  protected:
    Ftp() {
        SFile(kLocal, SFile::readAndWrite | SFile::truncate, SFile::readWriteMask, SFile::denyNothing)
            .writeAll(content.data(), static_cast<std::uint32_t>(content.size()));
    }
    ~Ftp() override {
        std::remove(kLocal);
        CSISocket::uninitialize();
    }
    bool begin(CSIftp& ftp) { return ftp.Connect("127.0.0.1", server.port()) && ftp.Login("u", "p"); }

    static constexpr const char* kLocal = "ftp-seam-test.tmp";
    const std::string content = std::string(5000, 'x');
    const bool isUp = CSISocket::initialize();
    Server server;
};

}  // namespace

TEST_F(Ftp, ServersThatHaveGoneMad) {
    const tarntest::Instead send(ossockets::sendBytes, &Madness::Send);
    const tarntest::Instead receive(ossockets::receiveBytes, &Madness::Receive);
    const tarntest::Instead select(ossockets::selectReady, &Madness::Select);
    const long open = ossockets::Calls::OpenNow();
    int refused = 0, stored = 0, broken = 0;
    for (int session = 0; session < 500; ++session) try {
            Madness::asked.clear();
            CSIftp ftp;
            ftp.SetTimeout(0);
            ftp.SetPassive(session % 4 != 0);
            const bool isStored = begin(ftp) && ftp.CreateDirs("a/b") && ftp.PutFile(kLocal, "f");
            ++(isStored && !ftp.IsDirExist("a") ? stored : refused);
            ftp.Disconnect();
        } catch (const CSIftpException& failure) {
            EXPECT_GT(failure.GetMessageID(), 41000);
            ++broken;
        }
    EXPECT_GT(std::min({refused, stored, broken}), 20) << refused << " " << stored << " " << broken;
    EXPECT_EQ(ossockets::Calls::OpenNow(), open);
}

TEST_F(Ftp, EveryCallOfASessionMayFail) {
    const tarntest::Instead select(ossockets::selectReady, &SelectAtOnce);
    const auto session = [&] {
        CSIftp ftp;
        server.stored.clear();
        try {
            if (!begin(ftp) || !ftp.CreateDirs("a")) return;
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
}

TEST_F(Ftp, WithoutMemoryTheDialogueStaysInStepOrEnds) {
    CSIftp ftp;
    const auto work = [&] { ftp.CreateDirs("a") && ftp.PutFile(kLocal, "f"); };
    for (unsigned long nth = 1;; ++nth) {
        ASSERT_TRUE(ftp.Connected() || begin(ftp));
        if (!tarntest::FailsAt(nth, work)) break;
        EXPECT_TRUE(!ftp.Connected() || ftp.CheckAliveness()) << nth;
    }
    EXPECT_EQ(server.stored, content);
}
