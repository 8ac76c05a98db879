// A mail with a large file, built into a file, against OpenSSL's Base64 of the same blocks written in one line.

#include <benchmark/benchmark.h>

#include <openssl/evp.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "tarnlib/csismtpmessage.h"

using namespace TarnLibA500;
namespace fs = std::filesystem;

namespace {

constexpr std::size_t kBytes = 20 << 20;

/// The file that is attached, and the one that is built.
struct Files {
    Files() : attached((fs::temp_directory_path() / "tarn-mail-bench").string()), built(attached + ".eml") {
        std::vector<char> bytes(kBytes);
        unsigned state = 1;
        for (char& byte : bytes) byte = static_cast<char>((state = state * 1664525 + 1013904223) >> 24);
        std::ofstream(attached, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(kBytes));
    }
    ~Files() {
        fs::remove(attached);
        fs::remove(built);
    }
    std::string attached;
    std::string built;
};

void Save(benchmark::State& state) {
    const Files files;
    SIArray<SAnsiString> to;
    to.Add("b@x.test");
    CSISMTPMessage message;
    message.SetSender("a@x.test");
    message.SetTo(to);
    message.AddAttachment(CSISMTPMessage::MimeAttachment(files.attached.c_str()));
    for (auto _ : state) message.Save(files.built.c_str());
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * kBytes));
}
BENCHMARK(Save)->Name("BM_Mail_Build/ours")->UseRealTime();

void EncodeBlocks(benchmark::State& state) {
    constexpr std::size_t kBlock = 57 * 1024;
    const Files files;
    std::vector<unsigned char> block(kBlock), text(kBlock / 3 * 4 + 1);
    const auto open = [](const std::string& name, const char* mode) {
        return std::unique_ptr<FILE, int (*)(FILE*)>(std::fopen(name.c_str(), mode), &std::fclose);
    };
    for (auto _ : state) {
        const auto in = open(files.attached, "rb");
        const auto out = open(files.built, "wb");
        std::setvbuf(in.get(), nullptr, _IONBF, 0);
        std::setvbuf(out.get(), nullptr, _IONBF, 0);
        while (const std::size_t count = std::fread(block.data(), 1, kBlock, in.get())) {
            const int length = EVP_EncodeBlock(text.data(), block.data(), static_cast<int>(count));
            std::fwrite(text.data(), 1, static_cast<std::size_t>(length), out.get());
        }
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * kBytes));
}
BENCHMARK(EncodeBlocks)->Name("BM_Mail_Build/EVP_EncodeBlock")->UseRealTime();

}  // namespace
