#include "tarnlib/sguid.h"

#include <atomic>
#include <cstring>

#include "diag/assert/levels.h"
#include "diag/assert/require.h"
#include "system/identifiers/osguid.h"
#include "tarnlib/csharedlibrary.h"
#include "tarnlib/md5.h"
#include "tarnlib/scrypt.h"
#include "tarnlib/straceobj.h"
#include "tarnlib/stringhelper.h"
#include "waiting/waiting.h"

namespace TarnLibA500 {
namespace {

constexpr const char* kUnit = "sguid";
constexpr const char* kNull = "NULL";
constexpr unsigned char kKindBits = 0x0F;
constexpr unsigned char kHostBits = 0x70;
constexpr unsigned char kLengthBit = 0x80;
constexpr unsigned kHashedBytes = 16;
constexpr unsigned kHostBytes = 13;
constexpr unsigned kMoreHostBytes = 4;
constexpr unsigned kNumberBytes = 4;
constexpr unsigned kExtensionBytes = 1 + kNumberBytes;  // the source of what is extended, and the number
constexpr unsigned kNoLength = 0xFF;                    // no identifier has so much data

// The function stays for the life of the process, and so does its module.
osguid::Generator SystemGenerator() {
    static constinit std::atomic<osguid::Generator> known{nullptr};
    static constinit waiting::Lock lock;
    if (const osguid::Generator generator = known.load(std::memory_order_acquire)) return generator;
    const waiting::Guard turn(lock);
    if (known.load(std::memory_order_relaxed) == nullptr) {
        try {
            static CSharedLibrary& ole = *new CSharedLibrary("Ole32");
            known.store(reinterpret_cast<osguid::Generator>(ole.Resolve("CoCreateGuid")),
                        std::memory_order_release);
        } catch (const CSharedLibraryException&) {  // traced where it failed
            return nullptr;
        }
    }
    return known.load(std::memory_order_relaxed);
}

}  // namespace

// ------------------------------------------------------------------------------------------------ errors

SGUID::Error::Error(const SAnsiString& sentence) : sentence_(sentence) {}
SGUID::Error::Error(const Error& other) noexcept = default;
SGUID::Error& SGUID::Error::operator=(const Error& other) noexcept = default;
SGUID::Error::~Error() = default;

SGUID::Error_InvalidString::Error_InvalidString(const SAnsiString& text)
    : Error("\"" + text + "\" is no identifier.") {}

SGUID::Error_GeneratingGUID::Error_GeneratingGUID() : Error("No identifier can be made.") {}

// ------------------------------------------------------------------------------------------------ values

static_assert(sizeof(SGUID) == 35);
const int SGUID::MaxRandomStringLength;

SGUID::SGUID() noexcept : source_(nullSource), data_(), used_(0), isNull_(1) {}

SGUID::SGUID(const ::_GUID& guid) noexcept : SGUID() {
    take(systemSource, reinterpret_cast<const unsigned char*>(&guid), sizeof guid);
}

SGUID::SGUID(const SGUID& other) noexcept = default;
SGUID::SGUID(SGUID&& other) noexcept = default;
SGUID& SGUID::operator=(const SGUID& other) noexcept = default;
SGUID& SGUID::operator=(SGUID&& other) noexcept = default;

// The data may be this one's own. What is not used is zero, so that reading beyond it is always the same.
void SGUID::take(unsigned char source, const unsigned char* data, unsigned count) noexcept {
    source_ = source;
    std::memmove(data_, data, count);
    std::memset(data_ + count, 0, sizeof data_ - count);
    used_ = static_cast<unsigned char>(count);
    isNull_ = kind() == nullSource;
}

SGUID::_Source SGUID::kind() const noexcept {
    return static_cast<_Source>(source_ & kKindBits);
}

bool SGUID::IsNULL() const noexcept {
    return isNull_ != 0;
}

bool SGUID::IsExtendedGUID() const noexcept {
    return kind() == extendedSource;
}

int SGUID::compare(const SGUID& other) const noexcept {
    const int order = std::memcmp(bytes(), other.bytes(), used_ + 1U);
    return (order > 0) - (order < 0);
}

// ------------------------------------------------------------------------------------------------ lengths

const char* SGUID::GetHostIdName(unsigned char source) noexcept {
    constexpr const char* kNames[] = {"Unknown kind",
                                      "Kind_FromEthernetCardId",
                                      "Kind_Solaris_FromGetHostId",
                                      "Kind_AIX_FromUUID_GEN",
                                      "Kind_AIX_FromUName_M",
                                      "Kind_HPUX_FromPartitionIdent",
                                      "Kind_Random",
                                      "Unknown kind"};
    return kNames[(source & kHostBits) >> 4];
}

unsigned SGUID::GetHostIdSize(unsigned char source) {
    constexpr unsigned char kSizes[] = {0, 6, 6, 8, 8, 8, 8, 0};
    const unsigned size = kSizes[(source & kHostBits) >> 4];
    Require(size != 0, kUnit, "false");
    TARN_TRACE_AT(levels::kDetail, kUnit, "%1", GetHostIdName(source));
    return size;
}

unsigned SGUID::SourceToLength(unsigned char source) {
    switch (source & kKindBits) {
        case systemSource:
        case cuidSource:
        case thirdPartySource:
        case reservedSource:
            return kHashedBytes;
        case firstHostSource:
        case 3:
        case lastHostSource:
        case otherHostSource:
            return kHostBytes + ((source & kLengthBit) == 0 ? kMoreHostBytes : 0) + GetHostIdSize(source);
        case randomSource:
            return MaxRandomStringLength;
        case extendedSource:
            return kNoLength;  // there is nothing extended twice
        default:
            return 0;
    }
}

unsigned SGUID::GetExpectedSize() const {
    return IsExtendedGUID() ? SourceToLength(data_[0]) + kExtensionBytes : SourceToLength(source_);
}

// ------------------------------------------------------------------------------------------------ making

SGUID& SGUID::Create() {
    GUID guid;
    if (osguid::Generate(SystemGenerator(), guid)) return *this = SGUID(guid);
    SAssert(kUnit, __LINE__, "false", "Locally Uniq Ids Generated Only");
    unsigned char random[kDataBytes];
    if (SCrypt().random(random, sizeof random) != SCrypt::success) throw Error_GeneratingGUID();
    take(randomSource, random, sizeof random);
    return *this;
}

SGUID SGUID::Hash_CreateGuid(const SAnsiString& text, _Source source) {
    unsigned char digest[MD5::kDigestBytes];
    MD5::FromString(text.getString(), digest);
    SGUID id;
    id.take(source, digest, sizeof digest);
    return id;
}

SGUID SGUID::Make3rdPartyGUID(const SAnsiString& text) {
    return Hash_CreateGuid(text, thirdPartySource);
}

SAnsiString SGUID::MakeQRTXCUID(const SAnsiString& text) {
    return Hash_CreateGuid(text, cuidSource).ToString();
}

// ------------------------------------------------------------------------------------------------ text

SAnsiString SGUID::ToString() const {
    return IsNULL() ? SAnsiString(kNull) : SStringHelper::toString(bytes(), used_ + 1U);
}

SAnsiString SGUID::ToAnsiString() const {
    return ToString();
}

SGUID::SGUID(const SAnsiString& text) : SGUID() {
    if (text == kNull) return;
    unsigned char decoded[1 + kDataBytes + 1] = {};  // one more than there can be
    std::uint32_t count = 0;
    const bool isText = SStringHelper::fromString(text, decoded, sizeof decoded, count);
    const unsigned used = count != 0 ? count - 1 : 0;
    Require(count < kNoLength, kUnit, "cbDataUsed<255");
    TARN_TRACE_AT(levels::kEntry, kUnit, "cbDataUsed: %1", used);
    TARN_TRACE_AT(levels::kEntry, kUnit, "sizeof(GUID): %1", static_cast<unsigned>(sizeof(GUID)));
    TARN_TRACE_AT(levels::kEntry, kUnit, "sizeof(m_GUID.m_source): %1",
                  static_cast<unsigned>(sizeof source_));
    if (used <= kDataBytes) take(decoded[0], decoded + 1, used);
    const unsigned expected = GetExpectedSize();
    if (isText && used == expected) return;
    TARN_TRACE_AT(levels::kRefusedText, kUnit,
                  "failed to validate GUID: source = %1, bytesUsed = %2, bytesExpected = %3",
                  static_cast<unsigned>(decoded[0]), used, expected);
    throw Error_InvalidString(text);
}

// ------------------------------------------------------------------------------------------------ extending

SGUID SGUID::ExtendGUID(const SGUID& id, unsigned long number) {
    SGUID extended;
    if (!Require(!id.IsExtendedGUID() && id.used_ == id.GetExpectedSize(), kUnit, "false")) return extended;
    unsigned char data[kDataBytes];
    data[0] = id.source_;
    for (unsigned i = 1; i <= kNumberBytes; ++i, number >>= 8) data[i] = static_cast<unsigned char>(number);
    std::memcpy(data + kExtensionBytes, id.data_, id.used_);
    extended.take(extendedSource, data, id.used_ + kExtensionBytes);
    return extended;
}

bool SGUID::StripExtendedGUID(const SGUID& extended, SGUID& base, unsigned long& number) {
    const SGUID source = extended;  // it may be the base
    base = SGUID();
    number = 0;
    if (!source.IsExtendedGUID() || source.used_ != source.GetExpectedSize()) return false;
    for (unsigned i = kNumberBytes; i >= 1; --i) number = number << 8 | source.data_[i];
    base.take(source.data_[0], source.data_ + kExtensionBytes, source.used_ - kExtensionBytes);
    return true;
}

}  // namespace TarnLibA500
