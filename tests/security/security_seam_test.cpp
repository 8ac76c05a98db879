#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

#include "files/osfiles.h"
#include "kcm/kcmalg.h"
#include "kcm/oscrypto.h"
#include "security/secretstring.h"
#include "support/alloc_hooks.h"
#include "support/assert_recorder.h"
#include "support/failing.h"
#include "support/file_bytes.h"
#include "support/print_strings.h"
#include "system/identifiers/osguid.h"
#include "tarnlib/scompression.h"
#include "tarnlib/scrypt.h"
#include "tarnlib/sfilesys.h"
#include "tarnlib/sguid.h"
#include "tarnlib/sha256.h"

using namespace TarnLibA500;
using namespace tarntest;
using Status = SCrypt::Status;
namespace fs = std::filesystem;

namespace {

constexpr SCrypt crypt;
const SCrypt::Key kKey = {{1, 2, 3}};

// Without success the outputs have nothing in them.
Status EncryptAndDecrypt() {
    SAnsiString text = "old", again = "old";
    const Status encrypted = crypt.encrypt(SAnsiString("a secret"), kKey, text);
    EXPECT_EQ(encrypted != SCrypt::success, text.isEmpty());
    if (encrypted != SCrypt::success) return encrypted;
    const Status decrypted = crypt.decrypt(text, kKey, again);
    EXPECT_EQ(again == "a secret", decrypted == SCrypt::success);
    EXPECT_EQ(again.isEmpty(), decrypted != SCrypt::success);
    return decrypted;
}

Status MakeKeys() {
    SCrypt::Key key = kKey;
    SAnsiString text;
    Status status = crypt.makeKey("a phrase that is long enough", key, KCMAlg400::SHA1);
    if (status == SCrypt::success) status = crypt.randomKey(key);
    if (status == SCrypt::success) status = crypt.makeBase64Digest("text", text, false);
    if (status == SCrypt::success)
        status = SCrypt::toBinary("AAECAwQFBgcICQoLDA0ODxAREhMUFRYXGBkaGxwdHh8", key);
    return status;
}

// Fails every call of a kind in turn. A failure is noLibrary and nothing else.
template <class Calls>
void FailEach(const std::function<Status()>& work) {
    work();  // what is made once is made
    unsigned long nth = 1;
    Status status = SCrypt::success;
    const auto tried = [&] {
        try {
            status = work();
        } catch (const std::bad_alloc&) {  // a text of the test itself
            status = SCrypt::noLibrary;
        }
    };
    for (; FailsAt<Calls>(nth, 1, tried); ++nth) ASSERT_EQ(status, SCrypt::noLibrary) << nth;
    EXPECT_EQ(status, SCrypt::success);
    EXPECT_GT(nth, 1U);
}

constexpr char kMask = 0x55;

// A character of a secret that stands nowhere but where the library gets it.
char SecretAt(int i) {
    return static_cast<char>('a' + i * i % 23);
}

// How often the memory of the process has a part of the secret, with characters of a size.
int CopiesOfSecret(int unitBytes) {
    std::string masked;
    for (int i = 8; i < 24; ++i)
        masked += static_cast<char>(SecretAt(i) ^ kMask) + std::string(unitBytes - 1U, kMask);
    const auto isSecret = [](char byte, char pattern) { return byte == (pattern ^ kMask); };
    int copies = 0;
    MEMORY_BASIC_INFORMATION part;
    for (const char* at = nullptr; VirtualQuery(at, &part, sizeof part) != 0; at += part.RegionSize) {
        at = static_cast<const char*>(part.BaseAddress);
        if (part.State != MEM_COMMIT || part.Type != MEM_PRIVATE || part.Protect != PAGE_READWRITE) continue;
        const char* const end = at + part.RegionSize;
        for (const char* found = at;
             (found = std::search(found, end, masked.begin(), masked.end(), isSecret)) != end; ++found)
            ++copies;
    }
    return copies;
}

}  // namespace

TEST(SecurityFaults, EveryFailureIsAStatus) {
    for (const auto& work : {EncryptAndDecrypt, MakeKeys}) {
        FailEach<KCM400::oscrypto::Calls>(work);
        FailEach<osmemory::Calls>(work);
    }
    FailEach<KCM400::oscrypto::Calls>([] {
        unsigned char digest[32];
        SHA256 sha;
        sha.Update("x", 1);
        return sha.Finish(digest) ? SCrypt::success : SCrypt::noLibrary;
    });
}

TEST(SecurityFaults, FilesAreWholeOrAsTheyWere) {
    const fs::path folder = MakeScratchFolder("securityfaults");
    const SAnsiString text = Text(folder / "text"), kept = Text(folder / "kept"),
                      made = Text(folder / "made");
    const std::string content(100000, 'x');
    WriteBytes(folder / "text", content);
    const auto encrypt = [&] { return int{crypt.encryptFile(text, kept, kKey)}; };
    const auto decrypt = [&] { return int{crypt.decryptFile(made, kept, kKey)}; };
    const auto compress = [&] { return SCompression::compress_file(text, kept, 1, 0, false); };
    const auto expand = [&] { return SCompression::decompress_file(made, kept, false); };
    const struct {
        std::function<int()> make, use;
    } cases[] = {{[] { return 0; }, encrypt},
                 {[&] { return int{crypt.encryptFile(text, made, kKey)}; }, decrypt},
                 {[] { return 0; }, compress},
                 {[&] { return SCompression::compress_file(text, made, 1, 0, false); }, expand}};
    for (const auto& c : cases) {
        EXPECT_EQ(c.make(), 0);
        for (unsigned long nth = 1;; ++nth) {
            WriteBytes(folder / "kept", "kept");
            int code = 0;
            std::string failure;
            const bool failed = FailsAt<osfiles::Calls>(nth, ERROR_DISK_FULL,
                                                        [&] { failure = Failure([&] { code = c.use(); }); });
            const bool isDone = failure.empty() && code == 0;
            EXPECT_EQ(ReadBytes(folder / "kept") != "kept", isDone) << nth << failure;
            // Of what was replaced the backup may be left, when that is the failure.
            std::vector<fs::path> left;
            for (const auto& entry : fs::directory_iterator(folder)) left.push_back(entry.path());
            for (const fs::path& path : left) {
                if (path.filename().string()[0] != '~') continue;
                EXPECT_TRUE(isDone) << nth << failure;
                fs::remove(path);
            }
            if (!failed) break;
        }
    }
    const auto entries = [&] { return SFileSys::countAll(Text(folder)); };
    const unsigned before = entries();
    for (unsigned long nth = 1; tarntest::FailsAt(nth, [&] { crypt.encryptFile(text, kept, kKey); }); ++nth)
        EXPECT_EQ(entries(), before) << nth;
    fs::remove_all(folder);
}

TEST(SecurityFaults, AllocatesLittle) {
    const SAnsiString clear(std::string(64, 'x').c_str()), id = SGUID::Make3rdPartyGUID("x").ToString();
    SAnsiString hidden, again, text;
    crypt.encrypt(clear, kKey, hidden);
    AllocationCount encrypting;
    EXPECT_EQ(crypt.encrypt(clear, kKey, hidden), SCrypt::success);
    EXPECT_LE(encrypting.Taken(), 1U);
    AllocationCount decrypting;
    EXPECT_EQ(crypt.decrypt(hidden, kKey, again), SCrypt::success);
    EXPECT_LE(decrypting.Taken(), 3U);
    AllocationCount identifier;
    text = SGUID(id).ToString();
    EXPECT_EQ(identifier.Taken(), 1U);
}

TEST(SecurityFaults, NothingOfSecretsStaysInMemory) {
    for (const int length : {40, 400}) {
        SAnsiString hidden, text;
        SCrypt::Key key;
        text.setSize(500);
        for (int i = 0; i < length; ++i) text.concat(SecretAt(i));
        EXPECT_GE(CopiesOfSecret(1), 1);
        const SecretString clear(std::move(text));
        EXPECT_EQ(crypt.encrypt(clear, kKey, hidden), SCrypt::success);
        EXPECT_EQ(crypt.makeKey(clear.getString(), key, KCMAlg400::SHA1), SCrypt::success);
        SAnsiString again;
        EXPECT_EQ(crypt.decrypt(hidden, kKey, again), SCrypt::success);
        const SecretString decrypted(std::move(again));
    }
    EXPECT_EQ(CopiesOfSecret(1) + CopiesOfSecret(2), 0);
}

TEST(SecurityFaults, IdentifiersWithoutTheSystemsGenerator) {
    AssertRecorder recorder;
    SGUID id;
    osguid::Calls::Fail(1, 1);
    const SAnsiString text = id.Create().ToString();
    EXPECT_NE(recorder.last().find("Locally Uniq Ids Generated Only"), std::string::npos);
    EXPECT_EQ(text.getLength(), 44U);
    EXPECT_THROW(SGUID{text}, SGUID::Error_InvalidString);
    EXPECT_TRUE(SGUID::ExtendGUID(id, 1).IsNULL());
    osguid::Calls::Fail(1, 1);
    KCM400::oscrypto::Calls::Fail(1, 1);
    EXPECT_THROW(id.Create(), SGUID::Error_GeneratingGUID);
    EXPECT_EQ(id.ToString(), text);
    osguid::Calls::Fail(0, 0);
    KCM400::oscrypto::Calls::Fail(0, 0);
}
