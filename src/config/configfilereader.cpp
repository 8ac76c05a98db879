#include "tarnlib/configfilereader.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "config/configtext.h"
#include "config/sectionindex.h"
#include "diag/require.h"
#include "tarnlib/sfile.h"
#include "tarnlib/straceobj.h"

namespace TarnLibA500 {
namespace {

constexpr const char* kUnit = "configfilereader";
constexpr int kTraceLevel = 1;
constexpr std::uint32_t kUsualLineBytes = 32;

// The next section begins with the "[" behind this line feed.
const char* FindSectionEnd(const char* at, const char* end) {
    for (at = FindByte(at, end, '\n'); at != end && at + 1 != end; at = FindByte(at + 1, end, '\n')) {
        if (at[1] == '[') return at;
    }
    return end;
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
      byName_(std::move(other.byName_)) {}

ConfigFileReader& ConfigFileReader::operator=(const ConfigFileReader& other) {
    return *this = ConfigFileReader(other);
}

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
    const CRefPtr<SectionData::Lines> lines(new SectionData::Lines(text));
    lines->entries.reserve(text.getLength() / kUsualLineBytes);
    const char* const end = text.end().getPtr();
    for (const char* at = text.getString(); at < end;) {
        const char* const open = configtext::Find(page, at, end, '[');
        const char* const name = open < end ? open + 1 : end;
        const char* const close = configtext::Find(page, name, end, ']');
        // A bracket that is the very last character makes no section, deliberately.
        if (close == end || close + 1 == end) break;
        at = FindSectionEnd(close + 1, end);
        const auto first = static_cast<std::uint32_t>(lines->entries.size());
        const std::uint32_t count = lines->add(close + 1, at);
        sections.Add(new SectionData(SAnsiString(name, static_cast<std::uint32_t>(close - name)), lines,
                                     first, count));
    }
    sections_ = std::move(sections);
    buildNameIndex();
}

void ConfigFileReader::buildNameIndex() {
    byName_.SetSize(sections_.GetSize());
    for (std::uint32_t i = 0; i < byName_.GetSize(); ++i) byName_[i] = i;
    std::sort(byName_.Begin(), byName_.End(), [this](std::uint32_t a, std::uint32_t b) {
        const std::uint32_t hashA = sections_[a]->nameHash_;
        const std::uint32_t hashB = sections_[b]->nameHash_;
        return hashA != hashB ? hashA < hashB : a < b;
    });
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
    names.RemoveAll();
    for (const CRefPtr<SectionData>& section : sections_) names.Add(section->getSectionName());
    return true;
}

bool ConfigFileReader::enumerateSection(const SAnsiString& section, SIArray<SAnsiString>& keys) const {
    if (!requireInitialized()) return false;
    const SAnsiString wanted(section);  // it may be one of the keys
    keys.RemoveAll();
    bool isFound = false;
    forEachSection(wanted, [&](const SectionData& found) {
        found.getAllKeys(keys);
        isFound = true;
    });
    return isFound;
}

}  // namespace TarnLibA500
