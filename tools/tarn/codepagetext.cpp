#include "codepagetext.h"

#include "command.h"

namespace tarn {

using TarnLibA500::SAnsiString;

SAnsiString CodePageText(const std::string& utf8, const char* what) {
    SAnsiString text;
    if (!text.fromUTF8(utf8.c_str()) || Utf8Text(text) != utf8)
        throw Failure(std::string(what) + " has characters that the code page does not have: " + utf8);
    return text;
}

SAnsiString FileName(const std::string& utf8) {
    return CodePageText(utf8, "the file name");
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
