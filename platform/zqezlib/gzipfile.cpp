#include <cerrno>
#include <cstring>
#include <memory>

#include "seam/nothrow.h"
#include "seam/ostext.h"
#include "zqezlib/oszlib.h"
#include "zqezlib/zqezlib.h"

#include <windows.h>

namespace {

using WidePath = std::unique_ptr<wchar_t[]>;

// Null when it is not UTF-8, or there is no memory.
WidePath Widen(const char* path) {
    const int size = ostext::ToWide(CP_UTF8, MB_ERR_INVALID_CHARS, path, -1, nullptr, 0);
    if (size <= 0) {
        errno = EILSEQ;
        return nullptr;
    }
    WidePath wide(new (seam::kNoThrow) wchar_t[static_cast<unsigned>(size)]);
    if (wide == nullptr) {
        errno = ENOMEM;
    } else {
        ostext::ToWide(CP_UTF8, MB_ERR_INVALID_CHARS, path, -1, wide.get(), size);
    }
    return wide;
}

// How the system opens a file for zlib's mode; 0 for a mode that is none, or one of which zlib makes another.
int OpenFlags(const char* mode) {
    constexpr int kAlways = _O_BINARY | _O_NOINHERIT;
    constexpr int kWriting = kAlways | _O_WRONLY | _O_CREAT;
    if (*mode == '\0' || std::strpbrk(mode + 1, "rwa+") != nullptr) return 0;
    const int exclusive = std::strchr(mode, 'x') == nullptr ? 0 : _O_EXCL;
    switch (*mode) {
        case 'r':
            return std::strchr(mode, 'T') == nullptr ? kAlways | _O_RDONLY : 0;
        case 'w':
            return kWriting | _O_TRUNC | exclusive;
        case 'a':
            return kWriting | _O_APPEND | exclusive;
        default:
            return 0;
    }
}

}  // namespace

void* ZQ_gzopen(const char* path, const char* mode) {
    const int flags = path == nullptr || mode == nullptr ? 0 : OpenFlags(mode);
    if (flags == 0) {
        errno = EINVAL;
        return nullptr;
    }
    const WidePath wide = Widen(path);
    if (wide == nullptr) return nullptr;
    const int descriptor = oszlib::Open(wide.get(), flags);
    if (descriptor < 0) return nullptr;
    const gzFile file = oszlib::Attach(descriptor, mode);
    if (file == nullptr) {
        oszlib::Close(descriptor);
        errno = ENOMEM;
    }
    return file;
}

int ZQ_gzread(void* file, void* bytes, unsigned count) {
    return oszlib::Read(static_cast<gzFile>(file), bytes, count);
}

int ZQ_gzwrite(void* file, const void* bytes, unsigned count) {
    return oszlib::Write(static_cast<gzFile>(file), bytes, count);
}

int ZQ_gzclose(void* file) {
    return oszlib::Close(static_cast<gzFile>(file));
}
