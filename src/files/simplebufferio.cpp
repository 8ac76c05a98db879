#include <algorithm>

#include "diag/assert/levels.h"
#include "diag/assert/require.h"
#include "files/osfiles.h"
#include "files/systempath.h"
#include "strings/text/lineend.h"
#include "tarnlib/sfile.h"
#include "tarnlib/sfilesys.h"
#include "tarnlib/simplebuffer.h"
#include "tarnlib/straceobj.h"

// The buffers' operations on files.
namespace TarnLibA500 {
namespace {

constexpr const char* kUnit = "simplebuffer";
constexpr long long kMaxBytes = 0xFFFFFFFF;
constexpr int kSaveFromScratch = SFile::writeOnly | SFile::create | SFile::truncate;
constexpr int kSaveOver = SFile::writeOnly | SFile::create | SFile::exclusive;
static_assert(kSaveFromScratch == 769 && kSaveOver == 1281);

void TraceSystemFailure(const char* what, const SAnsiString& file, DWORD error) {
    TARN_TRACE_AT(levels::kFailure, kUnit, "%1 %2: error %3, %4", what, file, error,
                  WithoutLineEnd(SFileException::GetSystemMessage(error)));
}

osfiles::File OpenToMap(const SAnsiString& file) {
    // Not inheritable: no security attributes say so.
    const SWCharString path = LongSystemPath(file);
    return osfiles::Open(path.getString(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                         FILE_FLAG_SEQUENTIAL_SCAN);
}

// The whole of an open file as a read-only view; false with the system's error.
bool MapOpenFile(HANDLE file, std::uint32_t& bytes, osfiles::File& mapping, void*& view) {
    long long size = 0;
    if (!osfiles::Size(file, size)) return false;
    if (size > kMaxBytes) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return false;
    }
    bytes = static_cast<std::uint32_t>(size);
    mapping = osfiles::MapFile(file);
    if (!mapping) return false;
    view = osfiles::View(mapping.get());
    return view != nullptr;
}

// Memory that is fresh gets its pages here: that takes half as long as when the system meets them one by one while it
// copies the bytes of a file.
void TouchPages(volatile unsigned char* bytes, std::uint32_t count) {
    constexpr std::uint32_t kPageBytes = 4096;
    for (std::uint32_t left = count; left != 0; left -= std::min(left, kPageBytes)) bytes[left - 1] = 0;
}

// What a failed save has left is neither the old file nor the new one.
void RemoveTorn(const SAnsiString& path) {
    try {
        SFileSys::remove(path);
    } catch (const SFileSysException& failure) {
        TARN_TRACE_AT(levels::kLoss, kUnit, "half a file stays: %1", WithoutLineEnd(failure.toString()));
    }
}

}  // namespace

bool SSimpleBuffer::SSimpleInternalBuffer::Map(const SAnsiString& file) {
    osfiles::File opened = OpenToMap(file);
    if (!opened) {
        TraceSystemFailure("cannot open", file, GetLastError());
        return false;
    }
    std::uint32_t size = 0;
    osfiles::File made;
    void* view = nullptr;
    if (!MapOpenFile(opened.get(), size, made, view)) {
        TraceSystemFailure("cannot map", file, GetLastError());
        return false;
    }
    data = static_cast<unsigned char*>(view);
    bytesUsed = bytesAllocated = size;
    mapped = 1;
    fileName = file;
    fileHandle = opened.release();
    mappingHandle = made.release();
    return true;
}

void SSimpleBuffer::SSimpleInternalBuffer::UnMap() noexcept {
    if (!IsMapped()) return;
    osfiles::CloseView(data);
    osfiles::Close(mappingHandle);
    osfiles::Close(fileHandle);
    data = nullptr;
    bytesUsed = bytesAllocated = 0;
    mapped = 0;
    fileName.empty();
    mappingHandle = nullptr;
    fileHandle = INVALID_HANDLE_VALUE;
}

bool SSimpleBuffer::loadFromFile(const SAnsiString& path, bool map, bool sequential) {
    return loadFromFileEx(path, map, sequential, 0, 0);
}

bool SSimpleBuffer::loadFromFileEx(const SAnsiString& path, bool map, bool sequential, long long startByte,
                                   std::uint32_t bytesToRead) try {
    if (!map) return readFrom(path, sequential, startByte, bytesToRead);
    const bool isWhole = startByte == 0 && bytesToRead == 0;
    return Require(isWhole, kUnit, "startByte==0 && bytesToRead==0") && mapFrom(path);
} catch (const SFileException&) {
    return false;  // the file has traced it
}

bool SSimpleBuffer::mapFrom(const SAnsiString& path) {
    SSimpleBuffer mapped;
    mapped.adopt(allocHeader());
    if (!mapped.buffer_->Map(path)) return false;
    *this = mapped;
    return true;
}

bool SSimpleBuffer::readFrom(const SAnsiString& path, bool sequential, long long startByte,
                             std::uint32_t bytesToRead) {
    SFile file(path, SFile::readOnly | (sequential ? SFile::sequential : 0), SFile::readWriteMask,
               SFile::denyNothing);
    const long long rest = startByte >= 0 ? file.sizeEx() - startByte : 0;
    if (rest <= 0) {
        TARN_TRACE_AT(levels::kFailure, kUnit,
                      "SSimpleBuffer::loadFromFileEx: Out of range in reading from file %1. \n", path);
        return false;
    }
    const long long wanted = bytesToRead != 0 ? std::min<long long>(bytesToRead, rest) : rest;
    if (wanted > kMaxBytes) {
        TARN_TRACE_AT(levels::kFailure, kUnit, "%1 is too large for a buffer", path);
        return false;
    }
    file.seekEx(SFile::seekBegin, startByte);
    const auto room = static_cast<std::uint32_t>(wanted);
    SSimpleBuffer loaded(room);
    unsigned char* const bytes = loaded.getBuffer();
    TouchPages(bytes, room);
    std::uint32_t done = 0;
    for (int count = -1; count != 0 && done < room; done += static_cast<std::uint32_t>(count))
        count = file.read(bytes + done, room - done);
    if (done == 0) {
        TARN_TRACE_AT(levels::kFailure, kUnit, "nothing can be read from %1 any more", path);
        return false;
    }
    loaded.releaseBuffer(done);
    *this = loaded;
    return true;
}

bool SSimpleBuffer::saveToFile(const SAnsiString& path, bool truncate) try {
    if (isEmpty()) {
        TARN_TRACE_AT(levels::kFailure, kUnit, "an empty buffer is not written to %1", path);
        return false;
    }
    SFile file(path, truncate ? kSaveFromScratch : kSaveOver, SFile::readWriteMask, SFile::denyNothing);
    try {
        file.writeAll(getBufferProtected(), getNBytes());
    } catch (...) {
        file.close();
        if (truncate) RemoveTorn(path);
        throw;
    }
    file.close();
    return true;
} catch (const SFileException&) {
    return false;  // the file has traced it
}

}  // namespace TarnLibA500
