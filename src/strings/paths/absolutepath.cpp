#include "strings/paths/pathroot.h"
#include "strings/words/characterset.h"
#include "tarnlib/pathparts.h"
#include "tarnlib/stringhelper.h"

namespace TarnLibA500 {
namespace {

constexpr std::uint32_t kShareComponents = 2;      // \\server\share
constexpr std::uint32_t kLongDriveComponents = 2;  // \\?\C:
constexpr std::uint32_t kLongShareComponents = 4;  // \\?\UNC\server\share

// A path taken apart: what stands before its first component, and how many components belong to its root.
struct ParsedPath {
    SAnsiString separator;
    SAnsiString prefix;
    SIArray<SAnsiString> components;
    std::uint32_t rootComponents = 0;
};

SAnsiString FirstSlash(const SAnsiString& path) {
    const char* const end = path.end().getPtr();
    const char* const slash =
        CharacterSet(mbchar::CodePage::Current(), kSlashes).findMember(path.getString(), end);
    return slash < end ? SAnsiString(slash, 1) : SAnsiString("\\");
}

std::uint32_t CountNetworkRoot(const SIArray<SAnsiString>& components) {
    if (components.GetSize() < 2 || components[0] != "?") return kShareComponents;
    const bool isShare = components[1].compareNoCase("UNC") == 0;
    return isShare ? kLongShareComponents : kLongDriveComponents;
}

ParsedPath Parse(const SAnsiString& path) {
    ParsedPath parsed;
    parsed.separator = FirstSlash(path);
    SStringHelper::makeWords(path, parsed.components, kSlashes, false, false);
    const char* const text = path.getString();
    if (IsSlash(text[0])) parsed.prefix.concat(parsed.separator);
    if (IsSlash(text[0]) && IsSlash(text[1])) {
        parsed.prefix.concat(parsed.separator);
        parsed.rootComponents = CountNetworkRoot(parsed.components);
    } else if (HasDrive(path)) {
        parsed.rootComponents = 1;
    }
    return parsed;
}

// Folds "." and ".."; false when the path climbs above its root.
bool Fold(ParsedPath& path) {
    SIArray<SAnsiString> folded;
    for (const SAnsiString& component : path.components) {
        const bool inRoot = folded.GetSize() < path.rootComponents;
        if (!inRoot && component == ".") continue;
        if (inRoot || component != "..") {
            folded.Add(component);
            continue;
        }
        if (folded.GetSize() == path.rootComponents) return false;
        folded.RemoveAt(folded.GetSize() - 1);
    }
    path.components = folded;
    return true;
}

SAnsiString Compose(const ParsedPath& path) {
    SAnsiString text(path.prefix);
    for (std::uint32_t i = 0; i < path.components.GetSize(); ++i) {
        if (i != 0) text.concat(path.separator);
        text.concat(path.components[i]);
    }
    // A drive alone would be the drive's current directory.
    const bool isRoot = path.components.GetSize() == path.rootComponents;
    if (isRoot && !text.isEmpty() && text.getAt(text.getNChars() - 1) == ':') text.concat(path.separator);
    if (text.isEmpty()) text = ".";
    return text;
}

}  // namespace

bool SStringHelper::getAbsolutePath(const SAnsiString& base, const SAnsiString& relative,
                                    SAnsiString& result) {
    const bool standsAlone = IsAbsolutePath(relative);
    if (!standsAlone && (base.isEmpty() || HasDrive(relative))) return false;
    ParsedPath path = Parse(standsAlone ? relative : MakePath(base, relative));
    if (!Fold(path)) return false;
    result = Compose(path);
    return true;
}

}  // namespace TarnLibA500
