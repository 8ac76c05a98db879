#include "kcm/kcm.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "support/case_file.h"
#include "support/hex_bytes.h"

using namespace KCM400;
using namespace tarntest;

namespace {

const std::string kNothing = "failed";

std::string Bytes(const std::string& hex) {
    return hex == kNothing ? hex : FromHex(hex);
}

// What comes out of an Encrypter or Decrypter, in pieces of this size, with no more room than the result needs.
template <class Run>
std::string Through(const std::vector<std::string>& c, std::string in, unsigned piece, std::size_t room) {
    std::string key = Bytes(c[1]), iv = Bytes(c[2]), out(room, '\0');
    const auto cipher = static_cast<KCMAlg400::Cipher>(std::stoi(c[0]));
    Run run(Data(key), Size(key), CipherOptions(cipher, Data(iv), Size(iv)));
    unsigned done = 0;
    for (unsigned i = 0; i < in.size(); i += piece) {
        const unsigned written =
            run.update(Data(out) + done, Size(out) - done, Data(in) + i, std::min(piece, Size(in) - i));
        if (written == kFailed) return kNothing;
        done += written;
    }
    const unsigned most = run.getFinalOutputSize();
    const unsigned last = run.finish(Data(out) + done, Size(out) - done);
    if (last == kFailed) return kNothing;
    EXPECT_LE(last, most);
    EXPECT_EQ(run.finish(Data(out), Size(out)), kFailed);
    return out.substr(0, done + last);
}

std::string Digested(std::string text, const std::string& number) {
    const auto digest = static_cast<KCMAlg400::Digest>(std::stoi(number));
    std::vector<unsigned char> whole;
    KCM400::digest(whole, Data(text), Size(text), digest);
    Digester digester(digest);
    for (int round = 0; round < 2; ++round) {  // the first one is forgotten
        digester.init();
        for (char& byte : text) digester.update(reinterpret_cast<unsigned char*>(&byte), 1);
    }
    unsigned char pieces[32];
    if (digester.finish(pieces, sizeof pieces) != whole.size()) return whole.empty() ? kNothing : "unlike";
    EXPECT_TRUE(std::equal(whole.begin(), whole.end(), pieces));
    EXPECT_EQ(digester.finish(pieces, sizeof pieces), kFailed);
    EXPECT_EQ(digestInto(pieces, getDigestSize(digest) - 1, Data(text), Size(text), digest), kFailed);
    return {whole.begin(), whole.end()};
}

}  // namespace

TEST(Kcm, PublishedDigestsAndBase64) {
    for (const auto& c : ReadCases("platform/kcm_digests.txt")) {
        std::string text = c[1], coded;
        if (!c[0].empty()) {
            EXPECT_EQ(Digested(text, c[0]), Bytes(c[2])) << c[0] << text;
        } else {
            KCMUtility400::base64encodeBinaryToText(coded, Data(text), Size(text));
            EXPECT_EQ(coded, c[2]);
            EXPECT_EQ(KCMUtility400::base64Into(coded.data(), Size(coded), Data(text), Size(text)), kFailed);
        }
    }
}

TEST(Kcm, PublishedCiphersInPiecesOfEverySize) {
    for (const auto& c : ReadCases("platform/kcm_ciphers.txt")) {
        const std::string clear = Bytes(c[3]), hidden = Bytes(c[4]);
        for (unsigned piece = 1; piece <= std::max(clear.size(), hidden.size()); ++piece) {
            if (clear != kNothing)
                EXPECT_EQ(Through<Encrypter>(c, clear, piece, hidden.size()), hidden) << c[4];
            if (hidden != kNothing)
                EXPECT_EQ(Through<Decrypter>(c, hidden, piece, clear.size()), clear) << c[3];
            if (clear.empty() || clear == kNothing || hidden == kNothing) continue;
            EXPECT_EQ(Through<Encrypter>(c, clear, piece, hidden.size() - 1), kNothing) << c[4];
            EXPECT_EQ(Through<Decrypter>(c, hidden, piece, clear.size() - 1), kNothing) << c[3];
        }
    }
}

TEST(Kcm, RandomBytesDiffer) {
    unsigned char first[32] = {}, second[32] = {};
    EXPECT_TRUE(random(first, sizeof first) && random(second, sizeof second) && random(nullptr, 0));
    EXPECT_FALSE(std::equal(first, first + sizeof first, second));
    EXPECT_FALSE(random(nullptr, 1));
}
