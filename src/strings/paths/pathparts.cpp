#include "tarnlib/pathparts.h"

#include "diag/assert/require.h"
#include "strings/characters/codepagetext.h"
#include "strings/paths/pathroot.h"
#include "strings/words/characterset.h"
#include "tarnlib/stringhelper.h"

namespace TarnLibA500 {
namespace {

using Char = SChar_t<char, 0>;

// Bytes in a code page. In UTF-8 UTF-16 units, or names that the system allows would be refused.
constexpr std::uint32_t kMaxComponent = 255;

SAnsiString::iterator At(const char* place) {
    return SAnsiString::iterator(place);
}

SAnsiString StripTrailing(const SAnsiString& path, const Char& separator) {
    SAnsiString stripped(path);
    SStringHelper::trimRight(stripped, SAnsiString(separator));
    return stripped;
}

void AssignIfNotEmpty(SAnsiString& out, const char* from, const char* to) {
    if (from != to) out = SAnsiString(At(from), At(to));
}

bool IsShortEnough(const mbchar::CodePage& page, const char* from, const char* to) {
    if (!page.isUtf8()) return static_cast<std::uint32_t>(to - from) <= kMaxComponent;
    return mbchar::CountUnits(page, from, to) <= kMaxComponent;
}

// Where the parts of a path end and begin.
struct PathSplit {
    const char* name;  // after the last slash, or after the drive
    const char* ext;   // the last dot of the name, or the end
};

PathSplit FindParts(const mbchar::CodePage& page, const char* at, const char* end) {
    const CharacterSet slashes(page, kSlashes);
    PathSplit parts{at, end};
    while (at < end) {
        const unsigned bytes = CharacterBytes(page, at);
        if (*at == '.' && bytes == 1) parts.ext = at;
        if (slashes.contains(at, bytes)) parts = {at + bytes, end};
        at += bytes;
    }
    return parts;
}

}  // namespace

SAnsiString GetBottomLevelDir(const SAnsiString& path, const Char& separator) {
    if (separator.getLength() == 0) return path;
    const SAnsiString stripped = StripTrailing(path, separator);
    const SAnsiString::iterator last = stripped.findLast(separator);
    if (last == stripped.end()) return path;
    return stripped.right(At(last.getPtr() + separator.getLength()));
}

SAnsiString GetParentLevelDir(const SAnsiString& path, const Char& separator) {
    if (separator.getLength() == 0) return SAnsiString();
    const SAnsiString stripped = StripTrailing(path, separator);
    const SAnsiString::iterator last = stripped.findLast(separator);
    if (last == stripped.end()) return SAnsiString();
    return stripped.left(last);
}

void SplitPathEx(const SAnsiString& path, SAnsiString& dir, SAnsiString& name, SAnsiString& ext) {
    const SAnsiString whole(path);  // the path may be one of the outputs
    const char* const start = whole.getString();
    const char* const end = whole.end().getPtr();
    const char* const afterDrive = start + (HasDrive(whole) ? kDriveBytes : 0);
    const mbchar::CodePage& page = mbchar::CodePage::Current();
    const PathSplit parts = FindParts(page, afterDrive, end);
    const bool fits = IsShortEnough(page, afterDrive, parts.name) &&
                      IsShortEnough(page, parts.name, parts.ext) && IsShortEnough(page, parts.ext, end);
    if (!Require(fits, "pathparts", "component length < 256")) return;
    AssignIfNotEmpty(dir, start, parts.name);
    AssignIfNotEmpty(name, parts.name, parts.ext);
    AssignIfNotEmpty(ext, parts.ext, end);
}

SAnsiString MakePath(const SAnsiString& dir, const SAnsiString& name, const Char& separator) {
    if (dir.isEmpty()) return name;
    if (name.isEmpty()) return dir;
    SAnsiString path(dir);
    if (StripSlashOffDirEnd(dir).getLength() == dir.getLength()) path.concat(separator);
    path.concat(StripSlashOffDirBegin(name));
    return path;
}

SAnsiString MakePath(const SAnsiString& dir, const SAnsiString& name, const SAnsiString& ext) {
    SAnsiString file(name);
    if (!ext.isEmpty() && ext.getAt(0) != '.') file.concat('.');
    file.concat(ext);
    return MakePath(dir, file);
}

bool IsAbsolutePath(const SAnsiString& path) {
    const char* const text = path.getString();
    return IsSlash(*text) || (HasDrive(path) && IsSlash(text[kDriveBytes]));
}

bool PathContainsRelativeDirTokens(const SAnsiString& path) {
    SIArray<SAnsiString> components;
    SStringHelper::makeWords(path, components, kSlashes, false, false);
    for (const SAnsiString& component : components) {
        if (component == "." || component == "..") return true;
    }
    return false;
}

SAnsiString ReduceConsecutiveSlashes(const SAnsiString& path) {
    const CharacterSet slashes(mbchar::CodePage::Current(), kSlashes);
    const char* at = path.getString();
    const char* const end = path.end().getPtr();
    SAnsiString reduced;
    if (at[0] == '\\' && at[1] == '\\') reduced.concat('\\');
    while (at < end) {
        const char* const slash = slashes.findMember(at, end);
        reduced.concat(at, static_cast<std::uint32_t>(slash - at));
        if (slash < end) reduced.concat(*slash);
        at = slashes.skipMembers(slash, end);
    }
    return reduced;
}

SAnsiString StripSlashOffDirBegin(const SAnsiString& dir) {
    SAnsiString stripped(dir);
    SStringHelper::trimLeft(stripped, kSlashes);
    return stripped;
}

SAnsiString StripSlashOffDirEnd(const SAnsiString& dir) {
    SAnsiString stripped(dir);
    SStringHelper::trimRight(stripped, kSlashes);
    return stripped;
}

SAnsiString UnifyAllSlashes(const SAnsiString& path, const Char& separator) {
    const CharacterSet slashes(mbchar::CodePage::Current(), kSlashes);
    const char* const end = path.end().getPtr();
    SAnsiString unified;
    for (const char* at = path.getString(); at < end;) {
        const char* const slash = slashes.findMember(at, end);
        unified.concat(at, static_cast<std::uint32_t>(slash - at));
        if (slash < end) unified.concat(separator);
        at = slash < end ? slash + 1 : end;
    }
    return unified;
}

}  // namespace TarnLibA500
