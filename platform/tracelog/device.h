#pragma once

#include <mutex>
#include <string>

#include "tracelog/logfile.h"
#include "tracelog/tracelog.h"

namespace TraceLog400::detail {

/// A device that gathers lines and writes them to a log file.
class FileDevice final : public Device {
  public:
    explicit FileDevice(const char* name);

    void write(const char* line, std::size_t bytes) override;
    void flush() override;
    void path(TextTarget& out) const override;

    const std::string& name() const { return name_; }
    /// Gives the file back; deletes it unless files are kept.
    void close();
    /// Writes what is waiting if no other thread is at it: for the end of the process, when threads may have
    /// been stopped anywhere.
    void flushIfFree();
    /// A line for people.
    std::string description() const;

  private:
    std::string pathText() const;
    void drain();

    std::string name_;
    mutable std::mutex mutex_;  ///< guards the rest
    LogFile file_;
    std::string waiting_;
};

}  // namespace TraceLog400::detail
