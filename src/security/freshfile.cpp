#include "security/freshfile.h"

#include <utility>

#include "files/osfiles.h"
#include "files/replacement.h"
#include "files/systempath.h"
#include "files/uniquename.h"
#include "tarnlib/sfilesys.h"

namespace TarnLibA500 {
namespace {

// Of the file itself where the name is a link's: it takes the place of that. (A link that leads nowhere is complained of
// by who takes the place.)
SAnsiString DirectoryOf(const SAnsiString& file) {
    SWCharString path = LongSystemPath(file);
    FollowLink(path);
    const SWCharString::iterator slash = path.findLast(L'\\');
    return slash != path.end() ? ShownPath(path.left(slash) + L"\\") : SAnsiString(".");
}

}  // namespace

FreshFile::FreshFile(const SAnsiString& target) : target_(target) {
    UniquePath fresh = TakeUniquePath(DirectoryOf(target), "~", ".tmp", true, false);
    path_ = std::move(fresh.path);
    systemPath_ = std::move(fresh.systemPath);
}

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
