#include "zqezlib/oszlib.h"
#include "zqezlib/zqezlib.h"

namespace {

// zlib's own choices for one call that compresses everything (RFC 1950).
constexpr int kWindowBits = 15;
constexpr int kMemoryLevel = 8;

}  // namespace

int ZQ_compress3(unsigned char* out, unsigned long* outLength, const unsigned char* in,
                 unsigned long inLength, int level, int strategy) {
    if (outLength == nullptr) return Z_STREAM_ERROR;
    z_stream stream{};
    stream.next_out = out;
    stream.avail_out = static_cast<uInt>(*outLength);
    stream.next_in = const_cast<Bytef*>(in);  // zlib does not write there
    stream.avail_in = static_cast<uInt>(inLength);
    *outLength = 0;
    int result = oszlib::BeginDeflate(stream, level, kWindowBits, kMemoryLevel, strategy);
    if (result != Z_OK) return result;
    result = deflate(&stream, Z_FINISH);
    *outLength = stream.total_out;
    deflateEnd(&stream);
    if (result == Z_STREAM_END) return Z_OK;
    return result == Z_OK ? Z_BUF_ERROR : result;  // nothing but the room was lacking
}

int ZQ_uncompress(unsigned char* out, unsigned long* outLength, const unsigned char* in,
                  unsigned long inLength) {
    if (outLength == nullptr) return Z_STREAM_ERROR;
    return oszlib::Uncompress(out, *outLength, in, inLength);
}

unsigned long ZQ_crc32(unsigned long crc, const unsigned char* bytes, unsigned count) {
    return crc32(crc, bytes, count);
}
