#include "streams.h"

#include <cstdio>

#include "command.h"
#include "system.h"
#include "tarnlib/sfilesys.h"
#include "tarnlib/smonotonicclock.h"

#include <io.h>

namespace tarn {
namespace {

using TarnLibA500::SAnsiString;
using TarnLibA500::SFile;
using TarnLibA500::SFileException;
using TarnLibA500::SFileSys;
using TarnLibA500::SFileSysException;
using TarnLibA500::SMonotonicClock;

constexpr std::size_t kBlock = 64 * 1024;
constexpr unsigned long long kProgressMilliseconds = 250;
constexpr std::size_t kProgressWidth = 70;

// A failure's text without the line end that the system's reasons have.
std::string Reason(SAnsiString text) {
    return Str(text.trimRight());
}

std::string ReadFromStandardInput(std::size_t count) {
    std::string bytes(count, '\0');
    bytes.resize(std::fread(bytes.data(), 1, count, stdin));
    if (std::ferror(stdin) != 0) throw Failure("cannot read standard input");
    return bytes;
}

std::string ReadFromFile(SFile& file, std::size_t count) {
    std::string bytes(count, '\0');
    std::size_t done = 0;
    while (done < count) {
        const int more = file.read(bytes.data() + done, static_cast<std::uint32_t>(count - done));
        if (more <= 0) break;
        done += static_cast<std::size_t>(more);
    }
    bytes.resize(done);
    return bytes;
}

// In which a file is made; "C:name" stands in the current directory of a drive.
std::string DirectoryOf(const std::string& name) {
    const std::size_t slash = name.find_last_of("/\\");
    if (slash != name.npos) return name.substr(0, slash + 1);
    return name.size() > 1 && name[1] == ':' ? name.substr(0, 2) + "." : ".";
}

std::string Mebibytes(unsigned long long bytes) {
    return std::to_string(bytes >> 20) + " MiB";
}

// How far a work is after a time: 45 %, 120 MiB of 266 MiB, 60 MiB/s, 3 s left.
std::string ProgressText(unsigned long long done, long long total, unsigned long long milliseconds) {
    constexpr unsigned long long kSecond = 1000;
    const unsigned long long perSecond = done * kSecond / (milliseconds + 1);
    const std::string rate = Mebibytes(perSecond) + "/s";
    if (total <= 0) return Mebibytes(done) + ", " + rate;
    const auto all = static_cast<unsigned long long>(total);
    const unsigned long long left = (all > done ? all - done : 0) / (perSecond + 1);
    return std::to_string(done * 100 / all) + " %, " + Mebibytes(done) + " of " + Mebibytes(all) + ", " +
           rate + ", " + std::to_string(left) + " s left";
}

}  // namespace

bool IsStandardStream(const std::string& name) {
    return name == "-";
}

// ------------------------------------------------------------------------------------------------ reading

Source::Source(const std::string& name) {
    if (IsStandardStream(name)) return;
    file_ = std::make_unique<SFile>(name.c_str(), SFile::readOnly | SFile::sequential, SFile::readWriteMask,
                                    SFile::denyNothing);
    size_ = file_->sizeEx();
}

std::string Source::read(std::size_t count) {
    return file_ ? ReadFromFile(*file_, count) : ReadFromStandardInput(count);
}

// ------------------------------------------------------------------------------------------------ writing

// Runs a step of writing the file; a failure of the temporary file is one of the file that was asked for.
template <class Action>
void Target::attempt(Action action) {
    try {
        action();
    } catch (const SFileException& failure) {
        throw Failure("cannot write " + name_ + ": " + Reason(failure.reason()));
    } catch (const SFileSysException& failure) {
        throw Failure("cannot write " + name_ + ": " + Reason(failure.reason()));
    }
}

Target::Target(const std::string& name) : name_(name) {
    if (IsStandardStream(name)) return;
    const SAnsiString directory = DirectoryOf(name).c_str();
    attempt([&] {
        temporary_.path =
            SFileSys::getUniqueFilename(directory, "tarn", ".tmp", true, SFile::defaultPermissions);
        file_.open(temporary_.path, SFile::writeOnly, SFile::readWriteMask, SFile::denyNothing);
    });
}

Target::Temporary::~Temporary() {
    if (path.isEmpty()) return;
    try {
        SFileSys::remove(path);
    } catch (const SFileSysException& failure) {
        PrintError(Reason(failure.toString()));
    }
}

void Target::write(const std::string& bytes) {
    if (!IsStandardStream(name_)) {
        attempt([&] { file_.writeAll(bytes.data(), static_cast<std::uint32_t>(bytes.size())); });
    } else if (!WriteOutput(bytes)) {
        throw Failure("cannot write standard output");
    }
}

void Target::finish() {
    if (IsStandardStream(name_)) return;
    attempt([&] {
        file_.close();
        SFileSys::replaceFile(temporary_.path, name_.c_str());
    });
    temporary_.path = SAnsiString();
}

// ------------------------------------------------------------------------------------------------ later

void Spool::write(const std::string& text) {
    text_ += text;
    if (text_.size() < kBlock) return;
    if (!file_) {
        file_ =
            std::make_unique<SFile>(SFileSys::getTempFilename("tarn"), SFile::readAndWrite | SFile::temporary,
                                    SFile::readWriteMask, SFile::denyNothing);
    }
    file_->writeAll(text_.data(), static_cast<std::uint32_t>(text_.size()));
    text_.clear();
}

void Spool::print() {
    if (file_) {
        file_->seekEx(SFile::seekBegin, 0);
        for (std::string block = ReadFromFile(*file_, kBlock); !block.empty();
             block = ReadFromFile(*file_, kBlock))
            Print(block);
    }
    Print(text_);
}

// ------------------------------------------------------------------------------------------------ progress

Progress::Progress(long long total)
    : total_(total),
      isTerminal_(_isatty(_fileno(stderr)) != 0),
      began_(SMonotonicClock::GetMilliseconds()),
      next_(began_ + kProgressMilliseconds) {}

Progress::~Progress() {
    if (isShown_) PrintPieceOfError("\r" + std::string(kProgressWidth, ' ') + "\r");
}

void Progress::show(unsigned long long done) {
    const unsigned long long now = SMonotonicClock::GetMilliseconds();
    if (!isTerminal_ || now < next_) return;
    std::string line = "\r" + ProgressText(done, total_, now - began_);
    line.resize(kProgressWidth + 1, ' ');
    PrintPieceOfError(line);
    isShown_ = true;
    next_ = now + kProgressMilliseconds;
}

}  // namespace tarn
