#pragma once

#include <cstdint>

#include "tarnlib/simplebuffer.h"
#include "tarnlib/sprogress.h"
#include "tarnlib/sstring.h"
#include "tarnlib/tarnapi.h"

/// Compression of memory into blocks that say how long they were, and of files into gzip.
///
/// A block is the uncompressed length (32 bits, big-endian) and one zlib stream (RFC 1950). All members are static
/// and may be called from any thread. Results are codes; nothing is thrown but failing memory by the members that
/// fill a buffer or a string. Failures are traced, wrong arguments reported by assertion.
///
///     SSimpleBuffer block, text;
///     if (SCompression::compress_buffer(report, block) != SCompression::ok) return false;
///     if (SCompression::decompress_buffer(block, text) != SCompression::ok) return false;
///     return SCompression::compress_file("run.log", "run.log.gz", 9, SCompression::usual, true) == 0;
namespace TarnLibA500 {

/// Compresses and expands.
class TARN_API SCompression {
  public:
    /// What became of an operation.
    enum ErrCode {
        ok = 0,                 ///< done
        bufferError = -1,       ///< the data end early, or are more than the block says
        outOfMemory = -2,       ///< no memory
        otherError = -3,        ///< damaged data, or a level or strategy that there is not
        invalidArguments = -4,  ///< a null pointer, a length of zero, or one that is too large
        fileError = -5          ///< a file cannot be read or written
    };
    /// How to look for what repeats: zlib's strategies.
    enum Strategy {
        usual = 0,        ///< for most data
        filtered = 1,     ///< for small numbers, such as differences
        huffmanOnly = 2,  ///< without looking
        runs = 3,         ///< for runs of one byte; buffers only
        fixedCodes = 4    ///< without codes of its own; buffers only
    };
    /// zlib's own choice between speed (1) and size (9); 0 stores.
    static constexpr int kUsualLevel = -1;

    // --- memory; level -1 to 9, and every other one is otherError ---
    /// Compresses into a new block, which the caller frees with free_buffer. After a failure there is none, and the
    /// length is 0.
    static int compress_buffer(const unsigned char* source, std::uint32_t sourceLength,
                               unsigned char** ppDest, std::uint32_t* pDestLen, int level = kUsualLevel,
                               int strategy = usual);
    /// Compresses into a buffer, which is empty after a failure. An empty source is invalidArguments.
    static int compress_buffer(const SSimpleBuffer& source, SSimpleBuffer& dest, int level = kUsualLevel,
                               int strategy = usual);
    /// The same for a text's bytes.
    static int compress_buffer(const SAsciiString& source, SSimpleBuffer& dest, int level = kUsualLevel,
                               int strategy = usual);
    /// Expands a block into new memory, which the caller frees with free_buffer. After a failure there is none, and
    /// the length is 0. A block that says more than it has in it gives what it has. Memory is taken as the
    /// block says, up to 4 GiB: what comes from strangers is looked at with GetOriginalLength first.
    static int decompress_buffer(const unsigned char* block, std::uint32_t blockLength,
                                 unsigned char** ppDest, std::uint32_t* pDestLen);
    /// Expands a block into a buffer, which is empty after a failure.
    static int decompress_buffer(const SSimpleBuffer& block, SSimpleBuffer& dest);
    /// The same into a text, whose bytes are not checked.
    static int decompress_buffer(const SSimpleBuffer& block, SAsciiString& dest);

    // --- files of any size in constant memory. A file that is made has its name when it is whole; without
    // success, whatever had the name stays. The two may be one file ---
    /// Compresses a file into a gzip file, and removes the source if asked to and all went well. Level 0 to 9,
    /// otherwise 3; strategies but the first three count as the first.
    static int compress_file(const SAnsiString& source, const SAnsiString& dest, int level, int strategy,
                             bool removeSource, SProgress* progress = 0);
    /// Expands a gzip file, also one of several members. One that is not gzip at all is copied. bufferError when
    /// it ends early, fileError when it is damaged. The progress counts what has been written.
    static int decompress_file(const SAnsiString& source, const SAnsiString& dest, bool removeSource,
                               SProgress* progress = 0);

    // --- parts ---
    /// The CRC-32 of gzip over what came before, which begins with 0, and these bytes.
    static std::uint32_t get_crc32(std::uint32_t crc, const unsigned char* bytes, std::uint32_t count);
    /// Memory as blocks have it; null when there is none.
    static unsigned char* alloc_buffer(std::uint32_t size);
    /// Frees such memory and makes the pointer null.
    static void free_buffer(unsigned char*& buffer);
    /// The length that a block of at least 4 bytes says it has uncompressed. False for a null block.
    static bool GetOriginalLength(const unsigned char* block, std::uint32_t& length);
    /// Writes that length. False for a null block.
    static bool SetOriginalLength(unsigned char* block, std::uint32_t length);
};

}  // namespace TarnLibA500
