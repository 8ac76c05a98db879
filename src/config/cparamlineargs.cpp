#include "tarnlib/cparamlineargs.h"

#include <algorithm>
#include <istream>
#include <string>

#include "diag/require.h"
#include "tarnlib/stringhelper.h"

namespace TarnLibA500 {
namespace {

constexpr const char* kUnit = "cparamlineargs";
constexpr const char* kSeparators = " \t\r\n";
constexpr const char* kProgramNameMissing = "!m_programName.isEmpty()";

bool IsOption(const SAnsiString& word) {
    return word.getString()[0] == '-';
}

SAnsiString WithoutDashes(const SAnsiString& word) {
    const char* name = word.getString();
    while (*name == '-') ++name;
    return name;
}

bool HasBlank(const SAnsiString& text) {
    return text.find(" ") != text.end();
}

SAnsiString Quoted(const SAnsiString& text) {
    if (!HasBlank(text) || text.getString()[0] == '"') return text;
    return SAnsiString("\"") + text + "\"";
}

SAnsiString AsItIs(const SAnsiString& text) {
    return text;
}

}  // namespace

CParamLineArgs::CParamLineArgs() = default;
CParamLineArgs::CParamLineArgs(const CParamLineArgs& other) = default;
CParamLineArgs::CParamLineArgs(CParamLineArgs&& other) noexcept = default;
CParamLineArgs& CParamLineArgs::operator=(const CParamLineArgs& other) = default;
CParamLineArgs& CParamLineArgs::operator=(CParamLineArgs&& other) noexcept = default;
CParamLineArgs::~CParamLineArgs() = default;

CParamLineArgs::CParamLineArgs(const SAnsiString& line) {
    SetArgs(line);
}

CParamLineArgs::CParamLineArgs(const SAnsiString& line, const SChar_t<char, 0>& quote) {
    SetArgs(line, quote);
}

CParamLineArgs::CParamLineArgs(int count, char* const* arguments) {
    SetArgs(count, arguments);
}

void CParamLineArgs::SetArgs(const SAnsiString& line) {
    SetArgs(line, '"');
}

void CParamLineArgs::SetArgs(const SAnsiString& line, const SChar_t<char, 0>& quote) {
    if (line.isEmpty()) return;
    SIArray<SAnsiString> words;
    SStringHelper::makeWords(line, words, quote, kSeparators, true, false);
    takeWords(words);
}

void CParamLineArgs::SetArgs(int, char* const* arguments) {
    SIArray<SAnsiString> words;
    for (; arguments != nullptr && *arguments != nullptr; ++arguments) words.Add(*arguments);
    if (words.GetSize() == 0) m_programName.empty();
    takeWords(words);
}

void CParamLineArgs::SetArgs(const CParamLineArgs& other) {
    *this = other;
}

void CParamLineArgs::takeWords(const SIArray<SAnsiString>& words) {
    DeleteAll();
    const std::uint32_t count = words.GetSize();
    if (count != 0) m_programName = words[0];
    Require(!m_programName.isEmpty(), kUnit, kProgramNameMissing);
    for (std::uint32_t i = 1; i < count; ++i) {
        if (!IsOption(words[i])) continue;
        const SAnsiString name = WithoutDashes(words[i]);
        const bool hasValue = i + 1 < count && !words[i + 1].isEmpty() && !IsOption(words[i + 1]);
        SetArg(name, hasValue ? words[++i] : SAnsiString());
    }
}

void CParamLineArgs::SetArg(const SAnsiString& name, const SAnsiString& value) {
    // Copies: the texts may be this object's own.
    const SAnsiString keptName(name);
    const SAnsiString keptValue(value);
    RemoveArg(keptName);
    m_names.Add(keptName);
    m_values.Add(keptValue);
}

void CParamLineArgs::SetArg(const char* name, const char* value) {
    SetArg(SAnsiString(name), SAnsiString(value));
}

void CParamLineArgs::SetArg(const char* name, const SAnsiString& value) {
    SetArg(SAnsiString(name), value);
}

std::uint32_t CParamLineArgs::findIndex(const SAnsiString& name) const {
    for (std::uint32_t i = 0; i < m_names.GetSize(); ++i) {
        if (m_names[i].compareNoCase(name) == 0) return i;
    }
    return kNotFound;
}

bool CParamLineArgs::Lookup(const SAnsiString& name, SAnsiString& value) const {
    const std::uint32_t position = findIndex(name);
    if (position == kNotFound) return false;
    value = m_values[position];
    return true;
}

bool CParamLineArgs::RemoveArg(const SAnsiString& name) {
    const std::uint32_t position = findIndex(name);
    if (position == kNotFound) return false;
    m_names.RemoveAt(position);
    m_values.RemoveAt(position);
    return true;
}

void CParamLineArgs::DeleteAll() {
    m_names.RemoveAll();
    m_values.RemoveAll();
}

void CParamLineArgs::MergeArgs(const CParamLineArgs& args) {
    Require(args.m_names.GetSize() == args.m_values.GetSize(), kUnit,
            "args.m_names.GetSize() == args.m_values.GetSize()");
    if (&args == this) return;
    if (!args.m_programName.isEmpty()) m_programName = args.m_programName;
    for (std::uint32_t i = 0; i < args.GetCount(); ++i) SetArg(args.m_names[i], args.m_values[i]);
}

void CParamLineArgs::SetProgramName(const SAnsiString& name) {
    m_programName = name;
}

SAnsiString CParamLineArgs::GetCmdLine() const {
    Require(!m_programName.isEmpty(), kUnit, kProgramNameMissing);
    SAnsiString line = Quoted(m_programName);
    for (std::uint32_t i = 0; i < GetCount(); ++i) {
        line.concat(" -").concat(m_names[i]);
        if (!m_values[i].isEmpty()) line.concat(" ").concat(Quoted(m_values[i]));
    }
    return line;
}

void CParamLineArgs::appendWords(SIArray<SAnsiString>& args,
                                 SAnsiString (*written)(const SAnsiString&)) const {
    Require(args.GetSize() == 0, kUnit, "args.GetSize() == 0");
    Require(!m_programName.isEmpty(), kUnit, kProgramNameMissing);
    args.Add(written(m_programName));
    for (std::uint32_t i = 0; i < GetCount(); ++i) {
        args.Add(SAnsiString("-") + m_names[i]);
        if (!m_values[i].isEmpty()) args.Add(written(m_values[i]));
    }
}

void CParamLineArgs::GetArgs(SIArray<SAnsiString>& args) const {
    appendWords(args, &AsItIs);
}

void CParamLineArgs::GetArgsWithQuote(SIArray<SAnsiString>& args) const {
    appendWords(args, &Quoted);
}

void CParamLineArgs::ReadArgsAsProperties(std::istream& in, unsigned int longestLine) {
    constexpr unsigned int kLongestPossible = 16 * 1024 * 1024;
    longestLine = std::min(longestLine, kLongestPossible);
    // One byte more than the longest line: istream's getline counts its terminator, and fails beyond that.
    std::string buffer(std::size_t{longestLine} + 1, '\0');
    while (in.getline(buffer.data(), static_cast<std::streamsize>(buffer.size())) && !in.eof()) {
        SAnsiString line(buffer.c_str());
        line.trimRight();
        const auto equals = line.find("=");
        if (!equals.isAtEnd()) SetArg(line.left(equals), SAnsiString(equals.getPtr() + 1));
    }
}

}  // namespace TarnLibA500
