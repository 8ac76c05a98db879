#include "config/configlosses.h"
#include "config/sectionindex.h"
#include "tarnlib/configfilereader.h"

namespace TarnLibA500 {

using SectionData = ConfigFileReader::SectionData;

SectionData::SectionData(const SAnsiString& name, const CRefPtr<Lines>& lines, std::uint32_t first,
                         std::uint32_t count)
    : name_(name),
      nameHash_(HashText(name.getString(), name.getLength())),
      lines_(lines),
      first_(first),
      count_(count) {}

SectionData::SectionData(const SAnsiString& name, const SAnsiString& body)
    : SectionData(name, new Lines(body), 0, 0) {
    const SAnsiString& text = lines_->text;
    const char* const end = text.end().getPtr();
    const char* const stop = lines_->add(mbchar::CodePage::Current(), text.getString(), end);
    count_ = lines_->count();
    if (stop != end) ConfigLosses("a section's text", text).add("=", name, stop, end);
}

SectionData::SectionData(const SectionData& other) = default;
SectionData::~SectionData() = default;

bool SectionData::lookup(const SAnsiString& key, SAnsiString& value) const {
    const SectionEntry* const entry = FindEntry(lines_->entries.data() + first_, count_, key);
    if (entry == nullptr) return false;
    value = SAnsiString(entry->value, entry->valueBytes);
    return true;
}

void SectionData::getAllKeys(SIArray<SAnsiString>& keys) const {
    SIArray<SAnsiString> all;
    for (const SectionEntry& entry : EntriesByKey(lines_->entries.data() + first_, count_))
        all.Add(SAnsiString(entry.key, entry.keyBytes));
    keys.Append(all);
}

}  // namespace TarnLibA500
