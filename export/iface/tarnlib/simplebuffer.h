#pragma once

#include <atomic>
#include <cstdint>

#include "tarnlib/sstring.h"
#include "tarnlib/tarnapi.h"

/// Bytes: one pointer to a shared, reference-counted, copy-on-write block, which may be a mapped file.
///
/// Copying is O(1) and allocates nothing; a change of a shared or mapped buffer gives it a block of its own.
/// Blocks are exactly as large as asked for and never grow ahead of need, so who appends piece by piece
/// passes an extra reserve. The bytes are not zero-terminated. Copies that share a block may be copied,
/// assigned and destroyed by several threads at once; one object must not be changed by two threads. The data
/// pointer is valid until the object is changed, assigned or destroyed. Misuse is reported by assertion and
/// leaves the buffer as it was; failing memory throws std::bad_alloc ("bad allocation"), and the buffer keeps
/// its bytes.
///
///     SSimpleBuffer message("\x01\x02", 2, false);
///     message.append(payload, payloadBytes, 64);           // 64 bytes of reserve behind it
///     message << 0xFF;
///     SSimpleBuffer copy = message;                        // shares the block
///     unsigned char* bytes = copy.getBuffer(1024);         // its own, with room for 1024 bytes
///     copy.releaseBuffer(Receive(bytes, 1024));            // that many are used now
///     unsigned char* mine = copy.detach();                 // copy is empty
///     SSimpleBuffer::dealloc(mine);
namespace TarnLibA500 {

/// A growable byte buffer.
class TARN_API SSimpleBuffer {
  public:
    /// As an extra reserve: none. As a minimum size: as large as it is.
    static constexpr std::uint32_t kUnspecified = 0xFFFFFFFF;

    /// A block as buffers share it. It owns its data, or the mapped view of a file.
    class TARN_API SSimpleInternalBuffer {
      public:
        /// No bytes, counted once.
        SSimpleInternalBuffer() noexcept;
        /// Unmaps or frees the data.
        ~SSimpleInternalBuffer();
        /// Blocks are shared, not copied.
        SSimpleInternalBuffer(const SSimpleInternalBuffer&) = delete;
        /// Blocks are shared, not copied.
        SSimpleInternalBuffer& operator=(const SSimpleInternalBuffer&) = delete;

        /// Maps a whole file for reading; the block must be fresh. False, and traced, when that fails (always
        /// so for an empty file).
        bool Map(const SAnsiString& file);
        /// Gives up the view and the file; the block has no bytes then. Nothing happens when it is not
        /// mapped.
        void UnMap() noexcept;
        /// True while the bytes are a view of a file.
        bool IsMapped() const noexcept { return mapped != 0; }

        std::atomic<std::int32_t> refCount;  ///< buffers that share the block
        std::uint32_t bytesUsed;             ///< bytes of valid data
        std::uint32_t bytesAllocated;        ///< bytes that data has room for
        unsigned char* data;                 ///< from alloc, or a view of the mapped file
        std::int32_t mapped;                 ///< not zero while data is a view of a file
        SAnsiString fileName;                ///< the mapped file, otherwise empty
        void* fileHandle;                    ///< of the mapped file, otherwise -1
        void* mappingHandle;                 ///< of the file-mapping object, otherwise 0
    };

    /// No bytes, and no allocation.
    SSimpleBuffer() noexcept;
    /// Room for a number of bytes, none of them used.
    explicit SSimpleBuffer(std::uint32_t nBytes);
    /// A copy of the bytes; or, with the flag, the bytes themselves, which must come from alloc and belong to
    /// the buffer from now on (when the constructor throws they are still the caller's). A null pointer or a
    /// count of 0 is reported by assertion and gives an object without a block: it has no bytes, and changes
    /// are reported and ignored until it is assigned to or emptied.
    SSimpleBuffer(const void* bytes, std::uint32_t count, bool adopt);
    /// Shares the block.
    SSimpleBuffer(const SSimpleBuffer& other) noexcept;
    /// Shares the block and lets go of its own.
    SSimpleBuffer& operator=(const SSimpleBuffer& other) noexcept;
    /// Lets go of the block.
    virtual ~SSimpleBuffer();

    // --- reading ---
    /// Bytes of valid data.
    std::uint32_t getNBytes() const noexcept { return buffer_ != nullptr ? buffer_->bytesUsed : 0; }
    /// Bytes that the block has room for.
    std::uint32_t getNBytesAllocated() const noexcept {
        return buffer_ != nullptr ? buffer_->bytesAllocated : 0;
    }
    /// True when no bytes are used.
    bool isEmpty() const noexcept { return getNBytes() == 0; }
    /// The bytes, without copying them. Null only for an object without a block.
    const unsigned char* getBufferProtected() const noexcept {
        return buffer_ != nullptr ? buffer_->data : nullptr;
    }
    /// The same as getBufferProtected.
    operator const unsigned char*() const noexcept { return getBufferProtected(); }

    // --- writing in place ---
    /// The bytes for writing, in a block of their own. A minimum that is not below the present room makes a
    /// new block of exactly "minimumBytes" bytes (never less than are used); without a minimum there is just
    /// room for what is used. Null for an object without a block.
    unsigned char* getBuffer(std::uint32_t minimumBytes = kUnspecified);
    /// Ends the writing: "nBytesUsed" bytes are used now. More than there is room for is reported by
    /// assertion and set all the same; where nothing could have been written, they are made as zero bytes.
    void releaseBuffer(std::uint32_t nBytesUsed);

    // --- appending; the bytes may lie in this buffer ---
    /// Appends one byte, without a reserve.
    void append(unsigned char byte) { append(&byte, 1); }
    /// Appends one byte, without a reserve.
    SSimpleBuffer& operator<<(unsigned char byte) {
        append(byte);
        return *this;
    }
    /// Appends bytes. The block is kept only while the new size stays below its room; otherwise a block with
    /// room for the new size and the extra reserve takes its place. A null pointer or a count of 0 does
    /// nothing; a size beyond 32 bits is reported by assertion.
    void append(const void* bytes, std::uint32_t count, std::uint32_t extraReserve = kUnspecified);
    /// Drops the block; the buffer has no bytes then.
    void empty() noexcept;
    /// Hands the bytes to the caller, who frees them with dealloc, and leaves the buffer empty. The bytes of
    /// a shared or mapped buffer are copied first, which is traced. Null when the buffer stands on no block
    /// or the empty one; also, deliberately without an exception, when that copy fails: the buffer is empty
    /// then.
    unsigned char* detach();

    // --- comparison ---
    /// Compares unsigned bytes; where one buffer is the beginning of the other, the shorter one is smaller.
    /// -1, 0 or 1.
    int compare(const SSimpleBuffer& other) const noexcept;
    /// True when sizes and bytes are the same.
    bool operator==(const SSimpleBuffer& other) const noexcept;
    /// The order of compare.
    bool operator<(const SSimpleBuffer& other) const noexcept { return compare(other) < 0; }
    /// The order of compare.
    bool operator>(const SSimpleBuffer& other) const noexcept { return compare(other) > 0; }
    /// The order of compare.
    bool operator<=(const SSimpleBuffer& other) const noexcept { return compare(other) <= 0; }
    /// The order of compare.
    bool operator>=(const SSimpleBuffer& other) const noexcept { return compare(other) >= 0; }
    /// Compares the used bytes with the first of these, which must be no fewer; a null pointer equals only a
    /// buffer without bytes.
    bool operator==(const unsigned char* bytes) const noexcept;

    // --- files; paths as for SFile, results false when the file system says no ---
    /// Replaces the bytes by a file's, read or (map) as a read-only view. Sequential tells the system that
    /// the file will be read from front to back; it never changes the bytes. False for an empty file.
    bool loadFromFile(const SAnsiString& path, bool map = false, bool sequential = false);
    /// The same for a part of a file: "bytesToRead" bytes from the byte "startByte" on; 0, or more than there
    /// are, means all the rest. A start that is not below the file's size is traced and gives false. Only the
    /// whole file can be mapped: start and count must be 0 then (reported by assertion).
    bool loadFromFileEx(const SAnsiString& path, bool map, bool sequential, long long startByte,
                        std::uint32_t bytesToRead);
    /// Writes the bytes into a file, which is made when it does not exist. Without truncate an old file that
    /// is longer keeps its tail; with it, a file that could not be written to its end is removed: the old
    /// bytes are gone then. An empty buffer writes no file, and false is the result.
    bool saveToFile(const SAnsiString& path, bool truncate = true);

    // --- memory of data blocks ---
    /// Memory for bytes, as buffers adopt and detach it.
    static unsigned char* alloc(std::uint32_t nBytes);
    /// Frees such memory; a null pointer does nothing.
    static void dealloc(void* bytes) noexcept;

  protected:
    /// Replaces the block by a new one with room for exactly the old and the new bytes together. A null
    /// pointer with a count is reported by assertion and does nothing.
    void concat(const void* bytes, std::uint32_t count);
    /// A fresh block with count 1 and room for exactly n bytes, none used.
    static SSimpleInternalBuffer* allocBuffer(std::uint32_t n);
    /// The one block of all buffers without bytes: never counted, written or freed, and recognised by its
    /// address.
    static SSimpleInternalBuffer* GetEmptyBuffer() noexcept;
    /// True for that block.
    static bool IsEmptyBuffer(const SSimpleInternalBuffer* buffer) noexcept;
    /// The block; null after a construction that was refused.
    SSimpleInternalBuffer* getInternalBuffer() const noexcept { return buffer_; }

  private:
    struct _EmptyBuffer;

    static SSimpleInternalBuffer* allocHeader();
    static SSimpleInternalBuffer* CopyOf(const SSimpleInternalBuffer& block, std::uint32_t nBytesAllocated);
    static SSimpleInternalBuffer* Share(SSimpleInternalBuffer* block) noexcept;
    static void Release(SSimpleInternalBuffer* block) noexcept;
    bool hasBlock() const;
    bool isShared() const noexcept;
    bool isWritable() const noexcept;
    void adopt(SSimpleInternalBuffer* block) noexcept;
    void terminate(std::uint32_t nBytesUsed);
    SSimpleInternalBuffer* roomToAppend(std::uint32_t count, std::uint32_t extraReserve);
    void appendTo(SSimpleInternalBuffer* block, const void* bytes, std::uint32_t count) noexcept;
    void copyBeforeDetaching();
    bool mapFrom(const SAnsiString& path);
    bool readFrom(const SAnsiString& path, bool sequential, long long startByte, std::uint32_t bytesToRead);

    SSimpleInternalBuffer* buffer_;
};

}  // namespace TarnLibA500
