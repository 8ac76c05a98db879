#include "security/freshfile.h"

#include "files/osfiles.h"
#include "files/systempath.h"
#include "tarnlib/sfile.h"
#include "tarnlib/sfilesys.h"

namespace TarnLibA500 {
namespace {

SAnsiString DirectoryOf(const SAnsiString& file) {
    const SWCharString path = LongSystemPath(file);
    const SWCharString::iterator slash = path.findLast(L'\\');
    return slash != path.end() ? ShownPath(path.left(slash) + L"\\") : SAnsiString(".");
}

}  // namespace

FreshFile::FreshFile(const SAnsiString& target)
    : target_(target),
      path_(SFileSys::getUniqueFilename(DirectoryOf(target), "~", ".tmp", true, SFile::defaultPermissions)),
      systemPath_(LongSystemPath(path_)) {}

FreshFile::~FreshFile() {
    if (path_.isEmpty()) return;
    try {
        SFileSys::remove(path_);
    } catch (...) {  // traced where it failed; if only memory was lacking, this needs none
        osfiles::Remove(systemPath_.getString());
    }
}

void FreshFile::takePlace() {
    SFileSys::replaceFile(path_, target_);
    path_.empty();
}

}  // namespace TarnLibA500
