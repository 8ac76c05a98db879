#include "tarnlib/configfilereader.h"

#include <algorithm>
#include <utility>

#include "config/configtext.h"
#include "diag/require.h"
#include "tarnlib/sfile.h"
#include "tarnlib/straceobj.h"

namespace TarnLibA500 {
namespace {

constexpr const char* kUnit = "configfilereader";
constexpr int kTraceLevel = 1;

// The next section begins with the "[" behind this line feed.
const char* FindSectionEnd(const char* at, const char* end) {
    while (at < end) {
        const auto* const found =
            static_cast<const char*>(std::memchr(at, '\n', static_cast<std::size_t>(end - at)));
        if (found == nullptr || found + 1 == end) return end;
        if (found[1] == '[') return found;
        at = found + 1;
    }
    return end;
}

}  // namespace

ConfigFileReader::ConfigFileReader() = default;
ConfigFileReader::ConfigFileReader(const ConfigFileReader& other) = default;
ConfigFileReader& ConfigFileReader::operator=(const ConfigFileReader& other) = default;
ConfigFileReader::~ConfigFileReader() = default;

ConfigFileReader::ConfigFileReader(ConfigFileReader&& other) noexcept
    : sections_(std::move(other.sections_)),
      initialized_(std::exchange(other.initialized_, false)),
      byName_(std::move(other.byName_)) {}

ConfigFileReader& ConfigFileReader::operator=(ConfigFileReader&& other) noexcept {
    sections_ = std::move(other.sections_);
    initialized_ = std::exchange(other.initialized_, false);
    byName_ = std::move(other.byName_);
    return *this;
}

// ------------------------------------------------------------------------------------------------ loading

bool ConfigFileReader::initialize(const SAnsiString& path, FileEncoding encoding) try {
    if (initialized_) return true;
    SFile file(path, SFile::readOnly, SFile::readWriteMask, SFile::denyNothing);
    const SAnsiString text =
        file.readString(encoding == nativeCodePage ? SFile::nativeCodePage : SFile::utf8);
    if (text.isEmpty()) return false;
    buildConfigData(text);
    initialized_ = true;
    return true;
} catch (const SFileException& failure) {
    TARN_TRACE_AT(kTraceLevel, kUnit,
                  "ConfigFileReader::initialize() failed to open config file. Reason is: %1.",
                  failure.summary());
    return false;
}

void ConfigFileReader::buildConfigData(const SAnsiString& text) {
    const mbchar::CodePage& page = mbchar::CodePage::Current();
    SIArray<CRefPtr<SectionData>> sections;
    const char* const end = text.end().getPtr();
    for (const char* at = text.getString(); at < end;) {
        const char* const open = configtext::Find(page, at, end, '[');
        const char* const name = open < end ? open + 1 : end;
        const char* const close = configtext::Find(page, name, end, ']');
        // A bracket that is the very last character makes no section, deliberately.
        if (close == end || close + 1 == end) break;
        const char* const bodyEnd = FindSectionEnd(close + 1, end);
        sections.Add(
            new SectionData(text, name, static_cast<std::uint32_t>(close - name), close + 1, bodyEnd));
        at = bodyEnd;
    }
    sections_ = std::move(sections);
    buildNameIndex();
}

void ConfigFileReader::buildNameIndex() {
    byName_.SetSize(sections_.GetSize());
    for (std::uint32_t i = 0; i < byName_.GetSize(); ++i) byName_[i] = i;
    std::sort(byName_.Begin(), byName_.End(), [this](std::uint32_t a, std::uint32_t b) {
        const int order = sections_[a]->getSectionName().compare(sections_[b]->getSectionName());
        return order != 0 ? order < 0 : a < b;
    });
}

// ------------------------------------------------------------------------------------------------ look-up

bool ConfigFileReader::requireInitialized() const {
    return Require(initialized_, kUnit, "m_initialized");
}

void ConfigFileReader::findSections(const SAnsiString& name, std::uint32_t& first,
                                    std::uint32_t& last) const {
    SAnsiString trimmed(name);
    trimmed.trim();
    const std::uint32_t* const begin = byName_.Data();
    const std::uint32_t* const end = begin + byName_.GetSize();
    const auto nameOf = [this](std::uint32_t i) -> const SAnsiString& {
        return sections_[i]->getSectionName();
    };
    const auto* const lower = std::lower_bound(
        begin, end, trimmed, [&](std::uint32_t i, const SAnsiString& n) { return nameOf(i).compare(n) < 0; });
    const auto* const upper =
        std::find_if(lower, end, [&](std::uint32_t i) { return nameOf(i).compare(trimmed) != 0; });
    first = static_cast<std::uint32_t>(lower - begin);
    last = static_cast<std::uint32_t>(upper - begin);
}

SAnsiString ConfigFileReader::getValue(const SAnsiString& section, const SAnsiString& key,
                                       const SAnsiString& defaultValue) const {
    if (!requireInitialized()) return defaultValue;
    std::uint32_t first = 0;
    std::uint32_t last = 0;
    findSections(section, first, last);
    SAnsiString value;
    const bool isFound = first != last && sections_[byName_[last - 1]]->lookup(key, value);
    return isFound ? value : defaultValue;
}

bool ConfigFileReader::getSections(SIArray<SAnsiString>& names) const {
    if (!requireInitialized()) return false;
    names.RemoveAll();
    for (const CRefPtr<SectionData>& section : sections_) names.Add(section->getSectionName());
    return true;
}

bool ConfigFileReader::enumerateSection(const SAnsiString& section, SIArray<SAnsiString>& keys) const {
    if (!requireInitialized()) return false;
    keys.RemoveAll();
    std::uint32_t first = 0;
    std::uint32_t last = 0;
    findSections(section, first, last);
    for (std::uint32_t i = first; i < last; ++i) sections_[byName_[i]]->getAllKeys(keys);
    return first != last;
}

}  // namespace TarnLibA500
