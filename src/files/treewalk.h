#pragma once

#include <vector>

#include "files/directoryreader.h"
#include "files/osfiles.h"
#include "tarnlib/sstring.h"

#include <windows.h>

namespace TarnLibA500 {

/// Opens a directory so that its name stays its own: as long as it is held, nobody can rename or remove it, or
/// one that it is in, and put another or a link in its place.
osfiles::File HoldDirectory(const SWCharString& path);

/// All that is below a directory. Links are entries; what they lead to is not.
///
/// A directory is opened in the one that it was listed in, without following a link, and held while it and what is
/// below it is worked on: one that has become a link since it was listed is not entered, and none becomes one
/// later. Whoever changes what the walk finds opens it in holder() by its name, too, because an empty directory can
/// be made a link where it is.
class TreeWalk {
  public:
    enum class Care {
        None,       ///< for looking only: nothing is held, which is faster
        BelowRoot,  ///< the root may be a link; it, and what is below it, is held
        All         ///< a root that is a link is not entered either
    };
    enum class Step {
        Entry,  ///< an entry; a directory's own entries come later
        Left,  ///< the end of a directory below the root, or of what turned out to be a link: it is free again
        Failed,  ///< the directory cannot be read, or not to its end; the walk may go on
        End
    };

    TreeWalk(const SWCharString& root, Care care) : root_(root), care_(care) {}
    Step next();
    /// What an Entry is.
    const WIN32_FIND_DATAW& entry() const noexcept { return reader_.entry(); }
    /// Of the entry, or of the directory.
    const SWCharString& path() const noexcept { return path_; }
    /// The directory that an Entry, or one that was Left, is in, where it is held.
    HANDLE holder() const noexcept { return levels_.back().held.get(); }
    /// The name that it has there.
    const wchar_t* name() const noexcept { return name_.getString(); }
    /// Why a step failed.
    DWORD error() const noexcept { return error_; }

  private:
    struct Level {
        SWCharString path;
        SWCharString name;
        osfiles::File held;
        std::vector<SWCharString> below;  // the names of directories that are still to be entered
    };

    Step enterRoot();
    Step enterBelow();
    Step read(osfiles::File held);
    Step readOn();
    Step fail(DWORD error) noexcept;
    Step leave();

    SWCharString root_;
    Care care_;
    bool hasBegun_ = false;
    std::vector<Level> levels_;
    DirectoryReader reader_;  // of the lowest level
    SWCharString path_;
    SWCharString name_;
    DWORD error_ = ERROR_SUCCESS;
};

}  // namespace TarnLibA500
