#pragma once

#include <cstdint>

#include "tarnlib/sfileexception.h"
#include "tarnlib/sstring.h"
#include "tarnlib/tarnapi.h"

/// One open file: blocks of bytes, lines and whole texts.
///
/// Every failure is thrown as SFileException, and the object survives it: a failed open leaves it closed with
/// the new name, a failed read or write leaves it open at an unspecified position. Names are in the process's
/// ANSI code page, whatever the C locale is, or in UTF-8 (SNarrowText), and may be longer than 260 characters;
/// bytes that are no character there make a name that no file has. Texts are UTF-8 in the file unless an
/// operation is given an encoding; a byte order mark is a character like any other. Text that is not valid
/// UTF-8 reads as empty, or, where narrow text is UTF-8, as its bytes stand; either is traced with the file and
/// the byte. Zero bytes stay. One thread at a time uses an object. What is written is with the system when
/// write returns. readLine reads ahead, 64 KiB at most, and every other operation knows of that; only changes
/// that are made through another handle meanwhile may not be seen in those bytes. What the object has read
/// ahead is overwritten when it closes the file, and a string that readLine returned can be wiped at any time,
/// so passwords may be read here.
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

/// One open file: blocks of bytes, lines and whole texts.
class TARN_API SFile {
  public:
    // --- mode of open: one access, and flags ---
    static const int readOnly = 0;       ///< access: reading
    static const int writeOnly = 1;      ///< access: writing
    static const int readAndWrite = 2;   ///< access: both
    static const int append = 8;         ///< starts at the end of the file
    static const int random = 0x10;      ///< hint: read here and there
    static const int sequential = 0x20;  ///< hint: read from front to back; goes before random
    static const int temporary = 0x40;   ///< close deletes the file that was opened
    static const int noInherit = 0x80;   ///< child processes do not get the handle, as they do otherwise
    static const int create = 0x100;     ///< makes a missing file
    static const int truncate = 0x200;   ///< makes a missing file and empties one that exists
    static const int exclusive = 0x400;  ///< makes the file and fails when it exists; not so with create

    // --- share: what others may do meanwhile; nobody may ever delete or rename the open file ---
    static const int denyNothing = 64;       ///< others may open the file for reading and for writing
    static const int denyReadAndWrite = 16;  ///< nobody else may open the file, for whatever it is
    static const int denyWrite = 32;         ///< the same: reading is denied, too, deliberately
    static const int denyRead = 48;          ///< the same: writing is denied, too, deliberately

    // --- permissions: kept for callers that also run where they count; ignored here ---
    static const int ownerRWXMask = 0700;              ///< the owner may do everything
    static const int ownerRMask = 0400;                ///< the owner may read
    static const int ownerWMask = 0200;                ///< the owner may write
    static const int ownerXMask = 0100;                ///< the owner may execute
    static const int groupRWXMask = 0;                 ///< nothing: files have no group here
    static const int groupRMask = 0;                   ///< nothing
    static const int groupWMask = 0;                   ///< nothing
    static const int groupXMask = 0;                   ///< nothing
    static const int othersRWXMask = 0;                ///< nothing: nor are others told apart
    static const int othersRMask = 0;                  ///< nothing
    static const int othersWMask = 0;                  ///< nothing
    static const int othersXMask = 0;                  ///< nothing
    static const int readMask = 0400;                  ///< for a file that is only read
    static const int writeMask = 0700;                 ///< deliberately the same as readWriteMask
    static const int readWriteMask = 0700;             ///< what callers usually pass
    static const int defaultPermissions = 0x60000000;  ///< what the file system gives anyway

    // --- origin of seek ---
    static const int seekBegin = 0;    ///< from the beginning
    static const int seekSet = 0;      ///< the same
    static const int seekCurrent = 1;  ///< from the position
    static const int seekEnd = 2;      ///< from the end

    // --- lock requests: kept for callers; no operation takes them ---
    static const int lockUnlock = 0;       ///< gives a lock back
    static const int lockRetryLock = 1;    ///< locks, waiting for it
    static const int lockNoRetryLock = 2;  ///< locks at once or not at all

    /// A carriage return and a line feed.
    static const SAnsiString EOL;

    /// What the bytes of a text are.
    enum FileEncoding {
        nativeCodePage = 0,  ///< narrow text, taken as it is
        utf8 = 1  ///< UTF-8, converted to and from the code page of narrow text, if that has another
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
    /// A file is one object's.
    SFile(const SFile&) = delete;
    /// A file is one object's.
    SFile& operator=(const SFile&) = delete;

    /// Closes what was open, takes the name and opens the file. The low two bits of the mode are the access;
    /// 3 asks for no rights at all, enough for size and seek.
    void open(const SAnsiString& name, int mode, int permissions, int share);
    /// The same with the name that the object has.
    void open(int mode, int permissions, int share);
    /// Closes the file and, when it was opened as temporary, deletes it; closeError when that fails, and the
    /// file is closed all the same. Nothing happens when the file is closed.
    void close();
    /// True between an open that succeeded and the next close.
    bool isOpen() const noexcept;
    /// The name that the object was given last, whether that could be opened or not.
    const SAnsiString& name() const noexcept { return name_; }

    // --- bytes ---
    /// Reads up to "count" bytes at the position; fewer, at last 0, near the end of the file.
    int read(void* buffer, std::uint32_t count);
    /// Writes bytes at the position; returns how many the system took.
    int write(const void* buffer, std::uint32_t count);
    /// Writes all of the bytes, in as many calls as the system wants.
    void writeAll(const void* buffer, std::uint32_t count);
    /// Hands what the system holds back to the disk. Does nothing for a file opened only for reading.
    void flush();

    // --- position and size, in bytes ---
    /// Moves by an offset from the origin (1 the position, 2 the end, all others the beginning); returns the
    /// new position. Beyond 4 GiB it raises seekError, and has moved then: use seekEx there.
    int seek(int origin, int offset);
    /// The same for positions of 64 bits.
    long long seekEx(int origin, long long offset);
    /// The size of the file; the position stays. Beyond 4 GiB it raises seekError: use sizeEx there.
    std::uint32_t size();
    /// The same in 64 bits.
    long long sizeEx();
    /// True when the position is at the end of the file or behind it.
    bool eof();

    // --- text ---
    /// The text up to the next line feed, which is consumed, or to the end of the file. Carriage returns are
    /// dropped wherever they stand. Empty at the end of the file.
    SAnsiString readLine(FileEncoding encoding);
    /// A line of UTF-8.
    SAnsiString readLine() { return readLine(utf8); }
    /// The text from the position to the end of the file.
    SAnsiString readString(FileEncoding encoding);
    /// Text in UTF-8 up to the end.
    SAnsiString readString() { return readString(utf8); }
    /// Writes a text in UTF-8 without a terminator; returns the bytes written. Text that is not valid in the
    /// code page of the C locale is left out, which is traced, up to the next zero byte. Where narrow text is
    /// UTF-8, it is written as it stands, which is traced when it is not valid.
    std::uint32_t writeString(const SAnsiString& text);
    /// Writes EOL; returns the bytes written.
    std::uint32_t writeNewLine();

  protected:
    /// Moves the position of a handle, stores it when asked to, and says whether the system did it.
    static bool seekEx(void* handle, int origin, long long offset, long long* position = nullptr);
    /// Throws an SFileException for this file with the text and the detail of an error code of the system;
    /// the failure is traced.
    [[noreturn]] void raiseSystemError(SFileException::ErrorCodes stage, unsigned long code) const;
    /// The same for a value of errno.
    [[noreturn]] void raisePosixError(SFileException::ErrorCodes stage, int error) const;

  private:
    [[noreturn]] void raiseOwnError(SFileException::ErrorCodes stage, SFileException::DetailCodes detail,
                                    const SAnsiString& reason) const;
    void requireOpen(SFileException::ErrorCodes stage) const;
    void openNamed(int mode, int share);
    void deleteTemporary();
    void dropReadAhead(SFileException::ErrorCodes stage);
    long long position(SFileException::ErrorCodes stage);
    long long sizeNow(SFileException::ErrorCodes stage);
    std::uint32_t readBlock(void* bytes, std::uint32_t count);
    bool readMore(int& emptyReads);
    SAnsiString lineText(const char* bytes, const char* end, std::uint32_t endBytes, FileEncoding encoding);
    SAnsiString longLine(FileEncoding encoding);
    void traceIllegalText(std::uint32_t bytesBack) const;
    std::uint32_t remainingBytes();

    SAnsiString name_;
    int mode_;
    void* handle_;
    bool isOpen_;
    SReadAhead* ahead_;
    SWCharString temporaryPath_;  ///< absolute: the current directory may change until close
};

}  // namespace TarnLibA500
