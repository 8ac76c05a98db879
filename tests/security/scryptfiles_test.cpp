#include <gtest/gtest.h>

#include <algorithm>

#include "kcm/kcmalg.h"
#include "support/case_file.h"
#include "support/file_bytes.h"
#include "support/hex_bytes.h"
#include "tarnlib/scrypt.h"

using namespace TarnLibA500;
using namespace tarntest;
namespace fs = std::filesystem;

namespace {

struct ScryptFiles : testing::Test {
    ~ScryptFiles() override { fs::remove_all(folder); }
    SAnsiString path(const char* name) const { return Text(folder / name); }
    const fs::path folder = MakeScratchFolder("scryptfiles");
    const SCrypt crypt = {};
    SCrypt::Key key = {{0,  1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12, 13, 14, 15,
                        16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30, 31}};
};

}  // namespace

TEST_F(ScryptFiles, AreEncryptedAsMemoryIs) {
    for (const std::size_t size : {0, 1, 65535, 65536, 65537, 300001}) {
        std::string clear(size, 'x');
        for (std::size_t i = 0; i < size; i += 7) clear[i] = static_cast<char>(i / 7);
        WriteBytes(folder / "clear", clear);
        EXPECT_EQ(crypt.encryptFile(path("clear"), path("hidden"), key), SCrypt::success);
        SSimpleBuffer bytes, decrypted;
        bytes.loadFromFile(path("hidden"));
        int version = 0;
        EXPECT_EQ(crypt.decrypt(bytes, key, decrypted, &version), SCrypt::success);
        EXPECT_EQ(version, 2);
        EXPECT_EQ(ReadBytes(folder / "hidden").size(), size + 52);
        EXPECT_EQ(
            std::string(reinterpret_cast<const char*>(decrypted.getBufferProtected()), decrypted.getNBytes()),
            clear);
        EXPECT_EQ(crypt.decryptFile(path("hidden"), path("hidden"), key), SCrypt::success);  // into itself
        EXPECT_EQ(ReadBytes(folder / "hidden"), clear);
        unsigned char digest[32];
        EXPECT_EQ(crypt.sha256File(path("clear"), digest), SCrypt::success);
        if (size == 1)
            EXPECT_EQ(ToHex(digest, 32), "6e340b9cffb37a989ca544e6bb780a2c78901d3fb33738768511a30617afa01d");
    }
}

TEST_F(ScryptFiles, OfOtherVersionsAreRead) {
    for (const auto& c : ReadCases("security/golden_texts.txt")) {
        WriteBytes(folder / "hidden", FromHex(c[2]));
        EXPECT_EQ(crypt.decryptFile(path("hidden"), path("clear"), key), SCrypt::success) << c[2];
        EXPECT_EQ(ReadBytes(folder / "clear"), c[3]);
    }
}
