#include <gtest/gtest.h>

#include <algorithm>

#include "kcm/kcm.h"
#include "kcm/oscrypto.h"
#include "support/failing.h"
#include "support/file_bytes.h"
#include "zqezlib/oszlib.h"
#include "zqezlib/zqezlib.h"

namespace {

/// Whichever call fails, the work, which returns true for a success, says so; and the next time all is well.
template <class Calls, class Work>
void ExpectTold(const char* what, Work work) {
    bool isDone = false;
    unsigned long nth = 1;
    for (; tarntest::FailsAt<Calls>(nth, ENOSPC, [&] { isDone = work(); }); ++nth)
        EXPECT_FALSE(isDone) << what << nth;
    EXPECT_TRUE(isDone && nth > 1) << what;
}

template <class Run>
bool Ciphers(KCMAlg400::Cipher cipher, const unsigned char* in, unsigned char* out) {
    const unsigned char bytes[32] = {1};
    Run run(bytes, sizeof bytes, KCM400::CipherOptions(cipher, bytes, KCM400::getCipherIVSize(cipher)));
    const unsigned done = run.update(out, 64, in, 16), last = run.finish(out, 64);
    return done != KCM400::kFailed && last != KCM400::kFailed;
}

}  // namespace

TEST(Modules, SayWhichCallOfOpenSslFailed) {
    using oscrypto = KCM400::oscrypto::Calls;
    unsigned char bytes[64] = {1}, hidden[64];
    ExpectTold<oscrypto>("random", [&] {
        const bool isDone = KCM400::random(bytes, sizeof bytes);
        EXPECT_EQ(isDone,
                  std::any_of(bytes, bytes + sizeof bytes, [](unsigned char one) { return one != 0; }));
        return isDone;
    });
    ExpectTold<oscrypto>("digest",
                         [&] { return KCM400::digestInto(hidden, 64, bytes, 64, KCMAlg400::SHA256) == 32; });
    KCM400::Digester digester(KCMAlg400::SHA1);
    digester.init();  // so that it has its context, and "digester" leaves none open
    ExpectTold<oscrypto>("digester", [&] {
        digester.init();
        digester.update(bytes, sizeof bytes);
        return digester.finish(hidden, sizeof hidden) == 20;
    });
    ExpectTold<oscrypto>("ciphers", [&] {
        return Ciphers<KCM400::Encrypter>(KCMAlg400::AES256_CTR, bytes, hidden) &&
               Ciphers<KCM400::Decrypter>(KCMAlg400::AES256_CTR, bytes, hidden);
    });
    EXPECT_FALSE(Ciphers<KCM400::Decrypter>(KCMAlg400::DES3_CBC, bytes, hidden));  // there is no padding
    EXPECT_EQ(ERR_peek_error(), 0u);
}

TEST(Modules, SayWhichCallOfZlibFailed) {
    const auto folder = tarntest::MakeScratchFolder("modules");
    const std::string name = (folder / "a.gz").string();
    unsigned char text[8] = {1}, block[64];
    ExpectTold<oszlib::Calls>("write", [&] {
        void* const file = ZQ_gzopen(name.c_str(), "wb");
        const bool isWritten = ZQ_gzwrite(file, text, sizeof text) == sizeof text;
        return ZQ_gzclose(file) == 0 && isWritten;
    });
    ExpectTold<oszlib::Calls>("read", [&] {
        void* const file = ZQ_gzopen(name.c_str(), "rb");
        const bool isRead = ZQ_gzread(file, block, sizeof block) == sizeof text;
        return ZQ_gzclose(file) == 0 && isRead;
    });
    ExpectTold<oszlib::Calls>("block", [&] {
        unsigned long size = sizeof block, expanded = sizeof text;
        return ZQ_compress3(block, &size, text, sizeof text, 9, 0) == 0 &&
               ZQ_uncompress(text, &expanded, block, size) == 0;
    });
    std::filesystem::remove_all(folder);
}
