// Lines from a TCP connection, against the bare system calls with a search for the line ends.

#include <benchmark/benchmark.h>

#include <cstring>
#include <string>
#include <thread>

#include "tarnlib/csisocket.h"
#include "tarnlib/csitcpsocket.h"

#include <winsock2.h>
#include <ws2tcpip.h>

using namespace TarnLibA500;

namespace {

constexpr unsigned kSeconds = 60;

/// Sends the same line for ever to each client, one after another.
class Server {
  public:
    static const Server& Get() {
        static Server* const server = new Server;  // its thread goes with the process
        return *server;
    }
    unsigned short port() const { return port_; }

  private:
    Server() {
        CSISocket::initialize();
        sockaddr_in address = {};
        int size = sizeof address;
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        listening_ = socket(AF_INET, SOCK_STREAM, 0);
        bind(listening_, reinterpret_cast<sockaddr*>(&address), size);
        listen(listening_, 1);
        getsockname(listening_, reinterpret_cast<sockaddr*>(&address), &size);
        port_ = ntohs(address.sin_port);
        std::thread([this] { serve(); }).detach();
    }
    void serve() const {
        std::string block;
        while (block.size() < 100'000) block += "250 a line as mail servers send them\r\n";
        for (;;) {
            const SOCKET client = accept(listening_, nullptr, nullptr);
            while (send(client, block.data(), static_cast<int>(block.size()), 0) > 0) continue;
            closesocket(client);
        }
    }

    SOCKET listening_;
    unsigned short port_ = 0;
};

void GetLine(benchmark::State& state) {
    CSITcpSocket client("127.0.0.1", Server::Get().port());
    char line[CSITcpSocket::kLineBytes];
    client.TcpOpen();
    for (auto _ : state) {
        if (!client.GetLine(line, kSeconds)) state.SkipWithError("no line");
    }
}
BENCHMARK(GetLine)->Name("BM_Net_GetLine/ours")->UseRealTime();

void ReceiveAndSearch(benchmark::State& state) {
    unsigned s = CSISocket::kInvalid;
    CSISocket::connectMulti("127.0.0.1", Server::Get().port(), s);
    char block[8192];
    std::string line;
    const char* at = block;
    const char* end = block;
    for (auto _ : state) {
        line.clear();
        while (line.empty() || line.back() != '\n') {
            if (at == end) {
                at = block;
                end = block + recv(s, block, sizeof block, 0);
            }
            const void* const feed = std::memchr(at, '\n', static_cast<std::size_t>(end - at));
            const char* const stop = feed != nullptr ? static_cast<const char*>(feed) + 1 : end;
            line.append(at, stop);
            at = stop;
        }
        benchmark::DoNotOptimize(line);
    }
    CSISocket::close(s);
}
BENCHMARK(ReceiveAndSearch)->Name("BM_Net_GetLine/recv and memchr")->UseRealTime();

}  // namespace
