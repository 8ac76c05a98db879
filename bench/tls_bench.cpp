// Bytes over TLS in both directions, against the bare calls of OpenSSL with the same blocks, and a look at the socket
// before each read that has nothing pending.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "net/loopback.h"
#include "tarnlib/cclsocket.h"
#include "tarnlib/csisocket.h"

#include <openssl/ssl.h>

using namespace TarnLibA500;

namespace {

constexpr unsigned kSeconds = 60;
constexpr unsigned kPiece = 1 << 20;
constexpr int kReadBlock = 8192;
constexpr int kWriteBlock = 64 * 1024;
const char* const kFolder = TARN_BENCH_CERTIFICATES;

/// Sends for ever to a client whose first byte is "g", and receives from others.
void Serve(SSL_CTX* context, SOCKET client) {
    std::vector<char> block(kWriteBlock);
    const int count = kWriteBlock;
    SSL* const ssl = SSL_new(context);
    SSL_set_fd(ssl, static_cast<int>(client));
    const bool isServed = SSL_accept(ssl) == 1 && SSL_read(ssl, block.data(), 1) == 1;
    const bool sends = block[0] == 'g';
    while (isServed && (sends ? SSL_write(ssl, block.data(), count) : SSL_read(ssl, block.data(), count)) > 0)
        continue;
    SSL_free(ssl);
}

SSL_CTX* ServerContext() {
    SSL_CTX* const context = SSL_CTX_new(TLS_server_method());
    const std::string file = std::string(kFolder) + "/tls_server.pem";
    SSL_CTX_use_certificate_file(context, file.c_str(), SSL_FILETYPE_PEM);
    SSL_CTX_use_PrivateKey_file(context, file.c_str(), SSL_FILETYPE_PEM);
    return context;
}

/// The port of that server.
unsigned short Port() {
    static const auto* const server =
        new tarntest::LoopbackServer([context = ServerContext()](SOCKET client) {
            Serve(context, client);
        });  // its thread goes with the process
    return server->port;
}

/// A connection made with nothing but OpenSSL.
class Bare {
  public:
    explicit Bare(const char* mode) {
        const std::string file = std::string(kFolder) + "/tls_authority.pem";
        SSL_CTX_set_max_proto_version(context_, TLS1_2_VERSION);
        SSL_CTX_load_verify_locations(context_, file.c_str(), nullptr);
        SSL_CTX_set_verify(context_, SSL_VERIFY_PEER, nullptr);
        CSISocket::connectMulti("127.0.0.1", Port(), socket_);
        ssl_ = SSL_new(context_);
        SSL_set_fd(ssl_, static_cast<int>(socket_));
        isOpen = SSL_connect(ssl_) == 1 && SSL_write(ssl_, mode, 1) == 1;
    }
    ~Bare() {
        SSL_free(ssl_);
        SSL_CTX_free(context_);
        CSISocket::close(socket_);
    }
    Bare(const Bare&) = delete;
    Bare& operator=(const Bare&) = delete;

    bool send(const char* bytes, unsigned length) {
        for (unsigned done = 0; done < length; done += kWriteBlock)
            if (SSL_write(ssl_, bytes + done, kWriteBlock) != kWriteBlock) return false;
        return true;
    }
    bool get(char* bytes, unsigned length) {
        const timeval limit = {kSeconds, 0};
        char block[kReadBlock];
        while (length != 0) {
            fd_set readable = {1, {socket_}};
            if (SSL_pending(ssl_) == 0 && CSISocket::select(0, &readable, nullptr, nullptr, &limit) != 1)
                return false;
            const int count = SSL_read(ssl_, block, kReadBlock);
            if (count < 1) return false;
            const unsigned part = std::min(length, static_cast<unsigned>(count));
            std::memcpy(bytes, block, part);
            bytes += part;
            length -= part;
        }
        return true;
    }
    bool isOpen = false;

  private:
    SSL_CTX* context_ = SSL_CTX_new(TLS_client_method());
    unsigned socket_ = CSISocket::kInvalid;
    SSL* ssl_ = nullptr;
};

/// The same with ours.
class Ours {
  public:
    explicit Ours(const char* mode) : socket_("127.0.0.1", Port(), Config()) {
        isOpen = socket_.TcpOpen() && socket_.Send(mode, 1, kSeconds);
    }
    bool send(const char* bytes, unsigned length) { return socket_.Send(bytes, length, kSeconds); }
    bool get(char* bytes, unsigned length) { return socket_.GetBuffer(length, bytes, kSeconds); }
    bool isOpen = false;

  private:
    static SSLConfig Config() {
        SSLConfig config;
        config.SetCertificateStore((std::string(kFolder) + "/tls_authority.pem").c_str());
        return config;
    }
    CCLSocket socket_;
};

template <class Client>
void Send(benchmark::State& state) {
    Client client("p");
    const std::vector<char> bytes(kPiece, 'x');
    for (auto _ : state)
        if (!client.isOpen || !client.send(bytes.data(), kPiece)) return state.SkipWithError("not sent");
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * kPiece);
}
BENCHMARK(Send<Ours>)->Name("BM_Tls_Send/ours")->UseRealTime()->Iterations(256);
BENCHMARK(Send<Bare>)->Name("BM_Tls_Send/OpenSSL")->UseRealTime()->Iterations(256);

template <class Client>
void Receive(benchmark::State& state) {
    Client client("g");
    std::vector<char> bytes(kPiece);
    for (auto _ : state)
        if (!client.isOpen || !client.get(bytes.data(), kPiece)) return state.SkipWithError("not received");
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * kPiece);
}
BENCHMARK(Receive<Ours>)->Name("BM_Tls_Receive/ours")->UseRealTime()->Iterations(256);
BENCHMARK(Receive<Bare>)->Name("BM_Tls_Receive/OpenSSL")->UseRealTime()->Iterations(256);

}  // namespace
