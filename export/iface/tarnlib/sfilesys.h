#pragma once

#include <cstdint>

#include "tarnlib/sdatetime.h"
#include "tarnlib/sfilesysexception.h"
#include "tarnlib/ssfilesearch.h"
#include "tarnlib/sstring.h"
#include "tarnlib/tarnapi.h"

namespace TarnLibA500 {

/// Paths, files and directories: tests, listings, copying, removing, sizes, names, times.
///
/// All members are static and may be called from any thread. Every failure is thrown as SFileSysException; the
/// tests do not fail, they say no. Paths are in the process's code page, or in UTF-8 (SNarrowText), relative or
/// absolute, and may be longer than 260 characters. As everywhere on this system, blanks and full stops at the
/// end of a name are dropped and "nul.txt" is a device, unless the path begins with "\\?\". Links to
/// directories are removed and counted, never entered, unless the operation was given the link itself; nor is a
/// link entered that somebody puts in the place of a directory while an operation is at work. getFullPath,
/// toLongPath and getCurrentDirectory write "?" for characters that the code page does not have.
///
///     const SAnsiString inbox("C:\\data\\in");
///     SFileSys::makeDirectories(inbox, SFile::defaultPermissions);   // where it is missing
///     SIArray<FileProp> reports;
///     SFileSys::listing(inbox, "*.txt", reports);
///     for (const FileProp& report : reports) Print(report.name, report.size);
///     SAnsiString work = SFileSys::getTempFilename("import-");       // exists, empty, ours
///     SFileSys::copyFile(MakePath(inbox, "a.txt"), work, true);
///     SFileSys::rremove(inbox);
class TARN_API SFileSys {
  public:
    // --- tests ---
    /// True when the system shows something at this path.
    static bool exists(const SAnsiString& path);
    /// True for a directory, and for a link to one.
    static bool isDir(const SAnsiString& path);
    /// True for whatever is there and is no directory.
    static bool isFile(const SAnsiString& path);
    /// True for the root of a drive that the system has: "C:" or "C:\".
    static bool isDrive(const SAnsiString& path);
    /// True when the path depends on no current directory: "C:\...", "\\server\...".
    static bool isFullPath(const SAnsiString& path) noexcept;
    /// True for a directory and for a file with the extension exe, com, bat or cmd: this system tells by the
    /// name what can be run. fsStatFailed when there is nothing at the path.
    static bool HasOwnerExePermission(const SAnsiString& path);
    /// True unless the read-only attribute is set. fsStatFailed when there is nothing at the path.
    static bool HasOwnerWritePermission(const SAnsiString& path);

    // --- paths ---
    /// The absolute path, without "." and "..". fsStatFailed when there is none: for an empty path, and for a
    /// relative one when the current directory has no drive ("No drive letter in current directory: ...").
    static SAnsiString getFullPath(const SAnsiString& path);
    /// The same, and where the system needs that for its length (260 characters and more) behind "\\?\" or
    /// "\\?\UNC\". It does not need it where the machine's setting and the program's manifest allow long paths.
    static SAnsiString toLongPath(const SAnsiString& path);
    /// The directory that relative paths begin at, without a backslash at its end but for a root.
    static SAnsiString getCurrentDirectory();
    /// The current directory is the process's: every thread has the same.
    static void setCurrentDirectory(const SAnsiString& path);

    // --- directories; permissions are for systems where they count ---
    /// Makes one directory, which must not be there yet.
    static void makeDirectory(const SAnsiString& path, int permissions);
    /// Makes every missing level. Nothing happens when the directory is there; others may make the same levels at
    /// the same time.
    static void makeDirectories(const SAnsiString& path, int permissions);
    /// Replaces the array by the names of the entries, without "." and "..", in the system's order. The path may be
    /// an element of it; when the listing fails, the array stays as it was.
    static void listDirectory(const SAnsiString& path, SIArray<SAnsiString>& names);
    /// The same with all that the system says about them, for the names that match (see SSFileSearch).
    static void listing(const SAnsiString& path, const SAnsiString& pattern, SIArray<FileProp>& entries);
    /// How many entries of the directory are no directories.
    static unsigned countFiles(const SAnsiString& path);
    /// How many entries the directory has.
    static unsigned countAll(const SAnsiString& path);

    // --- copying, renaming, removing ---
    // Scanners, indexers and backups have fresh files open for some milliseconds. What fails because somebody has a file
    // open, or because its deletion is pending, is tried again, for one second in all in each call.

    /// Copies one file with its time and attributes. The new file appears under its name when it is whole;
    /// until then, and when something fails, what was there before stays. An old file that is replaced hands its
    /// access rights, its further streams, its attributes and, where this process may set that, its owner on, but not its
    /// hard links; the copy is on the disk before the old one goes. (A copy of a read-only file is read-only all the same.)
    /// A "to" that is a link is followed, and stays one. An old file that is read-only, or that somebody has open, cannot
    /// be replaced. Without "overwrite" an existing one is a failure.
    static void copyFile(const SAnsiString& from, const SAnsiString& to, bool overwrite);
    /// Gives the file "from" the name of the file "to", which may be missing; nothing of "from" is left then. Both
    /// are on one volume. What opens "to" meanwhile gets the old file or the whole new one. A "to" that is replaced
    /// hands on its access rights and its creation time; content, attributes, owner and the time of writing are those of
    /// "from". A link is followed, as by copyFile. fsRenameFailed otherwise: both files are under their names then, or, where
    /// the old one could not get its name back, the old one is beside the new one as "~XXXXXXXX.tmp", which the log names. So
    /// it is, too, when the process is ended in between. "from" is not flushed here: who must survive a failure of power
    /// flushes it before.
    ///
    ///     const SAnsiString fresh = MakePath(directory, "state.new");
    ///     if (state.saveToFile(fresh)) SFileSys::replaceFile(fresh, MakePath(directory, "state.dat"));
    static void replaceFile(const SAnsiString& from, const SAnsiString& to);
    /// Renames or moves a file, or within one volume a directory. An existing one is not replaced.
    static void renameFile(const SAnsiString& from, const SAnsiString& to);
    /// Removes a file or an empty directory.
    static void remove(const SAnsiString& path);
    /// Removes a file, or a directory with all that is in it. What cannot be removed stays, the rest goes,
    /// and the first failure is thrown at the end.
    static void rremove(const SAnsiString& path);
    /// Removes the files of a directory whose names match, not its directories; says how many bytes those had
    /// that are gone, also when it throws. The count stops at 4294967295.
    static void removeContent(const SAnsiString& path, const SAnsiString& pattern, std::uint32_t& freed);
    /// The same with a count that goes on.
    static void removeContentEx(const SAnsiString& path, const SAnsiString& pattern,
                                unsigned long long& freed);
    /// Removes all that is in a directory, as rremove does, but not the directory.
    static void rremoveContent(const SAnsiString& path);

    // --- sizes in bytes; the 32-bit members throw fsSizeFailed beyond 4 GiB ---
    /// Of one file.
    static std::uint32_t size(const SAnsiString& path);
    /// Of one file of any size.
    static unsigned long long sizeEx(const SAnsiString& path);
    /// Of a file, or of all files in a directory and below.
    static std::uint32_t rsize(const SAnsiString& path);
    /// The same for any size.
    static unsigned long long rsizeEx(const SAnsiString& path);
    /// The volume that the directory is on: its bytes, those that are free, and those that this user may
    /// take.
    static void diskUsageInfo(const SAnsiString& path, unsigned long long& total, unsigned long long& free,
                              unsigned long long& available);

    // --- names ---
    /// The directory for temporary files, with a backslash at the end.
    static SAnsiString getTempDirname();
    /// A new, empty file there.
    static SAnsiString getTempFilename(const SAnsiString& prefix);
    /// A path in the directory that nothing stands at: the prefix, 8 hexadecimal digits, the suffix. With
    /// "create" it is made at once, so that nobody else gets the same. A name that would mean a device has
    /// its first full stop replaced: "com4." becomes "com4x". fsUniqueNameFailed when none can be found.
    static SAnsiString getUniqueFilename(const SAnsiString& directory, const SAnsiString& prefix,
                                         const SAnsiString& suffix, bool create, int permissions);
    /// The same for a directory, without a suffix.
    static SAnsiString getUniqueDirname(const SAnsiString& directory, const SAnsiString& prefix, bool create,
                                        int permissions);

    // --- times and rights ---
    /// When the file or directory was last written.
    static SDateTime getLastModifiedTime(const SAnsiString& path);
    /// Sets that time, which the system keeps as it can: FAT to two seconds. fsSetAttributesFailed for an invalid
    /// time, and for one before 1601.
    static void setLastModifiedTime(const SAnsiString& path, const SDateTime& time);
    /// Sets the read-only attribute, or clears it when the mode has the owner's right to write (0200).
    static void giveAccess(const SAnsiString& path, int mode);
    /// Clears the read-only attribute, also of all that is in a directory and below; ends at the first
    /// failure.
    static void giveAllAccess(const SAnsiString& path, bool recursive);
    /// Nothing: files have no such owner here.
    static void setFileOwner(const SAnsiString& path, const SAnsiString& owner) noexcept;

  private:
    static bool hasOwnerPermissionHelper(const SAnsiString& path, int mask);
    static SAnsiString getUniqueFilenameHelper(const SAnsiString& directory, const SAnsiString& prefix,
                                               const SAnsiString& suffix, bool create, int permissions,
                                               bool isDirectory);
    static bool checkAndRemoveReservedDeviceName(SAnsiString& name);
};

}  // namespace TarnLibA500
