#include <algorithm>
#include <vector>

#include "config/configtext.h"
#include "config/sectionindex.h"
#include "tarnlib/configfilereader.h"

namespace TarnLibA500 {

using SectionData = ConfigFileReader::SectionData;

SectionData::SectionData(const SAnsiString& name, const SAnsiString& body)
    : name_(name), index_(new Index(body, body.getString(), body.end().getPtr())) {}

SectionData::SectionData(const SAnsiString& text, const char* name, std::uint32_t nameBytes, const char* body,
                         const char* bodyEnd)
    : name_(name, nameBytes), index_(new Index(text, body, bodyEnd)) {}

SectionData::SectionData(const SectionData& other)
    : CRefCount(other), name_(other.name_), index_(new Index(*other.index_)) {}

SectionData::~SectionData() {
    delete index_;
}

bool SectionData::lookup(const SAnsiString& key, SAnsiString& value) const {
    const SectionEntry* const entry = index_->find(key);
    if (entry == nullptr) return false;
    value = SAnsiString(entry->value, entry->valueBytes);
    return true;
}

void SectionData::getAllKeys(SIArray<SAnsiString>& keys) const {
    for (const SectionEntry& entry : index_->entries()) keys.Add(SAnsiString(entry.key, entry.keyBytes));
}

}  // namespace TarnLibA500
