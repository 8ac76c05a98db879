#include <cstring>

#include "seam/osmodules.h"
#include "seam/ostext.h"
#include "tracelog/effective.h"
#include "tracelog/logline.h"

#include <windows.h>

namespace TraceLog400 {
namespace detail {

FileSettings fileSettings;
std::atomic<bool> isWriting{false};
std::atomic<bool> toStandardOutput{false};

namespace {

constexpr std::size_t kMaxComponent = 64;
constexpr DWORD kMaxPath = 32'768;

std::wstring ProgramStem() {
    std::wstring path(kMaxPath, L'\0');
    path.resize(osmodules::Path(nullptr, path.data(), kMaxPath));
    path.erase(0, path.find_last_of(L"\\/") + 1);
    return path.substr(0, path.rfind(L'.'));
}

// File names have no room for separators, control characters and wild cards.
std::wstring FileNameOf(std::wstring component) {
    for (wchar_t& unit : component) {
        if (unit < L' ' || std::wcschr(L"\\/:*?\"<>|", unit) != nullptr) unit = L'_';
    }
    return component;
}

// In lines blanks part the fields.
std::string LineNameOf(const std::string& component) {
    std::string name;
    for (std::size_t at = 0; at < component.size();) {
        const std::size_t control = ControlBytes(component.data() + at, component.size() - at);
        const bool isUnfit = control != 0 || component[at] == ' ' || component[at] == '\t';
        name += isUnfit ? '_' : component[at];
        at += control != 0 ? control : 1;
    }
    return name;
}

Identity MakeIdentity(const std::string& given) {
    const std::string process = std::to_string(GetCurrentProcessId());
    std::string component = given.empty() ? ToUtf8(ProgramStem()) : given;
    component.resize(WholeCharacters(component.c_str(), std::min(component.size(), kMaxComponent)));
    return {component, FileNameOf(ToWide(component)), " " + LineNameOf(component) + " " + process + " "};
}

constinit Published<Identity> identityInEffect;
constinit Published<std::wstring> directoryInEffect;

// Absolute, in the form that may be longer than 260 characters, with a slash at its end.
std::wstring LongForm(const std::wstring& directory) {
    std::wstring path(kMaxPath, L'\0');
    const DWORD length = GetFullPathNameW(directory.c_str(), kMaxPath, path.data(), nullptr);
    if (length == 0 || length >= kMaxPath) return directory + L"\\";
    path.resize(length);
    if (path.back() != L'\\') path += L'\\';
    if (path.rfind(L"\\\\?\\", 0) == 0) return path;
    if (path.rfind(L"\\\\", 0) == 0) return L"\\\\?\\UNC" + path.substr(1);
    return L"\\\\?\\" + path;
}

}  // namespace

std::size_t WholeCharacters(const char* text, std::size_t bytes) {
    while (bytes > 0 && (text[bytes] & 0xC0) == 0x80) --bytes;
    return bytes;
}

const Identity& CurrentIdentity() {
    if (identityInEffect.get() == nullptr) identityInEffect.publish(MakeIdentity(std::string()));
    return *identityInEffect.get();
}

std::wstring CurrentDirectoryOfLogs() {
    const std::wstring* const directory = directoryInEffect.get();
    return directory != nullptr ? *directory : std::wstring();
}

std::wstring PathOfLog(const std::wstring& device) {
    return CurrentDirectoryOfLogs() + CurrentIdentity().fileStem + L"_" +
           std::to_wstring(GetCurrentProcessId()) + (device.empty() ? L"" : L"." + device) + L".log";
}

std::wstring ToWide(const std::string& utf8) {
    const int bytes = static_cast<int>(utf8.size());
    std::wstring text(utf8.size(), L'\0');
    const int units = ostext::ToWide(CP_UTF8, 0, utf8.data(), bytes, text.data(), bytes);
    text.resize(static_cast<std::size_t>(units));
    return text;
}

std::string ToUtf8(const std::wstring& text) {
    const int units = static_cast<int>(text.size());
    std::string utf8(text.size() * 3, '\0');
    const int bytes = ostext::FromWide(CP_UTF8, 0, text.data(), units, utf8.data(), units * 3);
    utf8.resize(static_cast<std::size_t>(bytes));
    return utf8;
}

}  // namespace detail

void LogFileConfig::apply() const {
    detail::fileSettings.sizeLimit = size;
    detail::fileSettings.countLimit = files;
    detail::fileSettings.dayLimit = days;
    const std::wstring wide = directory != nullptr && *directory != '\0'
                                  ? detail::LongForm(detail::ToWide(directory))
                                  : std::wstring();
    if (wide != detail::CurrentDirectoryOfLogs()) detail::directoryInEffect.publish(wide);
}

void ActivationConfig::apply() const {
    const detail::Identity identity = detail::MakeIdentity(component != nullptr ? component : "");
    detail::identityInEffect.publish(identity);
    detail::fileSettings.alwaysClose = always_close;
    detail::fileSettings.keep = keep;
    detail::fileSettings.buffered = buffered;
    detail::isWriting = !never;
}

void DisplayConfig::apply() const {
    detail::toStandardOutput = to_stdout;
}

}  // namespace TraceLog400
