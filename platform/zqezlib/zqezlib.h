#pragma once

/// zlib (RFC 1950, 1951, 1952) under names of its own. Lengths are bytes; results are zlib's numbers: 0 done,
/// -2 wrong arguments, -3 damaged data, -4 no memory, -5 no room or no end. All functions may be called from any
/// thread; an open file is used by one thread at a time.
#if defined(ZQEZLIB_STATIC)
/// Marks what the module exports.
#define ZQ_API
#elif defined(zqezlib_EXPORTS)
#define ZQ_API __declspec(dllexport)
#else
#define ZQ_API __declspec(dllimport)
#endif

#ifdef __cplusplus
extern "C" {
#endif

/// Compresses in one call. The length is the room, and afterwards what was written. Level -1 (zlib's own choice)
/// or 0 to 9, strategy 0 (default), 1 (filtered), 2 (Huffman only), 3 (runs), 4 (fixed codes); others are wrong
/// arguments. -5 when the room is too small.
ZQ_API int ZQ_compress3(unsigned char* out, unsigned long* outLength, const unsigned char* in,
                        unsigned long inLength, int level, int strategy);

/// Expands in one call. The length is the room, and afterwards what was written. -3 when the data are damaged or
/// end early, -5 when the room is too small; also when it is full and only the checksum behind is cut.
ZQ_API int ZQ_uncompress(unsigned char* out, unsigned long* outLength, const unsigned char* in,
                         unsigned long inLength);

/// The CRC-32 of what came before and these bytes. It begins with 0, which is also what null bytes give.
ZQ_API unsigned long ZQ_crc32(unsigned long crc, const unsigned char* bytes, unsigned count);

/// Opens a gzip file. The name is UTF-8 and is given to the system as it is; with the prefix \\?\ it may be
/// longer than 259 characters. The mode is zlib's: "rb", "wb", "ab", or "wxb" for a file that must not exist;
/// behind it, to write, a digit for the level, "f", "h", "R" or "F" for the strategy and "T" for no compression
/// at all. Null when the file cannot be opened (errno says why), the name is not UTF-8 or the mode is none.
/// Child processes do not inherit the file. While it is written, others may read it, not write.
ZQ_API void* ZQ_gzopen(const char* path, const char* mode);

/// Reads expanded bytes, also over several members, and a file that is not gzip as it is. Returns how many, 0 at
/// the end, -1 for damaged data or a failure of the system. Where a file ends early, the bytes up to there are
/// read, and ZQ_gzclose returns -5.
ZQ_API int ZQ_gzread(void* file, void* bytes, unsigned count);

/// Writes bytes. Returns count, or 0 for a failure, which may be that of an earlier call.
ZQ_API int ZQ_gzwrite(void* file, const void* bytes, unsigned count);

/// Writes what is left and closes the file, also when it fails. -1 for a failure of the system (errno), -5 when
/// the last read found that the file ends early, -2 for null.
ZQ_API int ZQ_gzclose(void* file);

#ifdef __cplusplus
}
#endif
