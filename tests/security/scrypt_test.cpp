#include "tarnlib/scrypt.h"

#include <gtest/gtest.h>

#include <atomic>
#include <random>
#include <thread>
#include <vector>

#include "kcm/kcmalg.h"
#include "support/assert_recorder.h"
#include "support/calls.h"
#include "support/file_bytes.h"
#include "support/hex_bytes.h"
#include "support/locale_scope.h"
#include "tarnlib/encryptionkeyfactory.h"
#include "tarnlib/md5.h"
#include "tarnlib/scompression.h"
#include "tarnlib/sguid.h"
#include "tarnlib/strongencryption.h"

using namespace TarnLibA500;
using namespace tarntest;
using Status = SCrypt::Status;
using Array = SIArray<unsigned char>;

namespace {

const SCrypt crypt;

template <class AnyKey = SCrypt::Key>
AnyKey KeyOf(const std::string& hex) {
    AnyKey key = {};
    const std::string bytes = FromHex(hex);
    std::copy(bytes.begin(), bytes.end(), key.bytes);
    return key;
}

const SCrypt::Key kKey = KeyOf("000102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f");
const SCrypt::Key kWrongKey = KeyOf("020102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f");

Array ArrayOf(const std::string& bytes) {
    Array array;
    for (const char byte : bytes) array.Add(static_cast<unsigned char>(byte));
    return array;
}

SSimpleBuffer BufferOf(const std::string& bytes) {
    SSimpleBuffer buffer;
    buffer.append(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
    return buffer;
}

std::string BytesOf(const Array& array) {
    return {array.begin(), array.end()};
}

std::string BytesOf(const SSimpleBuffer& buffer) {
    return {reinterpret_cast<const char*>(buffer.getBufferProtected()), buffer.getNBytes()};
}

SAnsiString TextOf(const std::string& text) {
    return SAnsiString(text.data(), static_cast<std::uint32_t>(text.size()));
}

SAnsiString Hex(const void* bytes, std::size_t count) {
    return ToHex(static_cast<const unsigned char*>(bytes), count).c_str();
}

// A result, with the status in front when that says no.
SAnsiString With(Status status, const void* bytes, std::size_t count) {
    SAnsiString text;
    if (status != SCrypt::success) text << "status " << status << " ";
    return text + Hex(bytes, count);
}

std::uint32_t Natural(const SAnsiString& digits) {
    return static_cast<std::uint32_t>(std::stoul(digits.getString()));
}

SAnsiString SizeOrStatus(Status (*sizeOf)(std::uint32_t, int, std::uint32_t&), const Arguments& a) {
    std::uint32_t size = 1;
    const Status status = sizeOf(Natural(a[0]), std::stoi(a[1].getString()), size);
    return status == SCrypt::success ? Number(size) : SAnsiString("status ") + Number(status);
}

SAnsiString WideMd5(const SAnsiString& utf8, bool asUtf8) {
    SWCharString wide;
    wide.fromUTF8(utf8.getString());
    unsigned char digest[16];
    MD5::FromString(wide.getString(), digest, asUtf8);
    return MD5::DigestToString(digest);
}

unsigned char kSalt[16] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};

const Calls kCalls = {
    {"crypttext bytes", [](const Arguments& a) { return SizeOrStatus(&SCrypt::getCrypttextNumBytes, a); }},
    {"cleartext bytes", [](const Arguments& a) { return SizeOrStatus(&SCrypt::getCleartextNumBytes, a); }},
    {"text room", [](const Arguments& a) { return Number(SCrypt::getToTextSize(Natural(a[0]))); }},
    {"key",
     [](const Arguments& a) {
         SCrypt::Key key = kKey;
         const auto digest = static_cast<KCMAlg400::Digest>(std::stoi(a[1].getString()));
         return With(crypt.makeKey(a[0].getString(), key, digest), key.bytes, sizeof key);
     }},
    {"old key",
     [](const Arguments& a) {
         SCrypt::OldKey key = {};
         return With(crypt.makeKey(a[0].getString(), key), key.bytes, sizeof key);
     }},
    {"base64 digest",
     [](const Arguments& a) {
         SAnsiString result;
         EXPECT_EQ(crypt.makeBase64Digest(a[0], result, false), SCrypt::success);
         return result;
     }},
    {"salted digest",
     [](const Arguments& a) {
         unsigned char digest[32];
         EXPECT_EQ(crypt.makeDigest(BufferOf(FromHex(a[0].getString())), kSalt, digest), SCrypt::success);
         return Hex(digest, 32);
     }},
    {"key as text", [](const Arguments& a) { return SCrypt::toText(KeyOf(a[0].getString())); }},
    {"key from text",
     [](const Arguments& a) {
         SCrypt::Key key = kKey;
         return With(SCrypt::toBinary(a[0], key), key.bytes, sizeof key);
     }},
    {"bytes as text", [](const Arguments& a) { return SCrypt::toText(ArrayOf(FromHex(a[0].getString()))); }},
    {"bytes from text",
     [](const Arguments& a) {
         Array bytes = ArrayOf("old");
         const Status status = SCrypt::toBinary(a[0], bytes);
         return With(status, bytes.Data(), bytes.GetSize());
     }},
    {"version",
     [](const Arguments& a) { return Number(crypt.getHeaderVersion(ArrayOf(FromHex(a[0].getString())))); }},
    {"version of text", [](const Arguments& a) { return Number(crypt.getHeaderVersion(a[0])); }},
    {"md5",
     [](const Arguments& a) {
         unsigned char digest[16];
         MD5::FromString(a[0].getString(), digest);
         return MD5::DigestToString(digest);
     }},
    {"wide md5", [](const Arguments& a) { return WideMd5(a[0], false); }},
    {"wide md5 utf8", [](const Arguments& a) { return WideMd5(a[0], true); }},
};

// What comes of decrypting, in all forms at once: the status, the version, and the bytes.
std::string Decrypted(const std::string& cipher, const SCrypt::Key& key) {
    Array array = ArrayOf(cipher);
    SSimpleBuffer buffer = BufferOf(cipher);
    SAnsiString text = "old", textOfArray = "old", textOfText = "old";
    int version = 9, versionOfBuffer = 9;
    const Status status = crypt.decrypt(BufferOf(cipher), key, text);
    EXPECT_EQ(crypt.decrypt(array, key, textOfArray), status);
    EXPECT_EQ(crypt.decrypt(SCrypt::toText(array), key, textOfText), status);
    EXPECT_EQ(crypt.decrypt(array, key, array, &version), status);  // into the source itself
    EXPECT_EQ(crypt.decrypt(buffer, key, buffer, &versionOfBuffer), status);
    EXPECT_EQ(BytesOf(array), BytesOf(buffer));
    EXPECT_EQ(version, versionOfBuffer);
    EXPECT_EQ(text, textOfArray);
    EXPECT_EQ(text, textOfText);
    if (status != SCrypt::success) EXPECT_TRUE(text.isEmpty());
    return std::to_string(status) + " " + std::to_string(version) + " " + BytesOf(buffer);
}

std::string Failed(Status status, int version, std::size_t zeros) {
    return std::to_string(status) + " " + std::to_string(version) + " " + std::string(zeros, '\0');
}

std::string Encrypted(const std::string& clear) {
    SSimpleBuffer buffer = BufferOf(clear);
    EXPECT_EQ(crypt.encrypt(buffer, kKey, buffer), SCrypt::success);
    return BytesOf(buffer);
}

}  // namespace

TEST(Scrypt, SizesKeysDigestsAndTexts) {
    const LocaleScope locale(kLocale1252);
    ExpectCalls("security/scrypt_calls.txt", kCalls);
}

TEST(Scrypt, DecryptsWhatOtherVersionsWrote) {
    const LocaleScope locale(kLocale1252);
    for (const auto& c : ReadCases("security/golden_texts.txt")) {
        const std::string cipher = FromHex(c[2]);
        EXPECT_EQ(crypt.getHeaderVersion(ArrayOf(cipher)), std::stoi(c[0]));
        EXPECT_EQ(Decrypted(cipher, kKey), "0 " + c[1] + " " + c[3]) << c[2];
        const std::size_t header = c[0] == "2" ? 52 : c[0] == "1" ? 32 : 28;
        if (cipher.size() == 52) continue;  // the digest of no bytes is right with every key
        EXPECT_EQ(Decrypted(cipher, kWrongKey),
                  Failed(SCrypt::mismatch, std::stoi(c[0]), cipher.size() - header));
        EXPECT_EQ(Decrypted(cipher, {}), Failed(SCrypt::blankKey, std::stoi(c[0]), cipher.size() - header));
    }
}

TEST(Scrypt, EncryptsEveryForm) {
    const LocaleScope locale(kLocale1252);
    const std::string text("Zw\xF6lf \0 Boxk\xE4mpfer?", 18), utf8("Zw\xC3\xB6lf \0 Boxk\xC3\xA4mpfer?", 20);
    Array array;
    SSimpleBuffer buffer;
    SAnsiString hidden, clear;
    EXPECT_EQ(crypt.encrypt(TextOf(text), kKey, array), SCrypt::success);
    EXPECT_EQ(crypt.encrypt(TextOf(text), kKey, buffer), SCrypt::success);
    EXPECT_EQ(crypt.encrypt(TextOf(text), kKey, hidden), SCrypt::success);
    EXPECT_EQ(Decrypted(BytesOf(array), kKey), "0 2 " + utf8);
    EXPECT_EQ(Decrypted(BytesOf(buffer), kKey), "0 2 " + utf8);
    EXPECT_EQ(crypt.decrypt(hidden, kKey, clear), SCrypt::success);
    EXPECT_EQ(clear, TextOf(text));
    EXPECT_EQ(crypt.encrypt(array, kKey, array), SCrypt::success);
    EXPECT_EQ(array.GetSize(), utf8.size() + 2 * 52);
    EXPECT_EQ(Encrypted("").size(), 52U);
    EXPECT_EQ(Encrypted("x").substr(0, 4), std::string("\0\0\0\2", 4));
    EXPECT_NE(Encrypted("x").substr(4, 16), Encrypted("x").substr(4, 16));
    EXPECT_EQ(crypt.encrypt(TextOf(text), {}, hidden), SCrypt::blankKey);
    EXPECT_EQ(crypt.encrypt(array, {}, array), SCrypt::blankKey);
    EXPECT_TRUE(hidden.isEmpty() && array.GetSize() == 0);
    EXPECT_EQ(crypt.decrypt(SAnsiString("no such text"), kKey, clear), SCrypt::invalid);
    EXPECT_TRUE(clear.isEmpty());
    EXPECT_EQ(crypt.decrypt(BufferOf(Encrypted("\xFF")), kKey, clear), SCrypt::invalid);  // is no UTF-8
}

TEST(Scrypt, EveryChangedBitAndEveryCutIsNoticed) {
    std::vector<std::string> texts = {Encrypted(std::string(48, 'x'))};
    for (const auto& c : ReadCases("security/golden_texts.txt")) texts.push_back(FromHex(c[2]));
    for (const std::string& text : texts) {
        for (std::size_t i = 0; i < 9 * text.size(); ++i) {  // each cut, then each bit
            std::string changed = text.substr(0, i < text.size() ? i : text.npos);
            if (i >= text.size()) changed[i / 8 % text.size()] ^= static_cast<char>(1 << i % 8);
            const std::string result = Decrypted(changed, kKey);
            EXPECT_TRUE(result[0] == '5' || result[0] == '4') << i;
            EXPECT_EQ(result.find_first_not_of('\0', 4), result.npos) << i;
        }
    }
}

// Every reader of bytes and texts from elsewhere.
TEST(Scrypt, RandomInputIsRefused) {
    const AssertRecorder recorder;
    std::mt19937 random(11);
    for (int round = 0; round < 10000; ++round) {
        std::string bytes(random() % 150, static_cast<char>(random() % 3));
        for (std::size_t i = random() % 5; i < bytes.size(); ++i) bytes[i] = static_cast<char>(random());
        SSimpleBuffer buffer;
        SAnsiString text;
        EXPECT_GE(crypt.decrypt(BufferOf(bytes), kKey, buffer), SCrypt::invalid);
        EXPECT_GE(crypt.decrypt(TextOf(bytes), kKey, text), SCrypt::invalid);
        const bool isHuge = bytes.size() >= 4 && bytes[0] != 0;  // and would take the memory that it asks for
        if (!isHuge) EXPECT_LT(SCompression::decompress_buffer(BufferOf(bytes), buffer), 0);
        try {
            text = SGUID(SCrypt::toText(ArrayOf(bytes.substr(0, bytes.size() % 40)))).ToString();
        } catch (const SGUID::Error_InvalidString&) {
        }
    }
}

TEST(Scrypt, MisuseIsReported) {
    AssertRecorder recorder(kTracesToo);
    SCrypt::Key key = kKey;
    SAnsiString result = "old";
    EXPECT_EQ(crypt.makeKey(nullptr, key, KCMAlg400::SHA256), SCrypt::invalid);
    EXPECT_EQ(Hex(key.bytes, 32), Hex(std::string(32, '\0').data(), 32));
    EXPECT_EQ(crypt.random(key.bytes, -1), SCrypt::invalid);
    recorder.take();
    EXPECT_EQ(crypt.makeBase64Digest("x", result, true), SCrypt::noLibrary);
    EXPECT_EQ(result, "old");
    EXPECT_NE(recorder.take("assert failure: (scrypt:").find("using weak digest algorithm"),
              std::string::npos);
    SSimpleBuffer clear;
    crypt.decrypt(BufferOf(Encrypted("a secret")), kWrongKey, clear);
    EXPECT_EQ(
        recorder.take(),
        "4 scrypt: Decoding as header version 2\n"
        "7 scrypt: Digest comparsion failed! Probably a wrong key.\n"
        "4 scrypt: Decoding as header version 0\n"
        "7 scrypt: Digest comparsion failed! Probably a wrong key.\n"
        "7 scrypt: decrypt: Checksum does not match after decryption(buffer modified or wrong key used).\n");
}

TEST(StrongEncryption, KeepsTextsAndItsPassPhrase) {
    const LocaleScope locale(kLocale1252);
    const SAnsiString hidden = StrongEncryption::encrypt("Zw\xF6lf");
    EXPECT_EQ(StrongEncryption::decrypt(hidden), "Zw\xF6lf");
    try {
        StrongEncryption::decrypt("AAAA");
        ADD_FAILURE();
    } catch (const StrongEncryptionException& failure) {
        EXPECT_EQ(failure.GetErrorCode(), StrongEncryptionException::bufferInvalid);
        EXPECT_EQ(failure.GetReason(), "The buffer passed in for encryption/decryption does not look valid.");
    }
    char path[MAX_PATH];
    GetModuleFileNameA(GetModuleHandleA("tarnlib-5-0.dll"), path, sizeof path);
    const std::string file = ReadBytes(path), phrase = EncryptionKeyFactory::makeStringKey().getString();
    EXPECT_GT(file.size(), 100000U);
    EXPECT_EQ(phrase, std::string(EncryptionKeyFactory::makeStringKey().getString()));
    for (std::size_t i = 0; i + 6 <= phrase.size(); ++i) EXPECT_EQ(file.find(phrase.substr(i, 6)), file.npos);
}

TEST(StrongEncryption, ServesManyThreads) {
    std::atomic<int> right{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t)
        threads.emplace_back([&, text = Number(t)] {
            SAnsiString hidden, clear;
            for (int i = 0; i < 100; ++i) {
                crypt.encrypt(text, kKey, hidden);
                crypt.decrypt(hidden, kKey, clear);
                right += clear == text && StrongEncryption::decrypt(StrongEncryption::encrypt(text)) == text;
            }
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(right, 800);
}

// status | code | reason |
TEST(StrongEncryption, EveryStatusHasItsSentence) {
    for (const auto& c : ReadCases("security/status_reasons.txt")) {
        const StrongEncryptionException failure(static_cast<Status>(std::stoi(c[0])));
        EXPECT_EQ(std::to_string(failure.GetErrorCode()), c[1]);
        EXPECT_EQ(failure.toString(), c[2].c_str());
    }
}
