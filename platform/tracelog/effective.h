#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "tracelog/tracelog.h"

/// What is in effect in the process: read at every trace point without a lock, changed seldom.
namespace TraceLog400::detail {

/// Keeps every version of a value that was ever published, so that readers need no lock: versions are few,
/// and a reader may hold an old one for as long as it likes.
template <class T>
class Published {
  public:
    /// Null before the first.
    const T* get() const { return current_.load(std::memory_order_acquire); }
    void publish(const T& value) {
        const std::lock_guard<std::mutex> guard(mutex_);
        versions_.push_back(std::make_unique<const T>(value));
        current_.store(versions_.back().get(), std::memory_order_release);
    }

  private:
    std::atomic<const T*> current_{nullptr};
    std::mutex mutex_;
    std::vector<std::unique_ptr<const T>> versions_;
};

/// Who writes, and where.
struct Identity {
    std::string component;   ///< UTF-8
    std::wstring fileStem;   ///< component_process, without what file names cannot have
    std::string linePrefix;  ///< " component process "
};

/// How files are written. Changed under way.
struct FileSettings {
    std::atomic<std::uint64_t> sizeLimit{0};
    std::atomic<bool> alwaysClose{false};
    std::atomic<bool> keep{true};
    std::atomic<bool> buffered{false};
};
extern FileSettings fileSettings;

/// True between ActivationConfig::apply and close_all, unless nothing is to be written.
extern std::atomic<bool> isWriting;
extern std::atomic<bool> toStandardOutput;

const Identity& CurrentIdentity();
/// With a slash at its end, in the form that long paths need; empty for the current directory.
std::wstring CurrentDirectoryOfLogs();

bool PassesFilter(const char* file, int line);
void PublishFilter(const ByFileLine& filter);
void PrintFilter(TextTarget& out);

Device& MainDevice();
void FlushDevices();
void PrintDevices(TextTarget& out);

/// The letter of a line: d l m h c, "-" for an event without importance.
char ImportanceLetter(const EventInfo& event);

/// At most so many bytes of a UTF-8 text, so that no character is cut; the text must have one byte more, or
/// its terminator.
std::size_t WholeCharacters(const char* text, std::size_t bytes);

std::wstring ToWide(const std::string& utf8);
std::string ToUtf8(const std::wstring& text);

}  // namespace TraceLog400::detail
