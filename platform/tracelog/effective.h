#pragma once

#include <atomic>
#include <string>

#include "tracelog/tracelog.h"

/// What is in effect in the process: read at every trace point without a lock, changed seldom.
namespace TraceLog400::detail {

/// Keeps a copy of every different value that was ever published, so that readers need no lock: they are few,
/// and a reader may hold an old one for as long as it likes. What is published again is found again, so that
/// starting and stopping takes no more memory each time. Needs no construction and no destruction: it serves
/// trace points before and after static objects.
template <class T>
class Published {
  public:
    /// Null before the first, and after nothing was published.
    const T* get() const { return current_.load(std::memory_order_acquire); }
    void publishNothing() { current_.store(nullptr, std::memory_order_release); }
    void publish(const T& value) {
        const Version* version = find(value);
        if (version == nullptr) version = add(value);
        current_.store(&version->value, std::memory_order_release);
    }

  private:
    struct Version {
        T value;
        const Version* before;
    };
    const Version* find(const T& value) const {
        const Version* version = newest_.load(std::memory_order_acquire);
        while (version != nullptr && !(version->value == value)) version = version->before;
        return version;
    }
    const Version* add(const T& value) {
        auto* const made = new Version{value, newest_.load(std::memory_order_acquire)};
        while (!newest_.compare_exchange_weak(made->before, made)) continue;
        return made;
    }

    std::atomic<const Version*> newest_{nullptr};
    std::atomic<const T*> current_{nullptr};
};

/// Who writes, and where.
struct Identity {
    std::string component;   ///< UTF-8
    std::wstring fileStem;   ///< the component, without what file names cannot have
    std::string linePrefix;  ///< " component process "
    bool operator==(const Identity&) const = default;
};

/// How files are written. Changed under way.
struct FileSettings {
    std::atomic<std::uint64_t> sizeLimit{0};
    std::atomic<unsigned> countLimit{0};
    std::atomic<unsigned> dayLimit{0};
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
/// The path of a device's log ("": the main one).
std::wstring PathOfLog(const std::wstring& device);

bool PassesFilter(const char* file, int line);
void PublishFilter(const ByFileLine& filter);
void RemoveFilter();
void PrintFilter(TextTarget& out);
/// Back to the mask before the first apply.
void ResetMask();

Device& MainDevice();
void FlushDevices();
void PrintDevices(TextTarget& out);

/// The letter of a line: d l m h c, "-" for an event without importance.
char ImportanceLetter(const EventInfo& event);

/// How many of the first "bytes" bytes of a UTF-8 text are whole characters. The text must have one byte
/// more, or its terminator.
std::size_t WholeCharacters(const char* text, std::size_t bytes);

std::wstring ToWide(const std::string& utf8);
std::string ToUtf8(const std::wstring& text);

}  // namespace TraceLog400::detail
