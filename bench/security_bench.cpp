// Encryption, digests and compression against the same calls of OpenSSL and zlib made directly, and identifiers against
// a loop over a table.

#include <benchmark/benchmark.h>

#include <openssl/evp.h>
#include <openssl/rand.h>
#include <zlib.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "tarnlib/md5.h"
#include "tarnlib/scompression.h"
#include "tarnlib/scrypt.h"
#include "tarnlib/sguid.h"

#include <windows.h>

using namespace TarnLibA500;
namespace fs = std::filesystem;

namespace {

using Bytes = std::vector<unsigned char>;

/// Bytes that nobody has written yet.
class Room {
  public:
    explicit Room(std::size_t size) : bytes_(new unsigned char[size]), size_(size) {}
    unsigned char* data() const { return bytes_.get(); }
    std::size_t size() const { return size_; }

  private:
    std::unique_ptr<unsigned char[]> bytes_;
    std::size_t size_;
};

constexpr std::size_t kIVBytes = 16;
constexpr std::size_t kDigestBytes = 32;
constexpr std::size_t kHeaderBytes = 4 + kIVBytes + kDigestBytes;
constexpr int kLevel = 6;

const SCrypt::Key kKey = {{1, 2, 3, 4, 5, 6, 7, 8}};

// Words in no order: compresses to a third, like text.
Bytes Sample(std::size_t size) {
    Bytes bytes;
    for (unsigned number = 1; bytes.size() < size; number = number * 1664525 + 1013904223) {
        const std::string word = "word" + std::to_string(number >> 22) + " ";
        bytes.insert(bytes.end(), word.begin(), word.end());
    }
    bytes.resize(size);
    return bytes;
}

template <class Container>
SSimpleBuffer BufferOf(const Container& bytes) {
    return SSimpleBuffer(bytes.data(), static_cast<std::uint32_t>(bytes.size()), false);
}

// ------------------------------------------------------------------------------------------------ encryption

const EVP_MD* Sha256() {
    static const EVP_MD* const digest = EVP_MD_fetch(nullptr, "SHA256", nullptr);
    return digest;
}

const EVP_CIPHER* Aes() {
    static const EVP_CIPHER* const cipher = EVP_CIPHER_fetch(nullptr, "AES-256-CTR", nullptr);
    return cipher;
}

void Digest(const unsigned char* iv, const unsigned char* clear, std::size_t count, unsigned char* digest) {
    EVP_MD_CTX* const context = EVP_MD_CTX_new();
    EVP_DigestInit_ex2(context, Sha256(), nullptr);
    EVP_DigestUpdate(context, iv, kIVBytes);
    EVP_DigestUpdate(context, clear, count);
    EVP_DigestFinal_ex(context, digest, nullptr);
    EVP_MD_CTX_free(context);
}

void Cipher(const unsigned char* iv, const unsigned char* in, std::size_t count, unsigned char* out,
            bool encrypts) {
    EVP_CIPHER_CTX* const context = EVP_CIPHER_CTX_new();
    int done = 0;
    EVP_CipherInit_ex2(context, Aes(), kKey.bytes, iv, encrypts ? 1 : 0, nullptr);
    EVP_CipherUpdate(context, out, &done, in, static_cast<int>(count));
    EVP_CipherFinal_ex(context, out + done, &done);
    EVP_CIPHER_CTX_free(context);
}

Room EncryptDirectly(const Bytes& clear) {
    Room out(clear.size() + kHeaderBytes);
    unsigned char* const iv = out.data() + 4;
    std::memcpy(out.data(), "\0\0\0\2", 4);
    RAND_bytes(iv, kIVBytes);
    Digest(iv, clear.data(), clear.size(), iv + kIVBytes);
    Cipher(iv, clear.data(), clear.size(), out.data() + kHeaderBytes, true);
    return out;
}

Room DecryptDirectly(const Room& hidden) {
    Room out(hidden.size() - kHeaderBytes);
    const unsigned char* const iv = hidden.data() + 4;
    unsigned char digest[kDigestBytes];
    Cipher(iv, hidden.data() + kHeaderBytes, out.size(), out.data(), false);
    Digest(iv, out.data(), out.size(), digest);
    if (std::memcmp(digest, iv + kIVBytes, sizeof digest) != 0) std::abort();
    return out;
}

void BM_Encrypt_bytes_ours(benchmark::State& state) {
    const SSimpleBuffer clear = BufferOf(Sample(static_cast<std::size_t>(state.range(0))));
    SSimpleBuffer hidden;
    for (auto _ : state) benchmark::DoNotOptimize(SCrypt().encrypt(clear, kKey, hidden));
}

void BM_Encrypt_bytes_openssl(benchmark::State& state) {
    const Bytes clear = Sample(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) benchmark::DoNotOptimize(EncryptDirectly(clear));
}

void BM_Decrypt_bytes_ours(benchmark::State& state) {
    const SSimpleBuffer hidden = BufferOf(EncryptDirectly(Sample(static_cast<std::size_t>(state.range(0)))));
    SSimpleBuffer clear;
    for (auto _ : state) benchmark::DoNotOptimize(SCrypt().decrypt(hidden, kKey, clear));
}

void BM_Decrypt_bytes_openssl(benchmark::State& state) {
    const Room hidden = EncryptDirectly(Sample(static_cast<std::size_t>(state.range(0))));
    for (auto _ : state) benchmark::DoNotOptimize(DecryptDirectly(hidden));
}

void BM_Encrypt_text_ours(benchmark::State& state) {
    const SAnsiString clear(std::string(static_cast<std::size_t>(state.range(0)), 'x').c_str());
    SAnsiString hidden;
    for (auto _ : state) benchmark::DoNotOptimize(SCrypt().encrypt(clear, kKey, hidden));
}

// ------------------------------------------------------------------------------------------------ digests

void BM_MD5_ours(benchmark::State& state) {
    const Bytes bytes = Sample(static_cast<std::size_t>(state.range(0)));
    unsigned char digest[16];
    for (auto _ : state) {
        MD5 md5;
        md5.Update(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
        md5.Finish(digest);
        benchmark::DoNotOptimize(digest);
    }
}

void BM_MD5_openssl(benchmark::State& state) {
    static const EVP_MD* const algorithm = EVP_MD_fetch(nullptr, "MD5", nullptr);
    const Bytes bytes = Sample(static_cast<std::size_t>(state.range(0)));
    unsigned char digest[16];
    for (auto _ : state) {
        EVP_Digest(bytes.data(), bytes.size(), digest, nullptr, algorithm, nullptr);
        benchmark::DoNotOptimize(digest);
    }
}

// ------------------------------------------------------------------------------------------------ compression

// Returns what was written.
uLongf CompressDirectly(const Bytes& bytes, const Room& out) {
    auto size = static_cast<uLongf>(out.size());
    compress2(out.data(), &size, bytes.data(), static_cast<uLong>(bytes.size()), kLevel);
    return size;
}

std::size_t Bound(const Bytes& bytes) {
    return compressBound(static_cast<uLong>(bytes.size()));
}

void BM_Compress_buffer_ours(benchmark::State& state) {
    const SSimpleBuffer bytes = BufferOf(Sample(static_cast<std::size_t>(state.range(0))));
    SSimpleBuffer block;
    for (auto _ : state) benchmark::DoNotOptimize(SCompression::compress_buffer(bytes, block, kLevel));
}

void BM_Compress_buffer_zlib(benchmark::State& state) {
    const Bytes bytes = Sample(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) benchmark::DoNotOptimize(CompressDirectly(bytes, Room(Bound(bytes))));
}

void BM_Decompress_buffer_ours(benchmark::State& state) {
    SSimpleBuffer block, bytes;
    SCompression::compress_buffer(BufferOf(Sample(static_cast<std::size_t>(state.range(0)))), block, kLevel);
    for (auto _ : state) benchmark::DoNotOptimize(SCompression::decompress_buffer(block, bytes));
}

void BM_Decompress_buffer_zlib(benchmark::State& state) {
    const Bytes bytes = Sample(static_cast<std::size_t>(state.range(0)));
    const Room block(Bound(bytes));
    const uLongf blockSize = CompressDirectly(bytes, block);
    for (auto _ : state) {
        const Room out(static_cast<std::size_t>(state.range(0)));
        auto size = static_cast<uLongf>(state.range(0));
        uncompress(out.data(), &size, block.data(), blockSize);
        benchmark::DoNotOptimize(out.data());
    }
}

class Files {
  public:
    Files()
        : folder_(fs::temp_directory_path() / ("tarnlib-bench-gz-" + std::to_string(GetCurrentProcessId()))) {
        fs::create_directories(folder_);
        const Bytes bytes = Sample(8 << 20);
        std::ofstream(source(), std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }
    ~Files() { fs::remove_all(folder_); }
    std::string source() const { return (folder_ / "source").string(); }
    std::string packed() const { return (folder_ / "packed.gz").string(); }

  private:
    fs::path folder_;
};

void BM_Compress_file_ours(benchmark::State& state) {
    const Files files;
    for (auto _ : state)
        benchmark::DoNotOptimize(
            SCompression::compress_file(files.source().c_str(), files.packed().c_str(), kLevel, 0, false));
    state.counters["bytes"] = static_cast<double>(fs::file_size(files.packed()));
}

void BM_Compress_file_zlib(benchmark::State& state) {
    const Files files;
    char piece[16384];
    for (auto _ : state) {
        std::FILE* const in = std::fopen(files.source().c_str(), "rb");
        gzFile out = gzopen(files.packed().c_str(), "wb6");
        for (std::size_t n = std::fread(piece, 1, sizeof piece, in); n != 0;
             n = std::fread(piece, 1, sizeof piece, in))
            gzwrite(out, piece, static_cast<unsigned>(n));
        gzclose(out);
        std::fclose(in);
    }
}

// ------------------------------------------------------------------------------------------------ identifiers

constexpr GUID kGuid = {0x00112233, 0x4455, 0x6677, {0x88, 0x99, 0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0xFF}};
constexpr char kSymbols[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_.";

void BM_Identifier_text_and_back_ours(benchmark::State& state) {
    SGUID id(kGuid);
    for (auto _ : state) {
        id = SGUID(id.ToString());
        benchmark::DoNotOptimize(id);
    }
}

void BM_Identifier_text_and_back_table(benchmark::State& state) {
    unsigned char values[256] = {};
    for (unsigned char i = 0; i < 64; ++i) values[static_cast<unsigned char>(kSymbols[i])] = i;
    unsigned char bytes[18] = {1};
    std::memcpy(bytes + 1, &kGuid, sizeof kGuid);
    for (auto _ : state) {
        std::string text;
        for (int i = 0; i < 18; i += 3) {
            const unsigned group = static_cast<unsigned>(bytes[i] << 16 | bytes[i + 1] << 8 | bytes[i + 2]);
            for (int shift = 18; shift >= 0; shift -= 6) text += kSymbols[group >> shift & 63];
        }
        for (int i = 0; i < 24; i += 4) {
            unsigned group = 0;
            for (int k = 0; k < 4; ++k)
                group =
                    group << 6 | values[static_cast<unsigned char>(text[static_cast<std::size_t>(i + k)])];
            for (int k = 0; k < 3; ++k)
                bytes[i / 4 * 3 + k] = static_cast<unsigned char>(group >> (16 - 8 * k));
        }
        benchmark::DoNotOptimize(bytes);
    }
}

}  // namespace

constexpr int kText = 64;
constexpr int kMebibyte = 1 << 20;

BENCHMARK(BM_Encrypt_bytes_ours)->Name("BM_Encrypt_bytes/ours")->Arg(kText)->Arg(kMebibyte);
BENCHMARK(BM_Encrypt_bytes_openssl)->Name("BM_Encrypt_bytes/OpenSSL")->Arg(kText)->Arg(kMebibyte);
BENCHMARK(BM_Decrypt_bytes_ours)->Name("BM_Decrypt_bytes/ours")->Arg(kText)->Arg(kMebibyte);
BENCHMARK(BM_Decrypt_bytes_openssl)->Name("BM_Decrypt_bytes/OpenSSL")->Arg(kText)->Arg(kMebibyte);
BENCHMARK(BM_Encrypt_text_ours)->Name("BM_Encrypt_text/ours")->Arg(kText);
BENCHMARK(BM_Encrypt_bytes_openssl)->Name("BM_Encrypt_text/OpenSSL")->Arg(kText);
BENCHMARK(BM_MD5_ours)->Name("BM_MD5/ours")->Arg(kText)->Arg(kMebibyte);
BENCHMARK(BM_MD5_openssl)->Name("BM_MD5/OpenSSL")->Arg(kText)->Arg(kMebibyte);
BENCHMARK(BM_Compress_buffer_ours)->Name("BM_Compress_buffer/ours")->Arg(1000)->Arg(kMebibyte);
BENCHMARK(BM_Compress_buffer_zlib)->Name("BM_Compress_buffer/zlib")->Arg(1000)->Arg(kMebibyte);
BENCHMARK(BM_Decompress_buffer_ours)->Name("BM_Decompress_buffer/ours")->Arg(1000)->Arg(kMebibyte);
BENCHMARK(BM_Decompress_buffer_zlib)->Name("BM_Decompress_buffer/zlib")->Arg(1000)->Arg(kMebibyte);
BENCHMARK(BM_Compress_file_ours)->Name("BM_Compress_file/ours");
BENCHMARK(BM_Compress_file_zlib)->Name("BM_Compress_file/zlib");
BENCHMARK(BM_Identifier_text_and_back_ours)->Name("BM_Identifier_text_and_back/ours");
BENCHMARK(BM_Identifier_text_and_back_table)->Name("BM_Identifier_text_and_back/table");
