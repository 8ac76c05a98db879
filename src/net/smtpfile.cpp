#include "net/smtpfile.h"

#include <cstring>

#include "files/osfiles.h"
#include "files/systempath.h"
#include "tarnlib/sfilesys.h"

namespace TarnLibA500::smtp {
namespace {

SAnsiString MailDirectory() {
    const SAnsiString directory = SFileSys::getTempDirname() + "smtp";
    SFileSys::makeDirectories(directory, SFile::defaultPermissions);
    return directory;
}

}  // namespace

MessageFile::MessageFile(SFile& file)
    : file_(file), block_(std::make_unique_for_overwrite<char[]>(kBlockBytes)) {}

void MessageFile::write(std::string_view bytes) {
    while (!bytes.empty()) {
        const std::string_view part = bytes.substr(0, kMostRoom);
        std::memcpy(room(static_cast<unsigned>(part.size())), part.data(), part.size());
        wrote(static_cast<unsigned>(part.size()));
        bytes.remove_prefix(part.size());
    }
}

void MessageFile::flush() {
    file_.writeAll(block_.get(), count_);
    count_ = 0;
}

// From the other constructor on the destructor runs whatever fails.
TemporaryFile::Name::Name()
    : Name(SFileSys::getUniqueFilename(MailDirectory(), "tmp", "", true, SFile::defaultPermissions)) {
    systemPath = LongSystemPath(path);
}

TemporaryFile::Name::~Name() {
    try {
        SFileSys::remove(path);
    } catch (...) {  // traced where it failed; if only memory was lacking, this needs none
        osfiles::Remove(systemPath.getString());
    }
}

TemporaryFile::TemporaryFile() {
    file_.open(name_.path, SFile::readAndWrite | SFile::sequential | SFile::noInherit, SFile::readWriteMask,
               SFile::denyReadAndWrite);
}

}  // namespace TarnLibA500::smtp
