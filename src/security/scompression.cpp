#include "tarnlib/scompression.h"

#include <new>
#include <utility>

#include "diag/assert/require.h"
#include "security/compressionerror.h"
#include "zqezlib/zqezlib.h"

// Blocks in memory.
namespace TarnLibA500 {
namespace {

constexpr const char* kUnit = "scompress";
constexpr std::uint32_t kLengthBytes = 4;
constexpr std::uint64_t kMaxLength = 0xFFFFFFFF;

/// A block in the making.
class NewBlock {
  public:
    explicit NewBlock(std::uint32_t size) : bytes_(SCompression::alloc_buffer(size)) {}
    ~NewBlock() { SCompression::free_buffer(bytes_); }
    NewBlock(const NewBlock&) = delete;
    NewBlock& operator=(const NewBlock&) = delete;

    unsigned char* get() const { return bytes_; }
    unsigned char* release() { return std::exchange(bytes_, nullptr); }

  private:
    unsigned char* bytes_;
};

/// Checks what every operation on memory takes; the outputs are set as after a failure.
bool AreArguments(const unsigned char* source, std::uint32_t length, unsigned char** ppDest,
                  std::uint32_t* pDestLen) {
    if (!Require(ppDest != nullptr && pDestLen != nullptr, kUnit, "pDest != NULL")) return false;
    *ppDest = nullptr;
    *pDestLen = 0;
    return Require(source != nullptr && length != 0, kUnit, "pSource != NULL && sourcelen > 0");
}

/// The most that a source becomes, by the rule that the format has always had; more than 32 bits are too many.
std::uint64_t CompressedBound(std::uint32_t length) {
    return std::uint64_t{length} + length / 1000 + 13;
}

int Compress(const unsigned char* source, std::uint32_t length, std::uint32_t bound, int level, int strategy,
             unsigned char** ppDest, std::uint32_t* pDestLen) {
    NewBlock block(bound + kLengthBytes);
    if (block.get() == nullptr) return SCompression::outOfMemory;
    SCompression::SetOriginalLength(block.get(), length);
    unsigned long size = bound;
    const int code = ZQ_compress3(block.get() + kLengthBytes, &size, source, length, level, strategy);
    if (code == 0) {
        *pDestLen = static_cast<std::uint32_t>(size) + kLengthBytes;
        *ppDest = block.release();
    }
    return ConvertErrorCode(code);
}

// A length of 0 needs memory all the same, and a byte of it shows whether it is true.
int Expand(const unsigned char* block, std::uint32_t blockLength, unsigned char** ppDest,
           std::uint32_t* pDestLen) {
    std::uint32_t length = 0;
    SCompression::GetOriginalLength(block, length);
    NewBlock dest(length);
    if (dest.get() == nullptr) return SCompression::outOfMemory;
    unsigned long size = length != 0 ? length : 1;
    const int code = ZQ_uncompress(dest.get(), &size, block + kLengthBytes, blockLength - kLengthBytes);
    if (length == 0 && (code != 0 || size != 0)) return SCompression::otherError;
    if (code == 0) {
        *pDestLen = static_cast<std::uint32_t>(size);
        *ppDest = dest.release();
    }
    return ConvertErrorCode(code);
}

/// Gives a buffer what an operation made.
int Adopt(int code, unsigned char* bytes, std::uint32_t length, SSimpleBuffer& dest) {
    dest.empty();
    if (code != SCompression::ok || !Require(bytes != nullptr, kUnit, "pDest != NULL")) return code;
    try {
        if (length != 0) {
            dest = SSimpleBuffer(bytes, length, true);
        } else {
            SCompression::free_buffer(bytes);
        }
    } catch (...) {
        SCompression::free_buffer(bytes);
        throw;
    }
    return code;
}

int CompressInto(const unsigned char* source, std::uint32_t length, SSimpleBuffer& dest, int level,
                 int strategy) {
    unsigned char* block = nullptr;
    std::uint32_t blockLength = 0;
    const int code = SCompression::compress_buffer(source, length, &block, &blockLength, level, strategy);
    if (code == SCompression::ok) Require(blockLength != 0, kUnit, "destlen > 0");
    return Adopt(code, block, blockLength, dest);
}

}  // namespace

// ------------------------------------------------------------------------------------------------ compressing

int SCompression::compress_buffer(const unsigned char* source, std::uint32_t sourceLength,
                                  unsigned char** ppDest, std::uint32_t* pDestLen, int level, int strategy) {
    if (!AreArguments(source, sourceLength, ppDest, pDestLen)) return invalidArguments;
    const std::uint64_t bound = CompressedBound(sourceLength);
    if (!Require(bound + kLengthBytes <= kMaxLength, kUnit, "sourcelen does not overflow"))
        return invalidArguments;
    const int code =
        Compress(source, sourceLength, static_cast<std::uint32_t>(bound), level, strategy, ppDest, pDestLen);
    if (code != ok) TraceFailure("compression failed, error code: %d ", code);
    return code;
}

int SCompression::compress_buffer(const SSimpleBuffer& source, SSimpleBuffer& dest, int level, int strategy) {
    return CompressInto(source.getBufferProtected(), source.getNBytes(), dest, level, strategy);
}

int SCompression::compress_buffer(const SAsciiString& source, SSimpleBuffer& dest, int level, int strategy) {
    return CompressInto(reinterpret_cast<const unsigned char*>(source.getString()), source.getLength(), dest,
                        level, strategy);
}

// ------------------------------------------------------------------------------------------------ expanding

int SCompression::decompress_buffer(const unsigned char* block, std::uint32_t blockLength,
                                    unsigned char** ppDest, std::uint32_t* pDestLen) {
    if (!AreArguments(block, blockLength, ppDest, pDestLen)) return invalidArguments;
    if (!Require(blockLength >= kLengthBytes, kUnit, "sourcelen >= sizeof(length)")) return invalidArguments;
    const int code = Expand(block, blockLength, ppDest, pDestLen);
    if (code != ok) TraceFailure("decompression failed, error code: %d ", code);
    return code;
}

int SCompression::decompress_buffer(const SSimpleBuffer& block, SSimpleBuffer& dest) {
    unsigned char* bytes = nullptr;
    std::uint32_t length = 0;
    const int code = decompress_buffer(block.getBufferProtected(), block.getNBytes(), &bytes, &length);
    return Adopt(code, bytes, length, dest);
}

int SCompression::decompress_buffer(const SSimpleBuffer& block, SAsciiString& dest) {
    SSimpleBuffer bytes;
    const int code = decompress_buffer(block, bytes);
    dest = SAsciiString(reinterpret_cast<const char*>(bytes.getBufferProtected()), bytes.getNBytes());
    return code;
}

// ------------------------------------------------------------------------------------------------ parts

std::uint32_t SCompression::get_crc32(std::uint32_t crc, const unsigned char* bytes, std::uint32_t count) {
    return ZQ_crc32(crc, bytes, count);
}

unsigned char* SCompression::alloc_buffer(std::uint32_t size) {
    try {
        return SSimpleBuffer::alloc(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void SCompression::free_buffer(unsigned char*& buffer) {
    SSimpleBuffer::dealloc(std::exchange(buffer, nullptr));
}

bool SCompression::GetOriginalLength(const unsigned char* block, std::uint32_t& length) {
    if (block == nullptr) return false;
    length = 0;
    for (std::uint32_t i = 0; i < kLengthBytes; ++i) length = length << 8 | block[i];
    return true;
}

bool SCompression::SetOriginalLength(unsigned char* block, std::uint32_t length) {
    if (block == nullptr) return false;
    for (std::uint32_t i = kLengthBytes; i-- > 0; length >>= 8) block[i] = static_cast<unsigned char>(length);
    return true;
}

}  // namespace TarnLibA500
