#include <algorithm>

#include "command.h"
#include "options.h"
#include "system.h"
#include "tarnlib/pathparts.h"
#include "tarnlib/sdatetime.h"
#include "tarnlib/sdirectorychangewatcher.h"
#include "tarnlib/sfile.h"
#include "tarnlib/sfilesys.h"
#include "tarnlib/smonotonicclock.h"

namespace tarn {
namespace {

using TarnLibA500::FileProp;
using TarnLibA500::SAnsiString;
using TarnLibA500::SDateTime;
using TarnLibA500::SDirectoryChange;
using TarnLibA500::SDirectoryChangeWatcher;
using TarnLibA500::SFile;
using TarnLibA500::SFileSys;
using TarnLibA500::SIArray;
using TarnLibA500::SMonotonicClock;
using TarnLibA500::STimeZone;

constexpr int kMaxSeconds = 24 * 60 * 60;

constexpr const char* kHelp =
    "one of\n"
    "  -list D [-pattern P] [-recurse]      the entries of a directory: bytes, time, name\n"
    "  -size P                              the bytes of a file, or of all files below a directory\n"
    "  -copy F -to G [-overwrite]           copies a file, as a whole or not at all\n"
    "  -remove P [-recurse]                 removes a file or an empty directory; all that is in it\n"
    "  -watch D -seconds N [-recurse]       prints what changes in a directory for N seconds\n"
    "  -unique D [-prefix P] [-suffix S]    makes an empty file with a new name, and prints its path\n\n"
    "A pattern has \"*\" for any characters and \"?\" for one. Times are universal time.\n"
    "Exit status: 0; 2 when the file system refuses.\n";

void PrintEntry(const FileProp& entry, const std::string& below) {
    constexpr std::size_t kSizeWidth = 15;
    const std::string size = entry.isDirectory ? "<dir>" : std::to_string(entry.size);
    const SDateTime modified(entry.modified, STimeZone::TZ_UTC());
    const std::string time = Str(modified.Format("yyyy-MM-dd HH:mm:ss", STimeZone::TZ_UTC()));
    Print(std::string(kSizeWidth - std::min(kSizeWidth, size.size()), ' ') + size + "  " + time + "  " +
          below + Str(entry.name) + "\n");
}

void List(const SAnsiString& directory, const SAnsiString& pattern, bool recurse, const std::string& below) {
    SIArray<FileProp> entries;
    SFileSys::listing(directory, pattern, entries);
    for (const FileProp& entry : entries) PrintEntry(entry, below);
    if (!recurse) return;
    SFileSys::listing(directory, "*", entries);
    for (const FileProp& entry : entries) {
        if (!entry.isDirectory || entry.isLink) continue;
        const std::string shown = below + Str(entry.name) + "\\";
        if (entry.isExact) {
            List(directory + "\\" + entry.name, pattern, true, shown);
        } else {
            PrintError("tarn files: not entered, its name is no well-formed UTF-16: " + shown);
        }
    }
}

const char* NameOf(SDirectoryChange::Kind kind) {
    switch (kind) {
        case SDirectoryChange::added:
            return "added     ";
        case SDirectoryChange::removed:
            return "removed   ";
        case SDirectoryChange::modified:
            return "modified  ";
        case SDirectoryChange::renamedFrom:
            return "renamed   ";
        case SDirectoryChange::renamedTo:
            return "       to ";
    }
    return "";
}

void Watch(const std::string& directory, int seconds, bool recurse) {
    SDirectoryChangeWatcher watcher;
    if (!watcher.open(directory.c_str(), recurse))
        throw Failure("cannot watch " + directory + ": " + SystemReason(watcher.lastError()));
    const unsigned long long end = SMonotonicClock::GetMilliseconds() + seconds * 1000ULL;
    for (;;) {
        const unsigned long long now = SMonotonicClock::GetMilliseconds();
        SIArray<SDirectoryChange> changes;
        const auto result = watcher.wait(static_cast<unsigned long>(now < end ? end - now : 0), changes);
        for (const SDirectoryChange& change : changes) Print(NameOf(change.kind) + Str(change.path) + "\n");
        FlushOutput();
        if (result == SDirectoryChangeWatcher::timedOut) return;
        if (result == SDirectoryChangeWatcher::changesLost) {
            Print("(some changes were lost)\n");
        } else if (result != SDirectoryChangeWatcher::changesSeen) {
            throw Failure("cannot watch " + directory + " any longer");
        }
    }
}

void Use(const Options& options) {
    const bool recurse = options.has("recurse");
    if (options.has("list")) {
        List(options.value("list").c_str(), options.value("pattern").c_str(), recurse, "");
    } else if (options.has("size")) {
        Print(std::to_string(SFileSys::rsizeEx(options.value("size").c_str())) + "\n");
    } else if (options.has("copy")) {
        if (!options.has("to")) throw Failure("-copy needs -to");
        SFileSys::copyFile(options.value("copy").c_str(), options.value("to").c_str(),
                           options.has("overwrite"));
    } else if (options.has("remove")) {
        const SAnsiString path = options.value("remove").c_str();
        recurse ? SFileSys::rremove(path) : SFileSys::remove(path);
    } else if (options.has("watch")) {
        Watch(options.value("watch"), options.number("seconds", 0, kMaxSeconds), recurse);
    } else {
        Print(Str(SFileSys::getUniqueFilename(
                  options.value("unique").c_str(), options.value("prefix").c_str(),
                  options.value("suffix").c_str(), true, SFile::defaultPermissions)) +
              "\n");
    }
}

ExitStatus UseFiles(const Words& arguments) {
    const Options options(arguments, {.values = {"list", "pattern", "size", "copy", "to", "remove", "watch",
                                                 "seconds", "unique", "prefix", "suffix"},
                                      .switches = {"recurse", "overwrite"}});
    if (options.count({"list", "size", "copy", "remove", "watch", "unique"}) != 1)
        throw Failure("one of -list, -size, -copy, -remove, -watch and -unique must be given");
    Use(options);
    return kYes;
}

}  // namespace

const Command kFilesCommand = {"files", "lists, copies, removes and watches files", kHelp, UseFiles};

}  // namespace tarn
