#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "net/hostaddresses.h"
#include "net/loopback.h"
#include "net/ossockets.h"
#include "seam/osclock.h"
#include "support/assert_recorder.h"
#include "support/calls.h"
#include "support/failing.h"
#include "tarnlib/csisocket.h"
#include "tarnlib/csitcpsocket.h"

using namespace TarnLibA500;
using namespace tarntest;

namespace {

std::vector<std::string> Words(const std::string& text, char separator = ' ') {
    std::vector<std::string> words;
    std::istringstream stream(text);
    for (std::string word; std::getline(stream, word, separator);) words.push_back(word);
    return words;
}

/// The resolver of a test: "list" means these words, an address, a family ("!99"), one that is too long, or a code.
std::vector<std::string> listed;

int WSAAPI Listed(const char* host, const char* service, const addrinfo* hints, addrinfo** found) {
    if (host != nullptr && std::string(host).ends_with(".invalid")) return EAI_NONAME;
    if (host == nullptr || std::string(host) != "list") return getaddrinfo(host, service, hints, found);
    for (auto word = listed.rbegin(); word != listed.rend(); ++word) {
        const bool isAsked = hints->ai_family == AF_UNSPEC ||
                             (hints->ai_family == AF_INET6) == (word->find(':') != word->npos);
        sockaddr_storage address = {};
        if (!isAsked) continue;
        if (word->find_first_not_of("0123456789") == word->npos) return std::stoi(*word);
        if ((*word)[0] != '!') ParseAddress(word->c_str(), AF_UNSPEC, address);
        if (*word == "!long" || *word == "!wide") address.ss_family = AF_INET;
        if (*word == "!99") address.ss_family = 99;
        const bool isV4 = address.ss_family == AF_INET;
        auto* const entry = new addrinfo{};
        entry->ai_family = address.ss_family;
        entry->ai_addrlen = *word == "!long"   ? 129
                            : *word == "!wide" ? 28
                            : isV4             ? sizeof(sockaddr_in)
                                               : sizeof(sockaddr_in6);
        entry->ai_addr = Generic(*new sockaddr_storage(address));
        entry->ai_next = *found;
        *found = entry;
    }
    return 0;
}

void WSAAPI FreeListed(addrinfo* found) {
    if (found != nullptr && found->ai_socktype != 0) return freeaddrinfo(found);
    while (found != nullptr) {
        delete reinterpret_cast<sockaddr_storage*>(found->ai_addr);
        delete std::exchange(found, found->ai_next);
    }
}

unsigned slept = 0;  // seconds

void WINAPI CountSleep(DWORD milliseconds) {
    slept += milliseconds / 1000;
}

ULONGLONG WINAPI TickOfSleep() {
    return slept * 1000ULL;
}

/// What the next calls of connect answer, the last one for ever, and how the next waits end.
std::vector<std::string> answers, waits;
unsigned attempts = 0;

int WSAAPI Answer(SOCKET, const sockaddr*, int) {
    const std::size_t last = answers.size() - 1;
    const int error = std::stoi(answers[std::min<std::size_t>(attempts++, last)]);
    WSASetLastError(error);
    return error == 0 ? 0 : -1;
}

int WSAAPI Wait(int, fd_set*, fd_set*, fd_set*, const PTIMEVAL) {
    if (waits.empty()) return 0;
    const int ready = std::stoi(waits.front());
    waits.erase(waits.begin());
    return ready;
}

int WSAAPI ReceiveForEver(SOCKET, char*, int count, int) {
    ++attempts;
    return count;
}

int WSAAPI ReceiveSlowly(SOCKET, char* bytes, int, int) {
    slept += 4;
    *bytes = 'x';
    return 1;
}

int WSAAPI ReceiveLater(SOCKET, char*, int, int) {
    WSASetLastError(WSAEWOULDBLOCK);
    return -1;
}

int WSAAPI SendOne(SOCKET s, const char* bytes, int, int flags) {
    return send(s, bytes, 1, flags);
}

int WSAAPI ReceiveOne(SOCKET s, char* bytes, int, int flags) {
    return recv(s, bytes, 1, flags);
}

/// A server on this machine, in the thread of the test: what is said before it is read waits in the system.
class Peer {
  public:
    explicit Peer(int family = AF_INET) : listening_(ListenHere(family, port)) {}
    ~Peer() {
        closesocket(accepted_);
        closesocket(listening_);
    }
    void accept() { closesocket(std::exchange(accepted_, ::accept(listening_, nullptr, nullptr))); }
    void say(const std::string& bytes) { send(accepted_, bytes.data(), int(bytes.size()), 0); }
    void finish() { shutdown(accepted_, SD_SEND); }
    std::string hear(std::size_t count) {
        std::string heard(count, '.');
        std::size_t done = 0;
        for (int some = 1; done < count && some > 0; done += some)
            some = std::max(0, recv(accepted_, heard.data() + done, int(count - done), 0));
        return heard;
    }

    unsigned short port = 0;

  private:
    SOCKET listening_, accepted_ = INVALID_SOCKET;
};

/// The system's sockets are started, and names and sleeping are the test's.
class Sockets : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(CSISocket::initialize());
        slept = attempts = 0;
        osclock::sleep = &CountSleep;
        ossockets::getAddresses = &Listed;
        ossockets::freeAddresses = &FreeListed;
    }
    void TearDown() override {
        const auto reset = [](auto&... places) { ((places = nullptr), ...); };
        reset(ossockets::getAddresses, ossockets::freeAddresses, ossockets::connectTo, ossockets::selectReady,
              ossockets::sendBytes, ossockets::receiveBytes, osclock::sleep, osclock::tickCount);
        CSISocket::uninitialize();
        EXPECT_EQ(ossockets::Calls::OpenNow(), 0);
    }
};

SAnsiString Split(const SAnsiString& text) {
    SAnsiString name("-");
    unsigned short port = 0;
    SAnsiString result = Number(CSISocket::splitNamePortDetailed(text, name, port));
    return result << " " << name << " " << port;
}

SAnsiString ValidAddress(const SAnsiString& text) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    unsigned long number = 0;
    if (!CSISocket::isValidIPAddrString(text, number)) return "no";
    address.sin_addr.s_addr = number;
    return CSISocket::getipstring(reinterpret_cast<sockaddr*>(&address));
}

}  // namespace

TEST_F(Sockets, TextsOfHostsAndErrors) {
    const AssertRecorder ignored;
    ExpectCalls(
        "net/hosttexts.txt",
        {{"appendPort", [](auto& a) { return CSISocket::appendPort(a[0], a[1]); }},
         {"isNumericIPv4", [](auto& a) { return YesNo(CSISocket::isNumericIPv4(a[0])); }},
         {"isNumericIPv6", [](auto& a) { return YesNo(CSISocket::isNumericIPv6(a[0])); }},
         {"isValid", [](auto& a) { return ValidAddress(a[0]); }},
         {"isLoopbackIPv4", [](auto& a) { return YesNo(CSISocket::isLoopbackIPv4(a[0])); }},
         {"isLoopbackIPv6", [](auto& a) { return YesNo(CSISocket::isLoopbackIPv6(a[0])); }},
         {"split", [](auto& a) { return Split(a[0]); }},
         {"match", [](auto& a) { return YesNo(CSISocket::matchhosts(a[0], a[1])); }},
         {"error", [](auto& a) { return CSISocket::getErrorStr(std::atoi(a[0].getString())); }},
         {"haveStack", [](auto& a) { return YesNo(CSISocket::haveStack(std::atoi(a[0].getString()))); }},
         {"portInUse",
          [](auto& a) { return YesNo(CSISocket::is_port_in_use("", std::atoi(a[0].getString()))); }}});
}

TEST_F(Sockets, AddressesAreTriedInTheirOrder) {
    const AssertRecorder ignored;
    for (const auto& c : ReadCases("net/address_order.txt")) {
        listed = Words(c[0]);
        sockaddr_storage* block = nullptr;
        unsigned count = 99;
        const int code = CSISocket::gethostsbyname("list", block, count);
        std::string order = code != 0 ? std::to_string(code) : "";
        for (unsigned i = 0; i < count; ++i)
            order += (i == 0 ? "" : " ") + std::string(CSISocket::getipstring(Generic(block[i])).getString());
        EXPECT_EQ(order, c[1]) << c[0];
        CSISocket::freehosts(block);
    }
    SAnsiString text;
    AssertRecorder recorder(kTracesToo);
    EXPECT_EQ(CSISocket::gethostbyname("", text), 11001);
    EXPECT_EQ(CSISocket::gethostbyname(SAnsiString("localhost\0x", 11), text), 11001);
    EXPECT_NE(recorder.take("7 csisocket: Resolving ").find("'<empty>' failed: 11001 (WSA 11001)"),
              std::string::npos);
    sockaddr unknown = {};
    CSISocket::setFamily(&unknown, 99);
    EXPECT_EQ(CSISocket::getSize(&unknown), 0);
    EXPECT_TRUE(recorder.sawLast("csisocket", "invalid family 99 passed in"));
}

/// The only name that an address has.
int WSAAPI NameOf(const sockaddr* address, int size, char* name, DWORD room, char*, DWORD, int flags) {
    if (flags != NI_NAMEREQD) return getnameinfo(address, size, name, room, nullptr, 0, flags);
    std::snprintf(name, room, "localhost");
    return CSISocket::isLoopback(address) ? 0 : EAI_NONAME;
}

TEST_F(Sockets, NamesOfAddressesAndAddressesOfNames) {
    const Instead names(ossockets::getName, &NameOf);
    SAnsiString name;
    EXPECT_TRUE(CSISocket::gethostbyaddr(htonl(0x7F000001), name));
    EXPECT_EQ(name, "localhost");
    AssertRecorder recorder(kTracesToo);
    EXPECT_FALSE(CSISocket::gethostbyaddr(htonl(0xC0000201), name));
    EXPECT_EQ(recorder.take("7 csisocket: "),
              "CSISocket::gethostbyaddr: Cannot gethostbyaddr for 192.0.2.1, error code 11001\n");
    EXPECT_TRUE(CSISocket::getcanonicalname("[127.0.0.1]", name));
    EXPECT_FALSE(CSISocket::getcanonicalname("no.invalid", name));
    SISet<SAnsiString> found;
    EXPECT_TRUE(CSISocket::gethostnames("127.0.0.1", found));
    EXPECT_TRUE(found.Contains("localhost") && !found.Contains("127.0.0.1"));
    listed = {"192.0.2.1", "2001:db8::1", "192.0.2.2"};
    SIArray<unsigned long> numbers;
    EXPECT_EQ(CSISocket::gethostbyname("list", numbers), 0);
    EXPECT_EQ(numbers.GetSize(), 2U);
    SIArray<SAnsiString> texts;
    EXPECT_TRUE(CSISocket::getipaddresses("list", AF_INET6, texts));
    EXPECT_EQ(texts[0], "2001:db8::1");
    EXPECT_TRUE(CSISocket::getnthipstring(0, name) && CSISocket::isValidIPAddrString(name));
    EXPECT_FALSE(CSISocket::getnthipstring(1000, name));
    EXPECT_EQ(CSISocket::getportbyname("ftp", 1), 21);
    EXPECT_EQ(CSISocket::getportbyname("no such service", 1), 1);
}

TEST_F(Sockets, StartWithOneOfTwoVersions) {
    AssertRecorder recorder(kTracesToo);
    const std::string complaint = "7 csisocket: Couldn't initialize winsocks using Version ";
    ossockets::Calls::Fail(1, WSAVERNOTSUPPORTED);
    EXPECT_TRUE(CSISocket::initialize());
    EXPECT_EQ(recorder.take(complaint), "2\n");
    ossockets::Calls::Fail(1, WSAVERNOTSUPPORTED, true);
    EXPECT_FALSE(CSISocket::initialize());
    EXPECT_EQ(recorder.take(complaint), "2\n1.1\n");
    ossockets::Calls::Fail(0, 0);
    CSISocket::uninitialize();
}

TEST_F(Sockets, ConnectAgainWhileItIsRefused) {
    for (const auto& c : ReadCases("net/connect_retries.txt")) {
        answers = Words(c[0]);
        waits = Words(c[1]);
        slept = attempts = 0;
        ossockets::connectTo = &Answer;
        ossockets::selectReady = &Wait;
        const bool isConnected =
            CSISocket::connectNonBlocking(0, nullptr, 0, 7, static_cast<unsigned short>(std::stoi(c[2])));
        EXPECT_EQ(YesNo(isConnected), c[3].c_str()) << c[0];
        EXPECT_EQ(std::to_string(attempts) + " " + std::to_string(slept), c[4] + " " + c[5]) << c[0];
    }
}

TEST_F(Sockets, FindTheAddressThatLives) {
    Peer peer;
    Peer peer6(AF_INET6);
    unsigned s = 0;
    int family = 0;
    listed = {"127.0.0.3", "127.0.0.1"};
    EXPECT_EQ(CSISocket::connectMulti("list", peer.port, s, family), 0);
    EXPECT_EQ(family, AF_INET);
    EXPECT_EQ(CSISocket::setTimeout(s, 300), 0);
    DWORD limit = 0;
    int size = sizeof limit;
    getsockopt(s, SOL_SOCKET, SO_RCVTIMEO, reinterpret_cast<char*>(&limit), &size);
    EXPECT_EQ(limit, 300U);
    EXPECT_EQ(CSISocket::setTimeout(CSISocket::kInvalid, 0), 0);
    EXPECT_EQ(CSISocket::isReadable(s, 0), 0);
    EXPECT_EQ(CSISocket::isWriteableMS(s, 999), 1);
    EXPECT_EQ(CSISocket::close(s), 0);
    EXPECT_EQ(CSISocket::isReadable(s, 0), -1);
    EXPECT_TRUE(CSISocket::is_port_in_use(true, "", peer6.port));
    listed = {"127.0.0.3", "::1"};
    EXPECT_EQ(CSISocket::connectMulti("list", peer6.port, s, family), 0);
    EXPECT_EQ(family, AF_INET6);
    CSISocket::close(s);
    listed = {"127.0.0.3", "127.0.0.4"};
    EXPECT_EQ(CSISocket::connectMulti("list", peer.port, s), WSAECONNREFUSED);
    EXPECT_EQ(s, CSISocket::kInvalid);
    listed = {"11002"};
    EXPECT_EQ(CSISocket::connectMulti("list", peer.port, s), 11002);
    CSITcpSocket unreachable("list", peer.port);
    EXPECT_FALSE(unreachable.TcpOpen());
}

TEST_F(Sockets, PingTellsWhoAnswers) {
    AssertRecorder recorder;
    Peer peer;
    listed = {"127.0.0.3", "127.0.0.1"};
    std::list<CSISocket::ServerToPing> servers = {
        {"list", peer.port}, {"127.0.0.4", peer.port}, {"no.invalid", 1}};
    EXPECT_TRUE(CSISocket::ping(servers, 30));
    EXPECT_EQ(servers.front().getPingedAddress().toString(), "127.0.0.1");
    servers.pop_front();
    EXPECT_FALSE(CSISocket::ping(servers, 30));
    EXPECT_FALSE(servers.front().hasPingedAddress());
    EXPECT_EQ(recorder.count(), 0U);
    CSISocket::Address address = servers.front().getAddresses()[0];
    SIArray<CSISocket::Address> many;
    for (int i = 0; i < 65; ++i) many.Add(address);
    servers.assign(1, CSISocket::ServerToPing(many));
    EXPECT_FALSE(CSISocket::ping(servers, 30));
    EXPECT_EQ(recorder.count(), 1U);
    EXPECT_TRUE(recorder.sawLast("csisocket", "too many file descriptors"));
}

TEST_F(Sockets, LinesAreReceived) {
    Peer peer;
    for (const bool isCut : {false, true}) {
        if (isCut) ossockets::receiveBytes = &ReceiveOne;
        for (const auto& c : ReadCases("net/tcp_lines.txt")) {
            if (isCut && c[0].find('{') != c[0].npos) continue;  // a call for every byte
            const auto expanded = [](std::string text) {
                for (std::size_t at; (at = text.find('{')) != text.npos;) {
                    const std::size_t end = text.find('}', at);
                    text.replace(at, end + 1 - at, std::stoul(text.substr(at + 1)) - 1, text[at - 1]);
                }
                return text;
            };
            CSITcpSocket client("127.0.0.1", peer.port);
            ASSERT_TRUE(client.TcpOpen());
            peer.accept();
            peer.say(expanded(c[0]));
            peer.finish();
            for (const std::string& expected : Words(expanded(c[1]), '/')) {
                char line[CSITcpSocket::kLineBytes];
                const bool isLine = client.GetLine(line, 5);
                EXPECT_EQ(isLine ? *line == '\0' ? "<>" : line : "!", expected) << c[0];
                EXPECT_EQ(client.IsOpen(), isLine);
            }
        }
    }
}

TEST_F(Sockets, ManyLinesTakeFewCalls) {
    constexpr int kLines = 10'000;
    Peer peer;
    CSITcpSocket client("127.0.0.1", peer.port);
    ASSERT_TRUE(client.TcpOpen());
    peer.accept();
    for (int i = 0; i < kLines; ++i) peer.say("a line of twenty b\r\n");
    const unsigned long before = ossockets::Calls::SoFar();
    char line[CSITcpSocket::kLineBytes];
    for (int i = 0; i < kLines; ++i) ASSERT_TRUE(client.GetLine(line, 5));
    EXPECT_LT(ossockets::Calls::SoFar() - before, kLines / 10U);
    peer.finish();
}

TEST_F(Sockets, ALineThatTricklesInMustEnd) {
    osclock::tickCount = &TickOfSleep;
    Peer peer;
    CSITcpSocket client("127.0.0.1", peer.port);
    ASSERT_TRUE(client.TcpOpen());
    peer.accept();
    peer.say("x");
    ossockets::receiveBytes = &ReceiveSlowly;
    char line[CSITcpSocket::kLineBytes];
    EXPECT_FALSE(client.GetLine(line, 5));
    EXPECT_FALSE(client.IsOpen());
    EXPECT_LT(slept, 100U);  // 2,048 bytes would take two hours
}

TEST_F(Sockets, AnAbortedConnectionIsReadOffWithinBounds) {
    osclock::tickCount = &TickOfSleep;
    for (auto* receive : {&ReceiveForEver, &ReceiveLater}) {
        Peer peer;
        CSITcpSocket client("127.0.0.1", peer.port);
        ASSERT_TRUE(client.TcpOpen());
        ossockets::receiveBytes = receive;
        client.AbortSocket();
        EXPECT_FALSE(client.IsOpen());
        ossockets::receiveBytes = nullptr;
    }
    EXPECT_EQ(attempts, 4096U);
    EXPECT_EQ(slept, 10U);
}

TEST_F(Sockets, EveryCallOfASessionMayFail) {
    Peer peer;
    const auto session = [&] {
        CSITcpSocket client("127.0.0.1", peer.port);
        EXPECT_FALSE(client.Send("", 0, 1));
        if (!client.TcpOpen()) return;
        peer.accept();
        peer.say("hello\r\nabc");
        peer.finish();
        char bytes[CSITcpSocket::kLineBytes] = "";
        if (!client.GetLine(bytes, 5)) {
            EXPECT_FALSE(client.IsOpen());
            return;
        }
        EXPECT_STREQ(bytes, "hello");
        if (!client.GetBuffer(3, bytes, 5) || !client.SendString("some words", 5)) {
            EXPECT_FALSE(client.IsOpen());
            return;
        }
        EXPECT_TRUE(client.Send("", 0, 1));
        EXPECT_EQ(peer.hear(10), "some words");
        EXPECT_FALSE(client.GetData(5, false));
        EXPECT_FALSE(client.IsOpen());
        if (!client.TcpOpen()) return;
        peer.accept();
        peer.finish();
    };
    ossockets::sendBytes = &SendOne;
    ossockets::receiveBytes = &ReceiveOne;
    for (unsigned long nth = 1; FailsAt<ossockets::Calls>(nth, WSAENETDOWN, session); ++nth)
        ASSERT_LT(nth, 200U);
    for (const unsigned long error : {WSAEINTR, WSAEWOULDBLOCK}) {
        for (unsigned long nth = 1; FailsAt<ossockets::Calls>(nth, error, session); ++nth)
            ASSERT_LT(nth, 200U);
    }
}
