#include "files/treewalk.h"

#include <utility>

#include "diag/assert/levels.h"
#include "files/systempath.h"
#include "oscodes/oscodes.h"
#include "tarnlib/straceobj.h"

namespace TarnLibA500 {
namespace {

constexpr const char* kUnit = "sfilesys";

osfiles::File Hold(const SWCharString& path, DWORD flags) {
    return osfiles::Open(path.getString(), FILE_LIST_DIRECTORY, oscodes::kShareButDelete, nullptr,
                         OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS | flags);
}

enum class Kind { Directory, Link, Other, Unknown };

/// What was opened without following a link; unknown, with the system's error, for what was not opened.
Kind KindOf(const SWCharString& path, const osfiles::File& held) {
    FILE_ATTRIBUTE_TAG_INFO info;
    WIN32_FILE_ATTRIBUTE_DATA data;
    if (!held || !osfiles::AttributesAndTag(held.get(), info)) return Kind::Unknown;
    if (!IsDirectory(info.FileAttributes)) return Kind::Other;
    if ((info.FileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0)
        return IsLinkTag(info.ReparseTag) ? Kind::Link : Kind::Directory;
    if (!osfiles::Attributes(path.getString(), data)) return Kind::Unknown;
    if ((data.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) return Kind::Directory;
    // Wine follows the links of the system below it, and tells them by their paths only; and what a handle shows as a plain
    // directory may be a cloud's by its path.
    WIN32_FIND_DATAW entry;
    if (!osfiles::FindFirst(path.getString(), entry)) return Kind::Unknown;
    return IsStoredOtherwise(entry) ? Kind::Directory : Kind::Link;
}

DWORD ErrorOf(Kind kind) {
    return kind == Kind::Other ? ERROR_DIRECTORY : GetLastError();
}

}  // namespace

osfiles::File HoldDirectory(const SWCharString& path) {
    return Hold(path, 0);
}

TreeWalk::Step TreeWalk::fail(DWORD error) noexcept {
    error_ = error;
    return Step::Failed;
}

TreeWalk::Step TreeWalk::enterRoot() {
    path_ = root_;
    if (care_ == Care::None) return read(osfiles::File());
    const bool isFollowed = care_ == Care::BelowRoot;
    osfiles::File held = Hold(root_, isFollowed ? 0 : FILE_FLAG_OPEN_REPARSE_POINT);
    const Kind kind = held && isFollowed ? Kind::Directory : KindOf(root_, held);
    if (kind == Kind::Link) return Step::End;
    return kind == Kind::Directory ? read(std::move(held)) : fail(ErrorOf(kind));
}

/// Enters one of the directories that were listed at the lowest level.
TreeWalk::Step TreeWalk::enterBelow() {
    Level& level = levels_.back();
    name_ = level.below.back();
    level.below.pop_back();
    path_ = JoinSystemPath(ExactForm(level.path), name());
    if (care_ == Care::None) return read(osfiles::File());
    osfiles::File held = osfiles::OpenIn(holder(), name(), FILE_LIST_DIRECTORY, oscodes::kShareButDelete, 0);
    const Kind kind = KindOf(path_, held);
    if (kind == Kind::Link) {
        TARN_TRACE_AT(levels::kLoss, kUnit, "%1 has become a link and is not entered", ShownPath(path_));
        return Step::Left;
    }
    return kind == Kind::Directory ? read(std::move(held)) : fail(ErrorOf(kind));
}

/// Begins to read the directory path_ and gives its first entry.
TreeWalk::Step TreeWalk::read(osfiles::File held) {
    if (!reader_.open(path_)) return fail(reader_.error());
    levels_.push_back({path_, name_, std::move(held), {}});
    return readOn();
}

/// The next entry of the lowest level; behind the last one goes a level down or up.
TreeWalk::Step TreeWalk::readOn() {
    Level& level = levels_.back();
    if (reader_.isOpen()) {
        if (reader_.next()) {
            name_ = entry().cFileName;
            path_ = JoinSystemPath(ExactForm(level.path), name());
            if (IsOwnDirectory(entry())) level.below.push_back(name_);
            return Step::Entry;
        }
        path_ = level.path;
        if (reader_.error() != ERROR_SUCCESS) return fail(reader_.error());
    }
    return level.below.empty() ? leave() : enterBelow();
}

TreeWalk::Step TreeWalk::leave() {
    path_ = levels_.back().path;
    name_ = levels_.back().name;
    levels_.pop_back();
    return levels_.empty() ? Step::End : Step::Left;
}

TreeWalk::Step TreeWalk::next() {
    if (!hasBegun_) {
        hasBegun_ = true;
        return enterRoot();
    }
    return levels_.empty() ? Step::End : readOn();
}

}  // namespace TarnLibA500
