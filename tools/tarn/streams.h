#pragma once

#include <memory>
#include <string>

#include "tarnlib/sfile.h"

/// Files of any size, and the standard streams, which are named "-". What fails is thrown and names what the user asked
/// for.
namespace tarn {

/// Standard input or output in place of a file.
bool IsStandardStream(const std::string& name);

/// What is read.
class Source {
  public:
    explicit Source(const std::string& name);
    /// The next bytes; fewer than asked for only at the end.
    std::string read(std::size_t count);
    /// In bytes; -1 when it is not known.
    long long size() const { return size_; }
    void close() { file_.reset(); }

  private:
    std::unique_ptr<TarnLibA500::SFile> file_;  ///< none for standard input
    long long size_ = -1;
};

/// What is written. A file takes its name when it is whole; until then another of that name stays as it was.
class Target {
  public:
    explicit Target(const std::string& name);
    void write(const std::string& bytes);
    /// Gives the file its name. Without it nothing is left behind.
    void finish();

  private:
    /// A file in the directory of the one that was asked for, removed with the object.
    struct Temporary {
        ~Temporary();
        TarnLibA500::SAnsiString path;  ///< empty when there is none
    };
    template <class Action>
    void attempt(Action action);

    std::string name_;
    Temporary temporary_;
    TarnLibA500::SFile file_;
};

/// Text for later, in memory while it is short, then in a temporary file.
class Spool {
  public:
    void write(const std::string& text);
    /// Prints all of it.
    void print();

  private:
    std::string text_;
    std::unique_ptr<TarnLibA500::SFile> file_;
};

/// A line on a terminal that tells how far a long work is. Says nothing elsewhere.
class Progress {
  public:
    /// The bytes to be done; -1 when nobody knows.
    explicit Progress(long long total);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    bool isSeen() const { return isTerminal_; }
    void show(unsigned long long done);

  private:
    long long total_;
    bool isTerminal_;
    bool isShown_ = false;
    unsigned long long began_;  ///< in milliseconds of the monotonic clock
    unsigned long long next_;   ///< when it is shown again
};

}  // namespace tarn
