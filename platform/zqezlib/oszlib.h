#pragma once

#include <cerrno>

#include <fcntl.h>
#include <io.h>
#include <share.h>
#include <sys/stat.h>
#include <zlib.h>

#include "seam/seam.h"

/// The one way in which the module reaches zlib, and the system's files on zlib's behalf. The calls fail as zlib does: for
/// want of memory, or with the error of a file in errno.
namespace oszlib {

/// What is open is files.
struct Kind {
    static void SetError(unsigned long error) noexcept { errno = static_cast<int>(error); }
};
using Calls = seam::Calls<Kind>;

inline int BeginDeflate(z_stream& stream, int level, int windowBits, int memoryLevel, int strategy) {
    if (Calls::MustFail()) return Z_MEM_ERROR;
    return deflateInit2(&stream, level, Z_DEFLATED, windowBits, memoryLevel, strategy);
}

inline int Uncompress(unsigned char* out, unsigned long& outLength, const unsigned char* in,
                      unsigned long inLength) {
    return Calls::MustFail() ? Z_MEM_ERROR : uncompress(out, &outLength, in, inLength);
}

/// A descriptor, or -1. Nobody else writes what is opened for writing.
inline int Open(const wchar_t* path, int flags) {
    if (Calls::MustFail()) return -1;
    const int share = (flags & _O_WRONLY) != 0 ? _SH_DENYWR : _SH_DENYNO;
    const int descriptor = _wsopen(path, flags, share, _S_IREAD | _S_IWRITE);
    if (descriptor >= 0) Calls::Opened();
    return descriptor;
}

inline void Close(int descriptor) {
    _close(descriptor);
    Calls::Closed();
}

/// The descriptor becomes the file's. Null when there is no memory, or the mode is none.
inline gzFile Attach(int descriptor, const char* mode) {
    return Calls::MustFail() ? nullptr : gzdopen(descriptor, mode);
}

inline int Read(gzFile file, void* bytes, unsigned count) {
    return Calls::MustFail() ? -1 : gzread(file, bytes, count);
}

inline int Write(gzFile file, const void* bytes, unsigned count) {
    return Calls::MustFail() ? 0 : gzwrite(file, bytes, count);
}

/// Closes the file also when it fails.
inline int Close(gzFile file) {
    const bool mustFail = Calls::MustFail();
    const int result = gzclose(file);
    if (file != nullptr) Calls::Closed();
    return mustFail ? Z_ERRNO : result;
}

}  // namespace oszlib
