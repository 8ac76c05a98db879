#include "tarnlib/configfilereader.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "config/configlosses.h"
#include "config/configtext.h"
#include "config/filereason.h"
#include "config/sectionindex.h"
#include "diag/assert/levels.h"
#include "diag/assert/require.h"
#include "tarnlib/UTFConverter.h"
#include "tarnlib/sfile.h"
#include "tarnlib/sstringconv.h"
#include "tarnlib/straceobj.h"

namespace TarnLibA500 {
namespace {

constexpr const char* kUnit = "configfilereader";
constexpr std::uint32_t kUsualLineBytes = 32;

// The next section begins with the "[" behind this line feed.
const char* FindSectionEnd(const char* at, const char* end) {
    for (at = FindByte(at, end, '\n'); at != end && at + 1 != end; at = FindByte(at + 1, end, '\n')) {
        if (at[1] == '[') return at;
    }
    return end;
}

// The byte of a file, counted from 0, where it stops being UTF-8; -1 when it does not.
long long FindIllegalByte(SFile& file) {
    constexpr std::uint32_t kPieceBytes = 4096;
    unsigned char bytes[kPieceBytes];
    wchar_t units[kPieceBytes];
    long long done = 0;
    std::uint32_t kept = 0;  // the beginning of a character that a piece ended in
    file.seekEx(SFile::seekBegin, 0);
    for (;;) {
        const int count = file.read(reinterpret_cast<char*>(bytes) + kept, kPieceBytes - kept);
        const unsigned char* at = bytes;
        const unsigned char* const end = bytes + kept + count;
        wchar_t* out = units;
        const auto result = CUTFConverter::Convert(at, end, out, units + kPieceBytes);
        done += at - bytes;
        if (result == CUTFConverter::SourceIllegal || (count == 0 && at != end)) return done;
        if (count == 0) return -1;
        kept = static_cast<std::uint32_t>(end - at);
        std::copy(at, end, bytes);
    }
}

// Why a file has no text.
SAnsiString ReasonForNoText(SFile& file) {
    const long long illegal = file.sizeEx() != 0 ? FindIllegalByte(file) : -1;
    return illegal < 0 ? SAnsiString("empty") : "not UTF-8 at byte " + SStringConv::ToString(illegal);
}

std::string_view ViewOf(const SAnsiString& text) {
    return std::string_view(text.getString(), text.getLength());
}

}  // namespace

ConfigFileReader::ConfigFileReader() = default;
ConfigFileReader::ConfigFileReader(const ConfigFileReader& other) = default;
ConfigFileReader::~ConfigFileReader() = default;

ConfigFileReader::ConfigFileReader(ConfigFileReader&& other) noexcept
    : sections_(std::move(other.sections_)),
      initialized_(std::exchange(other.initialized_, false)),
      byName_(std::move(other.byName_)),
      problem_(std::move(other.problem_)) {}

ConfigFileReader& ConfigFileReader::operator=(const ConfigFileReader& other) {
    return *this = ConfigFileReader(other);
}

ConfigFileReader& ConfigFileReader::operator=(ConfigFileReader&& other) noexcept {
    sections_ = std::move(other.sections_);
    initialized_ = std::exchange(other.initialized_, false);
    byName_ = std::move(other.byName_);
    problem_ = std::move(other.problem_);
    return *this;
}

// ------------------------------------------------------------------------------------------------ loading

bool ConfigFileReader::initialize(const SAnsiString& path, FileEncoding encoding) try {
    if (initialized_) return true;
    SFile file(path, SFile::readOnly, SFile::readWriteMask, SFile::denyNothing);
    const SAnsiString text =
        file.readString(encoding == nativeCodePage ? SFile::nativeCodePage : SFile::utf8);
    if (text.isEmpty()) {
        SAnsiString problem = path + ": " + ReasonForNoText(file);
        TARN_TRACE_AT(levels::kLoss, kUnit, "ConfigFileReader::initialize() failed: %1", problem);
        problem_ = std::move(problem);
        return false;
    }
    ConfigLosses losses(path, text);
    buildConfigData(text, losses);
    initialized_ = true;
    return true;
} catch (const SFileException& failure) {
    TARN_TRACE_AT(levels::kLoss, kUnit,
                  "ConfigFileReader::initialize() failed to open config file. Reason is: %1.",
                  failure.summary());
    problem_ = path + ": " + ReasonOf(failure);
    return false;
}

void ConfigFileReader::buildConfigData(const SAnsiString& text, ConfigLosses& losses) {
    const mbchar::CodePage& page = mbchar::CodePage::Current();
    SIArray<CRefPtr<SectionData>> sections;
    const CRefPtr<SectionData::Lines> lines(new SectionData::Lines(text));
    lines->entries.reserve(text.getLength() / kUsualLineBytes);
    const char* const end = text.end().getPtr();
    for (const char* at = text.getString(); at < end;) {
        const char* const open = configtext::Find(page, at, end, '[');
        const char* const name = open < end ? open + 1 : end;
        const char* const close = configtext::Find(page, name, end, ']');
        if (close == end && open != end) losses.add("]", SAnsiString(), open, end);
        // A bracket that is the very last character makes no section, deliberately.
        if (close == end || close + 1 == end) break;
        at = FindSectionEnd(close + 1, end);
        const std::uint32_t first = lines->count();
        const char* const stop = lines->add(page, close + 1, at);
        const SAnsiString sectionName(name, static_cast<std::uint32_t>(close - name));
        sections.Add(new SectionData(sectionName, lines, first, lines->count() - first));
        if (stop != at) losses.add("=", sectionName, stop, at);
    }
    takeSections(sections, losses.finish());
}

// What is built takes the place of what was there, at once.
void ConfigFileReader::takeSections(SIArray<CRefPtr<SectionData>>& sections, SAnsiString problem) {
    SIArray<std::uint32_t> byName;
    byName.SetSize(sections.GetSize());
    for (std::uint32_t i = 0; i < byName.GetSize(); ++i) byName[i] = i;
    std::sort(byName.Begin(), byName.End(), [&sections](std::uint32_t a, std::uint32_t b) {
        const std::uint32_t hashA = sections[a]->nameHash_;
        const std::uint32_t hashB = sections[b]->nameHash_;
        return hashA != hashB ? hashA < hashB : a < b;
    });
    sections_ = std::move(sections);
    byName_ = std::move(byName);
    problem_ = std::move(problem);
}

// ------------------------------------------------------------------------------------------------ look-up

bool ConfigFileReader::requireInitialized() const {
    return Require(initialized_, kUnit, "m_initialized");
}

template <class Use>
void ConfigFileReader::forEachSection(const SAnsiString& name, Use use) const {
    const char* first = name.getString();
    const char* last = name.end().getPtr();
    configtext::Trim(first, last);
    const std::string_view wanted(first, static_cast<std::size_t>(last - first));
    const std::uint32_t hash = HashText(first, static_cast<std::uint32_t>(wanted.size()));
    const std::uint32_t* const end = byName_.Data() + byName_.GetSize();
    const std::uint32_t* at =
        std::lower_bound(byName_.Data(), end, hash,
                         [this](std::uint32_t i, std::uint32_t h) { return sections_[i]->nameHash_ < h; });
    for (; at != end && sections_[*at]->nameHash_ == hash; ++at) {
        if (ViewOf(sections_[*at]->getSectionName()) == wanted) use(*sections_[*at]);
    }
}

SAnsiString ConfigFileReader::getValue(const SAnsiString& section, const SAnsiString& key,
                                       const SAnsiString& defaultValue) const {
    if (!requireInitialized()) return defaultValue;
    const SectionData* last = nullptr;
    forEachSection(section, [&](const SectionData& found) { last = &found; });
    SAnsiString value;
    return last != nullptr && last->lookup(key, value) ? value : defaultValue;
}

bool ConfigFileReader::getSections(SIArray<SAnsiString>& names) const {
    if (!requireInitialized()) return false;
    SIArray<SAnsiString> all;
    for (const CRefPtr<SectionData>& section : sections_) all.Add(section->getSectionName());
    names = std::move(all);
    return true;
}

bool ConfigFileReader::enumerateSection(const SAnsiString& section, SIArray<SAnsiString>& keys) const {
    if (!requireInitialized()) return false;
    SIArray<SAnsiString> all;
    bool isFound = false;
    forEachSection(section, [&](const SectionData& found) {
        found.getAllKeys(all);
        isFound = true;
    });
    keys = std::move(all);
    return isFound;
}

}  // namespace TarnLibA500
