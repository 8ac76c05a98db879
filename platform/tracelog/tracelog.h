#pragma once

#include <cstddef>
#include <cstdint>

/// The tracing engine: devices (log files), a mask and a file filter that say which events are written,
/// loggers that write one line a record, contexts that travel with calls between processes, and scopes that
/// take time.
///
/// The engine is process-wide and starts switched off: without a configuration nothing is written and nothing
/// is opened. All functions may be called from any thread at any time. Loggers, brackets of calls, context
/// variables and tick never throw; configuring, creating devices and printing throw std::bad_alloc and
/// nothing else. Texts are UTF-8; the engine makes one line of every text. It starts no thread: whoever
/// drives it calls State::tick.
///
///     LogFileConfig files;
///     files.directory = "C:\\logs";
///     files.size = 10 << 20;                               // bytes
///     files.apply();
///     EvalConfig masks;
///     if (!masks.assign_mask("mw")) ...                    // an unknown letter; nothing changed
///     masks.apply();
///     ActivationConfig activation;
///     activation.component = "mailer";
///     activation.apply();
///
///     EventInfo event;
///     event.importance = 2;
///     if (event.would_trace()) Logger(Logger::S, event) << "sent " << 12 << " mails";
///     DeviceAdmin::get().close_all();
///
/// A line of a log:
///
///     2026-11-21T08:15:02.125+01:00 m mailer 1234 5678 [ActionID=7f3a-12] smtp(212) sent 12 mails
///
/// date and time with the offset from UTC, importance, component, process, thread, context ("[]": none), file
/// and line ("-": unknown), text.
#if defined(TRACELOG_STATIC)
/// Marks what the module exports.
#define TRACELOG_API
#elif defined(tracelog_EXPORTS)
#define TRACELOG_API __declspec(dllexport)
#else
#define TRACELOG_API __declspec(dllimport)
#endif

namespace TraceLog400 {

/// Takes text in pieces: the way in which the engine hands out texts of any length.
class TextTarget {
  public:
    /// The next piece; it has no terminator.
    virtual void append(const char* text, std::size_t bytes) = 0;

  protected:
    ~TextTarget() = default;
};

/// What is known of one event before its text is made.
struct EventInfo {
    int importance = -1;         ///< 0 (detail) to 4 (critical); -1: none, another value counts as 2
    int attribute = -1;          ///< the second attribute, 1 to 3; -1: none, another value counts as none
    int direct = -1;             ///< 0 to 3: counts in place of the other two; -1: none
    const char* file = nullptr;  ///< a source file or the name of a unit; null: unknown
    int line = 0;                ///< 0: unknown
    unsigned marker = 0;         ///< not 0: the text is written behind "# "

    /// True when the mask lets the event through and the file filter does not hold it back.
    TRACELOG_API bool would_trace() const;
    /// False when the file filter holds the event back, whatever the mask says.
    TRACELOG_API bool passes_filter() const;
};

/// Picks events by their source file: only those that were set, or with invert all but those.
class ByFileLine {
  public:
    /// Passes everything.
    TRACELOG_API ByFileLine();
    TRACELOG_API ~ByFileLine();
    /// A copy, independent of the other.
    TRACELOG_API ByFileLine(const ByFileLine& other);
    /// Takes the files of the other.
    TRACELOG_API ByFileLine& operator=(const ByFileLine& other);

    /// Adds a file. The directory may be empty, otherwise it must stand directly before the name in an
    /// event's path. Case and the kind of slash do not matter; where one of the two names has no extension,
    /// extensions are not compared.
    TRACELOG_API void set(const char* directory, const char* name);
    /// With true, all files but those that were set pass.
    TRACELOG_API void invert(bool on);
    /// True when the event passes. With no file set everything passes. An event without a file passes only
    /// when inverted.
    TRACELOG_API bool predicate(const char* file, int line) const;
    /// True for the same files, spelled and ordered in the same way.
    TRACELOG_API bool isSameAs(const ByFileLine& other) const;
    /// One line a file, "  directory\name"; first "  all files except:" when inverted, "  all files" when
    /// empty.
    TRACELOG_API void print(TextTarget& out) const;

  private:
    struct Files;
    Files* files_;
};

/// Which events are written. The letters of a mask, in either case:
///
///     d l m h c   importance 0 to 4: this one and all above it
///     w e s       second attribute 2, 3, 1
///     0 1 2 3     direct attribute
///     *           everything            -   nothing (what stands before it is dropped)
class EvalConfig {
  public:
    /// Starts from what is in effect; before the first apply that is "cw".
    TRACELOG_API EvalConfig();
    /// Replaces the mask. False, with the mask unchanged, for an empty text and for one with an unknown
    /// letter.
    TRACELOG_API bool assign_mask(const char* letters);
    /// Adds letters to the mask; the result is as above.
    TRACELOG_API bool add_mask(const char* letters);
    /// The mask in its shortest spelling, "-" for the empty one.
    TRACELOG_API void mask(TextTarget& out) const;
    /// The known letters, for messages: "d l m h c w e s 0 1 2 3 * -".
    TRACELOG_API static const char* known_letters();
    /// Sets the file filter.
    TRACELOG_API void assign_filter(const ByFileLine& filter);
    /// True when an event with these attributes passes this mask, whatever its file.
    TRACELOG_API bool passes(const EventInfo& event) const;
    /// Puts it into effect, at once for all threads.
    TRACELOG_API void apply() const;

  private:
    std::uint32_t bits_;
    ByFileLine filter_;
    bool filterIsSet_ = false;
};

/// Where log files are, how large they grow and how many stay. The component's files in the directory are
/// looked at when a file is begun and once an hour: those beyond the limits go, the oldest first. Never touched
/// are files with names of another making, those of other processes that live, and those that somebody has
/// open; other living processes' files do not count either.
struct LogFileConfig {
    const char* directory = nullptr;  ///< must exist by the time of the first line; null: the current one
    std::uint64_t size = 0;           ///< bytes after which a new file is begun; 0: no limit
    unsigned files = 0;               ///< how many of the component's files stay; 0: no limit
    unsigned days = 0;                ///< after which a file that is not written any more goes; 0: never
    /// Puts it into effect, at once for all threads.
    TRACELOG_API void apply() const;
};

/// Whether and how anything is written at all.
struct ActivationConfig {
    bool never = false;               ///< write nothing, not even assertions
    bool always_close = false;        ///< open and close the file around every line
    bool keep = true;                 ///< false: files are deleted by close_all
    bool buffered = false;            ///< lines may wait for State::tick, except those that matter most
    const char* component = nullptr;  ///< in lines and file names; null or empty: the program's file name
    /// Puts it into effect, at once for all threads.
    TRACELOG_API void apply() const;
};

/// Whether lines also go to standard output.
struct DisplayConfig {
    bool to_stdout = false;  ///< every line, whichever its device
    /// Puts it into effect, at once for all threads.
    TRACELOG_API void apply() const;
};

/// Names a device that is to be created: "main", "request", "sdk" or another name of letters and digits.
struct DeviceInfo {
    /// The name is not copied.
    explicit DeviceInfo(const char* deviceName) : name(deviceName) {}
    const char* name;  ///< UTF-8, and part of the file's name
};

/// A log file that is opened by its first line. It is named component_process.log; another device than "main"
/// is named component_process.device.log. Control characters and line separators in texts become \r, \n,
/// \xNN, \uNNNN.
///
/// Lines of importance 3 and above, those with the second attribute 2, warnings and assertions are handed to
/// the system at once, also while lines may wait.
///
/// A file that reaches the size limit is renamed to component_process.001.log and so on (the first free
/// number) and a new one is begun; when the renaming fails, the old file goes on growing and it is tried
/// again later. When a line cannot be written, one line on standard error and to the debugger says why; the
/// device goes on, tries again at most once a second (making the directory anew where it is gone), and then
/// says in the log how many lines were lost. What is lost when all files are closed is told then, on standard
/// error if it must be, and stands in the next log as well.
///
/// While the process ends, a line of a device that an ended thread was writing to goes into the file by
/// itself; what waited there is lost.
class Device {
  public:
    /// Writes a whole line, without its end.
    virtual void write(const char* line, std::size_t bytes) = 0;
    /// Hands everything to the system.
    virtual void flush() = 0;
    /// The file's path, whether it is open or not.
    virtual void path(TextTarget& out) const = 0;

  protected:
    ~Device() = default;
};

/// Keeps the devices. They live until the process ends.
class DeviceAdmin {
  public:
    /// The only one.
    TRACELOG_API static DeviceAdmin& get();
    /// Null when there is none of this name. "main" is always there.
    TRACELOG_API Device* device(const char* name);
    /// The device of this name, made when needed.
    TRACELOG_API Device* create(const DeviceInfo& info);
    /// Closes all files, deletes them unless they are to be kept, forgets all devices but "main", and
    /// switches the engine off as it was at the start. Takes no memory unless lines are waiting.
    TRACELOG_API void close_all() noexcept;
};

/// One record: text is streamed in, and the line is written when the temporary goes.
class Logger {
  public:
    /// What kind of record it is: decides whether it is written, and its letter.
    enum Kind {
        M,        ///< a message of the engine or its driver: always written
        S,        ///< an event: written when it would trace
        XL,       ///< the same for long texts: cut at 1 MiB, where others are cut at 64 KiB
        Warning,  ///< a warning: always written
        Assert    ///< an assertion or a wrong setting: always written, and handed to the system at once
    };
    /// To the device "main".
    TRACELOG_API explicit Logger(Kind kind, const EventInfo& event = EventInfo());
    /// To another device than "main".
    TRACELOG_API Logger(Kind kind, const EventInfo& event, Device* device);
    TRACELOG_API ~Logger();
    Logger(const Logger&) = delete;
    Logger& operator=(const Logger&) = delete;

    /// Appends a text; null appends nothing.
    TRACELOG_API Logger& operator<<(const char* text);
    /// Appends a number in decimal digits.
    TRACELOG_API Logger& operator<<(long long number);
    /// Appends "bytes" bytes, zeros included; a character must not be cut between two calls.
    TRACELOG_API Logger& write(const char* text, std::size_t bytes);

  private:
    static constexpr std::size_t kUsualBytes = 1024;  // the line of most records
    bool grow(std::size_t bytes);

    EventInfo event_;
    Kind kind_;
    bool on_;
    bool isCut_ = false;
    Device* device_;
    char* text_;
    std::size_t bytes_ = 0;
    std::size_t capacity_ = kUsualBytes;
    char usual_[kUsualBytes];
};

/// Takes the time between its making and its end.
class Scope {
  public:
    /// What is said of a scope.
    class Builder {
      public:
        /// What the scope is called; null: nothing. Not copied.
        Builder& label(const char* text) {
            label_ = text != nullptr ? text : "";
            return *this;
        }
        /// A caller's context; null: none. Not copied.
        Builder& context(const char* text) {
            context_ = text;
            return *this;
        }
        const char* label_ = "";    ///< what label was given
        const char* context_ = "";  ///< what context was given
    };
    /// Begins to count.
    TRACELOG_API explicit Scope(const Builder& builder);
    /// How long it has lasted so far.
    TRACELOG_API std::uint64_t microseconds() const;

  private:
    std::int64_t start_;
};

namespace Context {
/// The variables of the request that the thread works on. Names and values are UTF-8 of up to 1,024 bytes
/// each; 64 variables at most. What is too much is left out.
struct Updater {
    /// An empty value removes the variable.
    TRACELOG_API static void set(const char* name, const char* value);
    /// Removes all variables of the thread's request.
    TRACELOG_API static void clear();
};
/// What is known of the request that the thread works on.
struct Info {
    /// True when the thread works on a request: after before_incoming_call or set.
    TRACELOG_API static bool has();
    /// True when an incoming call brought its context along.
    TRACELOG_API static bool came_from_outside();
    /// False, with nothing appended, when there is no such variable.
    TRACELOG_API static bool get(const char* name, TextTarget& out);
};
}  // namespace Context

/// Brackets of calls between processes. The context travels as text, "name=value;name=value" with % before
/// two hex digits for the bytes that would not be read back, 8 KiB at most; what is not such a text is
/// ignored. Each bracket traces its beginning and end as an event of importance 1. Brackets may be left without
/// their ends, by an exception for instance: the end of an incoming call drops the outgoing ones that are open
/// in it, and of more than 256 the outermost is given up.
struct Interceptors {
    /// Puts the thread's context aside and starts one from the caller's text. A call without "ActionID" gets
    /// a new one.
    TRACELOG_API static void before_incoming_call(const Scope::Builder& call);
    /// Hands out the context for the reply and takes up the one put aside.
    TRACELOG_API static void after_incoming_call(TextTarget& context);
    /// Hands out the context to send. A thread without "ActionID" gets a new one for as long as the call
    /// takes.
    TRACELOG_API static void before_outgoing_call(const Scope::Builder& call, TextTarget& context);
    /// Takes the variables of the reply into the thread's context, all but "ActionID".
    TRACELOG_API static void after_outgoing_call(const char* context);
    /// The same when there was no reply.
    TRACELOG_API static void after_outgoing_call_no_response();
};

/// The engine as a whole.
struct State {
    /// The settings in effect, the devices and the lines lost, for people.
    TRACELOG_API static void print(TextTarget& out);
    /// Hands to the system what has been waiting. Call it every 200 ms or so while buffered is on.
    TRACELOG_API static void tick();
};

/// Seconds since the engine was loaded.
TRACELOG_API std::uint64_t major_tick();

}  // namespace TraceLog400
