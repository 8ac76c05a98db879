#include "codepagetext.h"

#include "command.h"

#include <windows.h>

namespace tarn {

using TarnLibA500::SAnsiString;
using TarnLibA500::SWCharString;

SAnsiString CodePageText(const std::string& utf8, const char* what) {
    SAnsiString text;
    if (!text.fromUTF8(utf8.c_str()) || Utf8Text(text) != utf8)
        throw Failure(std::string(what) + " has characters that the code page does not have: " + utf8);
    return text;
}

SAnsiString FileName(const std::string& utf8) {
    constexpr int kMostBytes = 3;  // of a unit
    SWCharString wide;
    wide.fromUTF8(utf8.c_str());
    const auto units = static_cast<int>(wide.getLength());
    std::string bytes(wide.getLength() * kMostBytes, '\0');
    // A similar character would make another name. UTF-8 has them all, and takes neither the flag nor the question.
    const bool isUtf8 = GetACP() == CP_UTF8;
    BOOL isReplaced = FALSE;
    const int count =
        WideCharToMultiByte(CP_ACP, isUtf8 ? 0 : WC_NO_BEST_FIT_CHARS, wide.getString(), units, bytes.data(),
                            units * kMostBytes, nullptr, isUtf8 ? nullptr : &isReplaced);
    if (isReplaced || (count == 0 && !utf8.empty()))
        throw Failure("the file name has characters that the code page does not have: " + utf8);
    return SAnsiString(bytes.data(), static_cast<std::uint32_t>(count));
}

std::string Utf8Name(const SAnsiString& name) {
    const auto bytes = static_cast<int>(name.getLength());
    std::wstring wide(name.getLength(), L'\0');
    const int units = MultiByteToWideChar(CP_ACP, 0, name.getString(), bytes, wide.data(), bytes);
    const SWCharString text(wide.data(), static_cast<std::uint32_t>(units));
    std::string utf8(text.getNBytesForUTF8(), '\0');
    text.toUTF8(utf8.data(), static_cast<std::uint32_t>(utf8.size()));
    utf8.pop_back();  // the terminator
    return utf8;
}

TarnLibA500::CParamLineArgs ParseWords(std::vector<SAnsiString> words) {
    std::vector<char*> pointers;
    pointers.reserve(words.size() + 1);
    for (SAnsiString& word : words) pointers.push_back(word.detach());
    pointers.push_back(nullptr);
    return TarnLibA500::CParamLineArgs(static_cast<int>(words.size()), pointers.data());
}

std::string Utf8Text(const SAnsiString& text) {
    std::string utf8(text.getNBytesForUTF8(), '\0');
    const int bytes = text.toUTF8(utf8.data(), static_cast<std::uint32_t>(utf8.size()));
    utf8.resize(bytes > 0 ? static_cast<std::size_t>(bytes) : 0);
    return utf8;
}

}  // namespace tarn
