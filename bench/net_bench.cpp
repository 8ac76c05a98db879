// Lines from a TCP connection, against the bare system calls with a search for the line ends.

#include <benchmark/benchmark.h>

#include <cstring>
#include <string>

#include "net/loopback.h"
#include "tarnlib/csisocket.h"
#include "tarnlib/csitcpsocket.h"

using namespace TarnLibA500;

namespace {

constexpr unsigned kSeconds = 60;

/// The port of a server that sends the same line for ever to each client.
unsigned short Port() {
    static const auto* const server = new tarntest::LoopbackServer([](SOCKET client) {
        std::string block;
        while (block.size() < 100'000) block += "250 a line as mail servers send them\r\n";
        while (send(client, block.data(), static_cast<int>(block.size()), 0) > 0) continue;
    });  // its thread goes with the process
    return server->port;
}

void GetLine(benchmark::State& state) {
    CSITcpSocket client("127.0.0.1", Port());
    char line[CSITcpSocket::kLineBytes];
    client.TcpOpen();
    for (auto _ : state) {
        if (!client.GetLine(line, kSeconds)) state.SkipWithError("no line");
    }
}
BENCHMARK(GetLine)->Name("BM_Net_GetLine/ours")->UseRealTime();

void ReceiveAndSearch(benchmark::State& state) {
    unsigned s = CSISocket::kInvalid;
    CSISocket::connectMulti("127.0.0.1", Port(), s);
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
