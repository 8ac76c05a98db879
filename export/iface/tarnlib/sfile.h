#pragma once

#include <cstdint>

#include "tarnlib/sfileexception.h"
#include "tarnlib/sstring.h"
#include "tarnlib/tarnapi.h"

/// One open file: blocks of bytes, lines and whole texts.
///
/// Every failure is thrown as SFileException, and the object survives it: a failed open leaves it closed with
/// the new name, a failed read or write leaves it open at an unspecified position. Names are in the process's
/// code page and may be longer than 260 characters. Texts are UTF-8 in the file unless an operation is given
/// an encoding; a byte order mark is a character like any other. Text that is not valid UTF-8 reads as empty,
/// which is traced; zero bytes stay. One thread at a time uses an object. What is written is with the system
/// when write returns. readLine reads ahead, 64 KiB at most, and every other operation knows of that; only
/// changes that are made through another handle meanwhile may not be seen in those bytes.
///
///     SFile log("C:\\data\\run.log", SFile::writeOnly | SFile::create | SFile::append, SFile::readWriteMask,
///               SFile::denyNothing);
///     log.writeString("started");
///     log.writeNewLine();
///     log.close();
///
///     SFile list("C:\\data\\hosts.txt", SFile::readOnly, SFile::readWriteMask, SFile::denyNothing);
///     while (!list.eof()) Connect(list.readLine());
namespace TarnLibA500 {

class SReadAhead;

class TARN_API SFile {
  public:
    // --- mode of open: one access, and flags ---
    static constexpr int readOnly = 0;
    static constexpr int writeOnly = 1;
    static constexpr int readAndWrite = 2;
    static constexpr int append = 8;         ///< starts at the end of the file
    static constexpr int random = 0x10;      ///< hint: read here and there
    static constexpr int sequential = 0x20;  ///< hint: read from front to back; goes before random
    static constexpr int temporary = 0x40;   ///< close deletes the file that was opened
    static constexpr int noInherit = 0x80;   ///< child processes do not get the handle, as they do otherwise
    static constexpr int create = 0x100;     ///< makes a missing file
    static constexpr int truncate = 0x200;   ///< makes a missing file and empties one that exists
    static constexpr int exclusive = 0x400;  ///< makes the file and fails when it exists; not so with create

    // --- share: what others may do meanwhile; nobody may ever delete or rename the open file ---
    static constexpr int denyNothing = 64;
    // Each of these deliberately means nothing at all.
    static constexpr int denyReadAndWrite = 16;
    static constexpr int denyWrite = 32;
    static constexpr int denyRead = 48;

    // --- permissions: kept for callers that also run where they count; ignored here ---
    static constexpr int ownerRWXMask = 0700;
    static constexpr int ownerRMask = 0400;
    static constexpr int ownerWMask = 0200;
    static constexpr int ownerXMask = 0100;
    static constexpr int groupRWXMask = 0;
    static constexpr int groupRMask = 0;
    static constexpr int groupWMask = 0;
    static constexpr int groupXMask = 0;
    static constexpr int othersRWXMask = 0;
    static constexpr int othersRMask = 0;
    static constexpr int othersWMask = 0;
    static constexpr int othersXMask = 0;
    static constexpr int readMask = 0400;
    static constexpr int writeMask = 0700;  ///< deliberately the same as readWriteMask
    static constexpr int readWriteMask = 0700;
    static constexpr int defaultPermissions = 0x60000000;

    // --- origin of seek ---
    static constexpr int seekBegin = 0;
    static constexpr int seekSet = 0;
    static constexpr int seekCurrent = 1;
    static constexpr int seekEnd = 2;

    // --- lock requests: kept for callers; no operation takes them ---
    static constexpr int lockUnlock = 0;
    static constexpr int lockRetryLock = 1;
    static constexpr int lockNoRetryLock = 2;

    /// A carriage return and a line feed.
    static const SAnsiString EOL;

    enum FileEncoding {
        nativeCodePage = 0,  ///< bytes are text of the process's code page, taken as they are
        utf8 = 1             ///< bytes are UTF-8, converted to and from that code page
    };

    // --- opening and closing ---
    /// Closed, without a name.
    SFile() noexcept;
    /// Closed; the name is for open(mode, permissions, share).
    explicit SFile(const SAnsiString& name);
    /// Opens the file.
    SFile(const SAnsiString& name, int mode, int permissions, int share);
    /// Closes the file; what goes wrong with that is traced.
    virtual ~SFile();
    SFile(const SFile&) = delete;
    SFile& operator=(const SFile&) = delete;

    /// Closes what was open, takes the name and opens the file. The low two bits of the mode are the access;
    /// 3 asks for no rights at all, enough for size and seek.
    void open(const SAnsiString& name, int mode, int permissions, int share);
    /// The same with the name that the object has.
    void open(int mode, int permissions, int share);
    /// Closes the file and, when it was opened as temporary, deletes it; closeError when that fails. Nothing
    /// happens when the file is closed.
    void close();

    // --- bytes ---
    /// Reads up to so many bytes at the position; fewer, at last 0, near the end of the file.
    int read(void* buffer, std::uint32_t count);
    /// Writes bytes at the position; returns how many the system took.
    int write(const void* buffer, std::uint32_t count);
    /// Writes all of the bytes, in as many calls as the system wants.
    void writeAll(const void* buffer, std::uint32_t count);
    /// Hands what the system holds back to the disk. Does nothing for a file opened only for reading.
    void flush();

    // --- position and size, in bytes ---
    /// Moves by an offset from the origin (1 the position, 2 the end, all others the beginning); returns the
    /// new position. Beyond 4 GiB seek and size raise seekError (seek has moved then): use the other two
    /// there.
    int seek(int origin, int offset);
    long long seekEx(int origin, long long offset);
    /// The size of the file; the position stays.
    std::uint32_t size();
    long long sizeEx();
    /// True when the position is at the end of the file or behind it.
    bool eof();

    // --- text ---
    /// The text up to the next line feed, which is consumed, or to the end of the file. Carriage returns are
    /// dropped wherever they stand. Empty at the end of the file.
    SAnsiString readLine(FileEncoding encoding);
    SAnsiString readLine() { return readLine(utf8); }
    /// The text from the position to the end of the file.
    SAnsiString readString(FileEncoding encoding);
    SAnsiString readString() { return readString(utf8); }
    /// Writes a text in UTF-8 without a terminator; returns the bytes written.
    std::uint32_t writeString(const SAnsiString& text);
    /// Writes EOL; returns the bytes written.
    std::uint32_t writeNewLine();

  protected:
    /// Moves the position of a handle, stores it when asked to, and says whether the system did it.
    static bool seekEx(void* handle, int origin, long long offset, long long* position = nullptr);
    /// Throw an SFileException for this file with the text and the detail of an error code of the system, or
    /// of a value of errno.
    [[noreturn]] void raiseSystemError(SFileException::ErrorCodes stage, unsigned long code) const;
    [[noreturn]] void raisePosixError(SFileException::ErrorCodes stage, int error) const;

  private:
    [[noreturn]] void raiseOwnError(SFileException::ErrorCodes stage, SFileException::DetailCodes detail,
                                    const SAnsiString& reason) const;
    void requireOpen(SFileException::ErrorCodes stage) const;
    bool isOpenNow() const noexcept;
    void openNamed(int mode, int share);
    void deleteTemporary();
    void dropReadAhead(SFileException::ErrorCodes stage);
    long long position(SFileException::ErrorCodes stage);
    long long sizeNow(SFileException::ErrorCodes stage);
    std::uint32_t readBlock(void* bytes, std::uint32_t count);
    bool readMore(int& emptyReads);
    std::uint32_t remainingBytes();

    SAnsiString name_;
    int mode_;
    void* handle_;
    bool isOpen_;
    SReadAhead* ahead_;
    SWCharString temporaryPath_;  ///< absolute: the current directory may change until close
};

}  // namespace TarnLibA500
