#include "tarnlib/cclsocket.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>

#include "mirelcrypto/osssl.h"
#include "net/ccllibrary.h"
#include "net/loopback.h"
#include "net/ossockets.h"
#include "seam/osmodules.h"
#include "support/assert_recorder.h"
#include "support/case_file.h"
#include "support/failing.h"
#include "support/open_handles.h"
#include "tarnlib/csisocket.h"

using namespace TarnLibA500;
using namespace tarntest;
namespace osssl = mirelcrypto::osssl;

namespace {

SSLConfig Trusting(const char* file) {
    SSLConfig config;
    config.SetCertificateStore(file);
    return config;
}
const std::string kData = tarntest::Beside("data", TARN_TEST_DATA).string() + "/net/";
const std::string kAuthorityFile = kData + "tls_authority.pem";
const char* const kAuthority = kAuthorityFile.c_str();

/// A TLS server on this machine, for one client at a time; it sends back what it gets.
class Server {
  public:
    Server() {
        SSL_CTX_use_certificate_file(context_.get(), (kData + "tls_server.pem").c_str(), SSL_FILETYPE_PEM);
        SSL_CTX_use_PrivateKey_file(context_.get(), (kData + "tls_server.pem").c_str(), SSL_FILETYPE_PEM);
    }
    unsigned short port() const { return server_.port; }

  private:
    void serve(SOCKET client) {
        SSL* const ssl = SSL_new(context_.get());
        SSL_set_fd(ssl, static_cast<int>(client));
        char bytes[4096];
        if (SSL_accept(ssl) == 1)
            for (int count; (count = SSL_read(ssl, bytes, sizeof bytes)) > 0;) SSL_write(ssl, bytes, count);
        SSL_shutdown(ssl);
        SSL_free(ssl);
    }
    const std::unique_ptr<SSL_CTX, void (*)(SSL_CTX*)> context_{SSL_CTX_new(TLS_server_method()),
                                                                &SSL_CTX_free};
    LoopbackServer server_{[this](SOCKET client) { serve(client); }};
};

/// What the class keeps for itself.
struct Opened : CCLSocket {
    using CCLSocket::CCLSocket, CCLSocket::getSSLMethod, CCLSocket::socket_;
    DWORD timeout(const DWORD* wanted = nullptr) {
        DWORD value = 0;
        int size = sizeof value;
        if (wanted != nullptr) ossockets::SetOption(socket_, SO_RCVTIMEO, wanted, sizeof *wanted);
        getsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, reinterpret_cast<char*>(&value), &size);
        return value;
    }
};

class Tls : public testing::Test {
  protected:
    // The library in this program, whose calls can be made to fail.
    Tls() { ostls::getList = &cryptolib_get_f_list; }
    ~Tls() override {
        EXPECT_EQ(ostls::Calls::OpenNow() + osssl::Calls::OpenNow() + ossockets::Calls::OpenNow(), 0);
        ostls::getList = nullptr;
    }
    /// Whether a line went there and back.
    bool session() {
        CCLSocket client("127.0.0.1", server.port(), Trusting(kAuthority));
        char line[CSITcpSocket::kLineBytes];
        SIArray<CCLCertificate> chain;
        if (!client.TcpOpen() || !client.SendString("hello\r\n", 5) || !client.GetLine(line, 5)) return false;
        client.GetPeerCertificates(chain);
        EXPECT_STREQ(line, "hello");
        return true;
    }
    Server server;
};

std::size_t HeapBlocks() {
    HANDLE heaps[64];
    std::size_t blocks = 0;
    for (DWORD i = 0, count = GetProcessHeaps(64, heaps); i < count; ++i) {
        PROCESS_HEAP_ENTRY entry = {};
        while (HeapWalk(heaps[i], &entry)) blocks += (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0;
    }
    return blocks;
}

/// The module's list, but for one entry that is missing.
std::string missing;
FList* WithoutOne(int version, const char* locale, const char* caller) {
    static Factory* real;
    static Factory factory = {
        [](Factory*, const char* name) { return missing == name ? nullptr : real->resolve(real, name); },
        [](Factory*) {}};
    static FList list = {2,
                         [](const FList*, const char*) { return missing == "factory" ? nullptr : &factory; }};
    FList* const whole = cryptolib_get_f_list(version, locale, caller);
    real = whole->get_factory(whole, "MIRELCCL_1");
    return &list;
}

int WSAAPI ReceiveThree(SOCKET s, char* bytes, int room, int flags) {
    return recv(s, bytes, std::min(room, 3), flags);
}

/// What the system's stores are: the authority is in one or in both, and may be for one purpose only.
struct SystemStores {
    static inline const char* purpose = nullptr;
    static inline bool isDisallowed = false;
    static HCERTSTORE WINAPI Open(HCRYPTPROV_LEGACY, LPCWSTR name) {
        const HCERTSTORE store = CertOpenStore(CERT_STORE_PROV_MEMORY, 0, 0, 0, nullptr);
        if (name[0] == L'D' && !isDisallowed) return store;
        BIO* const file = BIO_new_file(kAuthority, "r");
        X509* const certificate = PEM_read_bio_X509(file, nullptr, nullptr, nullptr);
        unsigned char* bytes = nullptr;
        const int count = i2d_X509(certificate, &bytes);
        PCCERT_CONTEXT added = nullptr;
        CertAddEncodedCertificateToStore(store, X509_ASN_ENCODING, bytes, static_cast<DWORD>(count),
                                         CERT_STORE_ADD_NEW, &added);
        char* purposes[] = {const_cast<char*>(purpose)};
        CERT_ENHKEY_USAGE usage = {1, purposes};
        if (purpose != nullptr) CertSetEnhancedKeyUsage(added, &usage);
        CertFreeCertificateContext(added);
        OPENSSL_free(bytes);
        X509_free(certificate);
        BIO_free(file);
        return store;
    }
};

}  // namespace

TEST_F(Tls, EveryCallOfASessionMayFail) {
    const AssertRecorder ignored;
    unsigned failures = 0;
    const auto attempt = [&] { failures += session() ? 0 : 1; };
    for (unsigned long nth = 1; FailsAt<ostls::Calls>(nth, WSAENETDOWN, attempt); ++nth) ASSERT_LT(nth, 100U);
    for (unsigned long nth = 1; FailsAt<osssl::Calls>(nth, WSAENETDOWN, attempt); ++nth) ASSERT_LT(nth, 200U);
    for (unsigned long nth = 1; FailsAt<ossockets::Calls>(nth, WSAENETDOWN, attempt); ++nth)
        ASSERT_LT(nth, 100U);
    EXPECT_GT(failures, 30U);
    EXPECT_TRUE(session());
}

TEST_F(Tls, AHundredSessionsLeaveNothing) {
    for (int i = 0; i < 10; ++i) EXPECT_TRUE(session());
    const std::size_t blocks = HeapBlocks(), handles = OpenHandles().size();
    for (int i = 0; i < 100; ++i) EXPECT_TRUE(session());
    EXPECT_LT(HeapBlocks(), blocks + 50);
    EXPECT_LT(OpenHandles().size(), handles + 5);
}

TEST_F(Tls, TheLibraryIsLoadedAndUnloadedAHundredTimes) {
    ostls::getList = nullptr;
    std::size_t blocks = 0;
    for (int i = 0; i < 110; ++i) {
        CclLibrary library;
        ASSERT_TRUE(LoadCclLibrary(library));
        library.table.freeContext(library.table.newContext(771));
        if (i == 9) blocks = HeapBlocks();
    }
    EXPECT_LT(HeapBlocks(), blocks + 300);  // Wine's loader keeps one or two a load; a context has hundreds
    AssertRecorder recorder(kTracesToo);
    CclLibrary library;
    const auto load = [&] { LoadCclLibrary(library); };
    for (unsigned long nth = 1; nth < 20; ++nth) {
        osmodules::Calls::Fail(nth, ERROR_MOD_NOT_FOUND);
        load();
    }
    osmodules::Calls::Fail(0, 0);
    const std::string told = recorder.take("7 cclsocket: ");
    EXPECT_NE(told.find("cclLibInit: cannot load library\n"), told.npos);
    EXPECT_NE(told.find("cclLibInit: cannot load get function list\n"), told.npos);
}

TEST_F(Tls, TheLibraryMustHaveWhatIsNeeded) {
    AssertRecorder recorder(kTracesToo);
    ostls::getList = &WithoutOne;
    for (const auto& c : ReadCases("net/ccl_starts.txt")) {
        missing = c[0];
        CclLibrary library;
        EXPECT_EQ(LoadCclLibrary(library), c[1].empty()) << missing;
        EXPECT_EQ(recorder.take("7 cclsocket: "), c[1].empty() ? "" : "cclLibInit: " + c[1] + "\n");
    }
}

TEST_F(Tls, TheCertificateIsForTheHost) {
    AssertRecorder recorder(kTracesToo);
    for (const auto& c : ReadCases("net/ccl_hosts.txt")) {
        CSITcpSocket clear("127.0.0.1", server.port());
        ASSERT_TRUE(clear.TcpOpen());
        Opened client(SAnsiString(c[0].data(), static_cast<std::uint32_t>(c[0].size())), 1,
                      Trusting(kAuthority));
        client.UpdateBaseSocket(&clear);
        EXPECT_FALSE(clear.IsOpen());
        const DWORD limit = 1234;
        client.timeout(&limit);
        EXPECT_EQ(client.NegotiateCCL(), c[1].empty()) << c[0];
        EXPECT_EQ(client.IsOpen(), c[1].empty());
        if (client.IsOpen()) EXPECT_EQ(client.timeout(), 1234U);
        EXPECT_NE(std::string(client.GetFailureText().getString()).find(c[1]), std::string::npos) << c[0];
        const std::string told = recorder.take("7 cclsocket: ");
        EXPECT_EQ(told.find("SSL negotiation failed. Connection has been closed.\n") == told.npos,
                  c[1].empty());
    }
}

TEST_F(Tls, ProtocolsAndMisuse) {
    AssertRecorder recorder(kTracesToo);
    for (int protocol : {1, 2, 3})
        EXPECT_EQ(Opened("h", 1, SSLConfig(SSLProtocol(protocol))).getSSLMethod(), 768 + protocol);
    EXPECT_EQ(Opened("h", 1, SSLConfig(SSLProtocol(7))).getSSLMethod(), 771);
    EXPECT_EQ(recorder.take("9 cclsocket: "), "Unsupported TLS protocol enum: 7. Defaulting to TLS 1.2.\n");
    CCLSocket client("127.0.0.1", server.port(), Trusting(kAuthority));
    EXPECT_FALSE(client.NegotiateCCL());
    EXPECT_TRUE(recorder.sawLast("cclsocket", "Cannot negotiate SSL without a TCP connection."));
    client.UpdateBaseSocket(nullptr);
    EXPECT_TRUE(recorder.sawLast("cclsocket", "socket != 0"));
    ASSERT_TRUE(client.TcpOpen() && client.NegotiateCCL());
    CCLSocket other(client);
    EXPECT_FALSE(other.IsOpen());
    other.UpdateBaseSocket(&client);
    EXPECT_TRUE(recorder.sawLast("cclsocket", "!socket->IsNegotiated()"));
    char one = 0;
    EXPECT_EQ(client.recv(&one, 1, MSG_PEEK), -1);
    EXPECT_EQ(CSISocket::getLastError(), WSAEOPNOTSUPP);
    WSASetLastError(WSAEINTR);
    EXPECT_TRUE(client.shutdown(CSISocket::kInvalid, SD_SEND) < 0 && client.IsNegotiated());
}

TEST_F(Tls, HalfARecordInTimeIsNoFailure) {
    const Instead drip(osssl::receiveBytes, &ReceiveThree);
    CCLSocket client("127.0.0.1", server.port(), Trusting(kAuthority));
    char line[CSITcpSocket::kLineBytes];
    ASSERT_TRUE(client.TcpOpen() && client.SendString("hello\r\n", 5)) << client.GetFailureText().getString();
    osssl::Calls::Fail(4, WSAETIMEDOUT);  // the wait for the rest
    EXPECT_FALSE(client.GetData(5, false));
    osssl::Calls::Fail(0, 0);
    EXPECT_TRUE(osssl::Calls::HasFailed() && client.IsOpen());
    EXPECT_TRUE(client.GetLine(line, 5));
    EXPECT_STREQ(line, "hello");
}

TEST_F(Tls, TheSystemsRootsAreTrustedAsTheSystemSays) {
    const Instead stores(osssl::openSystemStore, &SystemStores::Open);
    for (const std::string purpose : {"", szOID_PKIX_KP_SERVER_AUTH, szOID_PKIX_KP_CODE_SIGNING}) {
        for (const bool isDisallowed : {false, true}) {
            SystemStores::purpose = purpose.empty() ? nullptr : purpose.c_str();
            SystemStores::isDisallowed = isDisallowed;
            CCLSocket client("127.0.0.1", server.port(), SSLConfig());
            EXPECT_EQ(client.TcpOpen(), !isDisallowed && purpose != szOID_PKIX_KP_CODE_SIGNING)
                << purpose << isDisallowed;
        }
    }
}
