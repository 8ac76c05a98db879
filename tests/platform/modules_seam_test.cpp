#include <gtest/gtest.h>

#include <algorithm>

#include "kcm/kcm.h"
#include "kcm/oscrypto.h"
#include "support/case_file.h"
#include "support/failing.h"
#include "support/file_bytes.h"
#include "support/hex_bytes.h"
#include "zqezlib/oszlib.h"
#include "zqezlib/zqezlib.h"

using namespace KCM400;
using namespace tarntest;

namespace {

const std::string kNone = "failed";

std::string Bytes(const std::string& hex) {
    return hex == kNone ? hex : FromHex(hex);
}

/// What an Encrypter or Decrypter makes of pieces of this size, with no more room than the result needs.
template <class Run>
std::string Through(const std::vector<std::string>& c, std::string in, unsigned piece, std::size_t room) {
    std::string key = Bytes(c[1]), iv = Bytes(c[2]), out(room, '\0');
    const CipherOptions options(static_cast<KCMAlg400::Cipher>(std::stoi(c[0])), Data(iv), Size(iv));
    Run run(Data(key), Size(key), options);
    unsigned done = 0, written = 0;
    for (unsigned i = 0; i < in.size() && written != kFailed; i += piece, done += written)
        written = run.update(Data(out) + done, Size(out) - done, Data(in) + i, std::min(piece, Size(in) - i));
    if (written == kFailed) return kNone;
    const unsigned last = run.finish(Data(out) + done, Size(out) - done);
    EXPECT_EQ(run.finish(Data(out), Size(out)), kFailed);
    return last <= run.getFinalOutputSize() && last != kFailed ? out.substr(0, done + last) : kNone;
}

/// In one call, and byte by byte.
std::string Digested(std::string text, KCMAlg400::Digest algorithm) {
    std::vector<unsigned char> whole;
    digest(whole, Data(text), Size(text), algorithm);
    std::string pieces(whole.size(), '\0');
    Digester digester(algorithm);
    digester.init();
    for (char& byte : text) digester.update(reinterpret_cast<unsigned char*>(&byte), 1);
    if (digester.finish(Data(pieces), Size(pieces)) != whole.size()) return kNone;
    return std::string(whole.begin(), whole.end()) == pieces ? pieces : kNone;
}

/// The room that is left tells how much was written.
int Expand(std::string block, std::string& room) {
    unsigned long size = Size(room);
    const int result = ZQ_uncompress(Data(room), &size, Data(block), Size(block));
    room.resize(size);
    return result;
}

bool WriteGzip(const std::string& name, const char* mode) {
    void* const file = ZQ_gzopen(name.c_str(), mode);
    const bool isWritten = ZQ_gzwrite(file, "abcdef", 6) == 6;
    return ZQ_gzclose(file) == 0 && isWritten;
}

/// "results of reads, what was read, result of closing"
std::string ReadGzip(const std::string& name) {
    void* const file = ZQ_gzopen(name.c_str(), "rb");
    std::string results, text;
    for (int count = 1; count > 0;) {
        char bytes[4];
        count = ZQ_gzread(file, bytes, sizeof bytes);
        results += std::to_string(count) + " ";
        if (count > 0) text.append(bytes, static_cast<unsigned>(count));
    }
    return results + text + " " + std::to_string(ZQ_gzclose(file));
}

/// Whichever call fails, the work says so by returning false; and the next time all is well.
template <class Calls, class Work>
void ExpectTold(const char* what, Work work) {
    bool isDone = false;
    unsigned long nth = 1;
    for (; FailsAt<Calls>(nth, ENOSPC, [&] { isDone = work(); }); ++nth) EXPECT_FALSE(isDone) << what << nth;
    EXPECT_TRUE(isDone && nth > 1) << what;
}

}  // namespace

TEST(Modules, DigestsAndBase64AsPublished) {
    for (const auto& c : ReadCases("platform/kcm_digests.txt")) {
        std::string text = c[1], coded;
        KCMUtility400::base64encodeBinaryToText(coded, Data(text), Size(text));
        EXPECT_EQ(c[0].empty() ? coded : Digested(text, static_cast<KCMAlg400::Digest>(std::stoi(c[0]))),
                  c[0].empty() ? c[2] : Bytes(c[2]));
        EXPECT_EQ(KCMUtility400::base64Into(coded.data(), Size(coded), Data(text), Size(text)), kFailed);
    }
}

TEST(Modules, CiphersAsPublishedInPiecesOfEverySize) {
    for (const auto& c : ReadCases("platform/kcm_ciphers.txt")) {
        const std::string clear = Bytes(c[3]), hidden = Bytes(c[4]);
        for (unsigned piece = 1; piece <= std::max(clear.size(), hidden.size()); ++piece) {
            if (clear != kNone) EXPECT_EQ(Through<Encrypter>(c, clear, piece, hidden.size()), hidden) << c[4];
            if (hidden != kNone) EXPECT_EQ(Through<Decrypter>(c, hidden, piece, clear.size()), clear) << c[3];
            if (clear.empty() || clear == kNone || hidden == kNone) continue;
            EXPECT_EQ(Through<Encrypter>(c, clear, piece, hidden.size() - 1), kNone) << c[4];
            EXPECT_EQ(Through<Decrypter>(c, hidden, piece, clear.size() - 1), kNone) << c[3];
        }
        EXPECT_EQ(ERR_peek_error(), 0u);  // a TLS call would take it for its own
    }
}

TEST(Modules, ToldWhichCallOfOpenSslFailed) {
    const auto c = ReadCases("platform/kcm_ciphers.txt")[0];
    ExpectTold<oscrypto::Calls>("encrypt", [&] { return Through<Encrypter>(c, "text", 2, 4) != kNone; });
    ExpectTold<oscrypto::Calls>("digest", [] { return Digested("text", KCMAlg400::SHA256) != kNone; });
    ExpectTold<oscrypto::Calls>("random", [] {
        unsigned char bytes[32] = {1};
        const bool isDone = random(bytes, sizeof bytes);
        EXPECT_EQ(isDone,
                  std::any_of(bytes, bytes + sizeof bytes, [](unsigned char one) { return one != 0; }));
        return isDone;
    });
}

TEST(Modules, BlocksAreThoseOfOthers) {
    for (const auto& c : ReadCases("platform/zqezlib_blocks.txt")) {
        std::string text = c[0], block(std::stoul(c[3]), '\0'), same(text.size(), '\0');
        unsigned long size = Size(block);
        ASSERT_EQ(ZQ_compress3(Data(block), &size, Data(text), Size(text), std::stoi(c[1]), std::stoi(c[2])),
                  std::stoi(c[4]));
        if (c[4] != "0") continue;
        EXPECT_EQ(block.substr(0, size), Bytes(c[5])) << c[1] << c[2];
        EXPECT_TRUE(Expand(block, same) == 0 && same == text);
        block.back() ^= 1;
        EXPECT_EQ(Expand(block, same), -3);
    }
    EXPECT_EQ(ZQ_crc32(0, reinterpret_cast<const unsigned char*>("123456789"), 9), 0xCBF43926u);
}

TEST(Modules, GzipFilesUnderAnyName) {
    const std::filesystem::path folder = MakeScratchFolder("modules");
    const std::filesystem::path file =
        LR"(\\?\)" + folder.wstring() + L"\\\xE9\x6F22" + std::wstring(200, L'x');
    const std::string name = reinterpret_cast<const char*>(file.u8string().c_str());
    for (const char* mode : {"", "b", "rw", "r+", "rT"})
        EXPECT_EQ(ZQ_gzopen(name.c_str(), mode), nullptr) << mode;
    EXPECT_FALSE(WriteGzip(name + "\xE9", "wb"));
    EXPECT_TRUE(std::filesystem::is_empty(folder));
    EXPECT_TRUE(WriteGzip(name, "wxb9") && WriteGzip(name, "ab1h") && !WriteGzip(name, "wxb"));
    EXPECT_EQ(ReadGzip(name), "4 4 4 0 abcdefabcdef 0");
    std::filesystem::resize_file(file, std::filesystem::file_size(file) - 1);
    EXPECT_EQ(ReadGzip(name), "4 4 4 0 abcdefabcdef -5");
    ExpectTold<oszlib::Calls>("write", [&] { return WriteGzip(name, "wb"); });
    ExpectTold<oszlib::Calls>("read", [&] { return ReadGzip(name) == "4 2 0 abcdef 0"; });
    void* const opened = ZQ_gzopen(name.c_str(), "ab");
    EXPECT_FALSE(WriteGzip(name, "wb"));  // not while another one writes
    EXPECT_EQ(ZQ_gzclose(opened), 0);
    std::filesystem::remove_all(folder);
}
