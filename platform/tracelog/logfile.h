#pragma once

#include <cstdint>
#include <string>

#include <windows.h>

namespace TraceLog400::detail {

/// One log file: opened by its first text, renamed when it is full, tried again when it failed. One thread at
/// a time.
class LogFile {
  public:
    /// A device's name; empty for the main one.
    explicit LogFile(const std::wstring& device) : device_(device) {}
    ~LogFile() { close(); }
    LogFile(const LogFile&) = delete;
    LogFile& operator=(const LogFile&) = delete;

    /// Appends whole lines. What cannot be written is counted as lost.
    void append(const char* lines, std::size_t bytes);
    /// Says how many lines were lost and not told of yet: in the log, otherwise on standard error.
    void tellLoss() noexcept;
    /// Tells the loss, closes the file and forgets what went wrong, but not what no log has told. With
    /// "discard" what was written is deleted: the file, and the last one that was renamed.
    void finish(bool discard);

    /// Counts lines that were not even handed over.
    void countLost(const char* lines, std::size_t bytes);

    unsigned long long linesLost() const { return lost_; }

  private:
    void close();
    bool isReady();
    DWORD open();
    void makeDirectory() const;
    void lookWhetherItIsThere();
    DWORD writeLines(const char* lines, std::size_t bytes, std::size_t& kept);
    bool writeAll(const char* lines, std::size_t bytes);
    bool writeWarning(const std::string& text);
    std::string textOfLoss() const;
    void reportLoss();
    void removeOld();
    void removeWritten();
    void endTornLine();
    void rotate();
    bool renameToFree();
    void fail(DWORD error);
    std::size_t fitting(const char* lines, std::size_t bytes) const;

    std::wstring device_;
    std::wstring openPath_;
    HANDLE file_ = INVALID_HANDLE_VALUE;
    std::uint64_t size_ = 0;
    ULONGLONG lastLook_ = 0;      ///< ticks: when the file was last seen at its path
    ULONGLONG nextTry_ = 0;       ///< ticks: no opening before
    ULONGLONG nextRotation_ = 0;  ///< ticks: no renaming before
    ULONGLONG nextSweep_ = 0;     ///< ticks: no look for old files before
    unsigned lastNumber_ = 0;     ///< of a full file
    std::wstring newestFull_;     ///< the last file that was renamed, where files are not kept
    bool isFailing_ = false;
    bool isTorn_ = false;          ///< the file ends inside a line that could not be cut off
    bool hasOldThatStay_ = false;  ///< an old file could not be removed, and the log says so
    unsigned long long lost_ = 0;  ///< lines, since the last report in the log
};

}  // namespace TraceLog400::detail
