#include "tarnlib/ssfilesearch.h"

#include "files/directoryreader.h"
#include "files/filesysfailure.h"
#include "files/filetimes.h"
#include "files/namepattern.h"
#include "files/systempath.h"
#include "system/systemtext.h"

namespace TarnLibA500 {

template class SIArray<FileProp>;

namespace {

FileProp PropOf(const WIN32_FIND_DATAW& entry) {
    FileProp prop;
    prop.isExact = FromSystemExactly(entry.cFileName, prop.name);
    prop.isDirectory = IsDirectory(entry.dwFileAttributes);
    prop.isLink = IsLink(entry);
    prop.size = prop.isDirectory ? 0 : SizeOf(entry);
    prop.created = UnixSeconds(entry.ftCreationTime);
    prop.modified = UnixSeconds(entry.ftLastWriteTime);
    prop.accessed = UnixSeconds(entry.ftLastAccessTime);
    return prop;
}

}  // namespace

struct SSFileSearch::State {
    State(const SAnsiString& directoryName, const SAnsiString& patternText)
        : directory(directoryName), pattern(patternText) {}
    SAnsiString directory;
    NamePattern pattern;
    DirectoryReader reader;
};

SSFileSearch::SSFileSearch() noexcept : state_(nullptr) {}

SSFileSearch::~SSFileSearch() {
    close();
}

bool SSFileSearch::FindFirst(const SAnsiString& directory, const SAnsiString& pattern) {
    close();
    state_ = new State(directory, pattern);
    if (!state_->reader.open(LongSystemPath(directory))) {
        const DWORD error = state_->reader.error();
        close();
        ThrowUnreadable(error, directory);
    }
    return FindNext();
}

bool SSFileSearch::FindNext() {
    if (state_ == nullptr) return false;
    DirectoryReader& reader = state_->reader;
    while (reader.next()) {
        if (!state_->pattern.matches(reader.entry().cFileName)) continue;
        entry_ = PropOf(reader.entry());
        return true;
    }
    const DWORD error = reader.error();
    const SAnsiString directory = state_->directory;
    close();
    if (error != ERROR_SUCCESS) ThrowUnreadable(error, directory);
    return false;
}

const FileProp& SSFileSearch::GetEntry() const noexcept {
    return entry_;
}

void SSFileSearch::close() noexcept {
    delete state_;
    state_ = nullptr;
}

bool SSFileSearch::IsOpen() const noexcept {
    return state_ != nullptr;
}

}  // namespace TarnLibA500
