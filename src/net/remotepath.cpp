#include "net/remotepath.h"

#include <string_view>
#include <vector>

namespace TarnLibA500 {
namespace {

using Names = std::vector<std::string_view>;

void Follow(const SAnsiString& path, bool isAbsolute, Names& names) {
    std::string_view rest(path.getString(), path.getLength());
    while (!rest.empty()) {
        const std::string_view name = rest.substr(0, rest.find('/'));
        rest.remove_prefix(name.size() == rest.size() ? rest.size() : name.size() + 1);
        if (name.empty() || name == ".") continue;
        if (name != ".." || (!isAbsolute && (names.empty() || names.back() == ".."))) {
            names.push_back(name);
        } else if (!names.empty()) {
            names.pop_back();
        }
    }
}

bool IsAbsolute(const SAnsiString& path) {
    return *path.getString() == '/';
}

}  // namespace

SAnsiString RemotePath(const SAnsiString& directory, const SAnsiString& path) {
    const bool isAbsolute = IsAbsolute(path) || IsAbsolute(directory);
    Names names;
    if (!IsAbsolute(path)) Follow(directory, isAbsolute, names);
    Follow(path, isAbsolute, names);
    SAnsiString resolved(isAbsolute ? "/" : names.empty() ? "." : "");
    for (const std::string_view name : names) {
        if (name.data() != names.front().data()) resolved.concat('/');
        resolved.concat(name.data(), static_cast<std::uint32_t>(name.size()));
    }
    return resolved;
}

}  // namespace TarnLibA500
