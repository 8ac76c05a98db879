#include "files/directoryreader.h"

#include "files/osfiles.h"
#include "files/systempath.h"

namespace TarnLibA500 {
namespace {

bool IsDots(const wchar_t* name) {
    return name[0] == L'.' && (name[1] == L'\0' || (name[1] == L'.' && name[2] == L'\0'));
}

}  // namespace

bool DirectoryReader::open(const SWCharString& directory) {
    close();
    error_ = ERROR_SUCCESS;
    if (directory.isEmpty()) {  // which would be the current one
        error_ = ERROR_PATH_NOT_FOUND;
        return false;
    }
    const SWCharString pattern = JoinSystemPath(ExactForm(directory), L"*");
    search_ = osfiles::FindFirst(pattern.getString(), entry_);
    isFirst_ = isOpen();
    if (isOpen()) return true;
    error_ = GetLastError();
    // The root of a volume has no "." and can be empty.
    if (error_ == ERROR_FILE_NOT_FOUND) error_ = ERROR_SUCCESS;
    return error_ == ERROR_SUCCESS;
}

bool DirectoryReader::advance() {
    if (isFirst_) {
        isFirst_ = false;
        return true;
    }
    if (osfiles::FindNext(search_.get(), entry_)) return true;
    error_ = GetLastError();
    if (error_ == ERROR_NO_MORE_FILES) error_ = ERROR_SUCCESS;
    return false;
}

bool DirectoryReader::next() {
    if (!isOpen()) return false;
    while (advance()) {
        if (!IsDots(entry_.cFileName)) return true;
    }
    close();
    return false;
}

}  // namespace TarnLibA500
