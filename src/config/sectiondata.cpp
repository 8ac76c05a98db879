#include <vector>

#include "config/configtext.h"
#include "config/sectionindex.h"
#include "tarnlib/configfilereader.h"

namespace TarnLibA500 {

using SectionData = ConfigFileReader::SectionData;

SectionData::SectionData(const SAnsiString& name, Index* index) : name_(name), index_(index) {
    nameHash_ = HashText(name.getString(), name.getLength());
}

SectionData::SectionData(const SAnsiString& name, const SAnsiString& body) : SectionData(name, nullptr) {
    std::vector<SectionEntry> lines;
    index_ = new Index(body, body.getString(), body.end().getPtr(), lines);
}

SectionData::SectionData(const SectionData& other)
    : CRefCount(other), name_(other.name_), nameHash_(other.nameHash_), index_(new Index(*other.index_)) {}

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
    for (const SectionEntry& entry : index_->byKey()) keys.Add(SAnsiString(entry.key, entry.keyBytes));
}

}  // namespace TarnLibA500
