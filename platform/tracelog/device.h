#pragma once

#include <string>

#include "tracelog/logfile.h"
#include "tracelog/tracelog.h"
#include "waiting/waiting.h"

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
    /// Writes what is waiting, and how much was lost, if no other thread is at it: for the end of the process
    /// or of the module, when threads may have been ended anywhere.
    void finishIfFree();
    /// A line for people.
    std::string description() const;

  private:
    std::string pathText() const;
    void add(const char* line, std::size_t bytes);
    void drain();
    void writeAside(const char* line, std::size_t bytes) const;

    std::string name_;
    mutable waiting::Lock lock_;  ///< guards the rest
    LogFile file_;
    std::string waiting_;
};

}  // namespace TraceLog400::detail
