#include "files/treewalk.h"

#include "diag/levels.h"
#include "files/systempath.h"
#include "tarnlib/straceobj.h"

namespace TarnLibA500 {
namespace {

constexpr const char* kUnit = "sfilesys";

osfiles::File Hold(const SWCharString& path, DWORD flags) {
    return osfiles::Open(path.getString(), FILE_LIST_DIRECTORY, osfiles::kShareButDelete, nullptr,
                         OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS | flags);
}

enum class Kind { Directory, Link, Other, Unknown };

/// What a directory that is held is. Its name is its own then, so it may be asked by that. (By the handle Wine
/// does not tell a link from what it leads to.)
Kind KindOf(const SWCharString& path, const osfiles::File& held) {
    WIN32_FILE_ATTRIBUTE_DATA data;
    if (!osfiles::Attributes(path.getString(), data)) return Kind::Unknown;
    if (!IsDirectory(data.dwFileAttributes)) return Kind::Other;
    if ((data.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) return Kind::Directory;
    DWORD tag = 0;
    if (!osfiles::ReparseTag(held.get(), tag)) return Kind::Unknown;
    return IsLinkTag(tag) ? Kind::Link : Kind::Directory;
}

}  // namespace

osfiles::File HoldDirectory(const SWCharString& path) {
    return Hold(path, 0);
}

TreeWalk::Step TreeWalk::fail(DWORD error) noexcept {
    error_ = error;
    return Step::Failed;
}

/// Begins to read a directory and gives its first entry.
TreeWalk::Step TreeWalk::enter(const SWCharString& directory, Root kind) {
    path_ = directory;
    const bool isFollowed = kind == Root::MayBeLink;
    osfiles::File held = Hold(directory, isFollowed ? 0 : FILE_FLAG_OPEN_REPARSE_POINT);
    if (!held) return fail(GetLastError());
    switch (isFollowed ? Kind::Directory : KindOf(directory, held)) {
        case Kind::Unknown:
            return fail(GetLastError());
        case Kind::Other:
            return fail(ERROR_DIRECTORY);
        case Kind::Link:
            if (levels_.empty()) return Step::End;
            TARN_TRACE_AT(levels::kLoss, kUnit, "%1 has become a link and is not entered",
                          ShownPath(directory));
            return Step::Left;
        case Kind::Directory:
            break;
    }
    if (!reader_.open(directory)) return fail(reader_.error());
    levels_.push_back({directory, std::move(held), {}});
    return readOn();
}

/// The next entry of the lowest level; behind the last one goes a level down or up.
TreeWalk::Step TreeWalk::readOn() {
    Level& level = levels_.back();
    if (reader_.isOpen()) {
        if (reader_.next()) {
            path_ = JoinSystemPath(ExactForm(level.path), entry().cFileName);
            if (IsOwnDirectory(entry())) level.below.emplace_back(entry().cFileName);
            return Step::Entry;
        }
        path_ = level.path;
        if (reader_.error() != ERROR_SUCCESS) return fail(reader_.error());
    }
    if (level.below.empty()) return leave();
    const SWCharString next = JoinSystemPath(ExactForm(level.path), level.below.back().getString());
    level.below.pop_back();
    return enter(next, Root::IsNoLink);
}

TreeWalk::Step TreeWalk::leave() {
    path_ = levels_.back().path;
    levels_.pop_back();
    return levels_.empty() ? Step::End : Step::Left;
}

TreeWalk::Step TreeWalk::next() {
    if (!hasBegun_) {
        hasBegun_ = true;
        return enter(root_, kind_);
    }
    return levels_.empty() ? Step::End : readOn();
}

}  // namespace TarnLibA500
