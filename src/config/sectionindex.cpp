#include "config/sectionindex.h"

#include <algorithm>
#include <cstring>

#include "config/configtext.h"

namespace TarnLibA500 {
namespace {

using configtext::Find;
using configtext::Trim;

int CompareKeys(const SectionEntry& a, const SectionEntry& b) {
    const int order = std::memcmp(a.key, b.key, std::min(a.keyBytes, b.keyBytes));
    return order != 0 ? order : (a.keyBytes > b.keyBytes) - (a.keyBytes < b.keyBytes);
}

// By hash, and where those are equal by key.
int CompareEntries(const SectionEntry& a, const SectionEntry& b) {
    return a.hash != b.hash ? (a.hash < b.hash ? -1 : 1) : CompareKeys(a, b);
}

// Lines with the same key keep their order.
bool ComesBefore(const SectionEntry& a, const SectionEntry& b) {
    const int order = CompareEntries(a, b);
    return order != 0 ? order < 0 : a.key < b.key;
}

SectionEntry KeyEntry(const char* key, std::uint32_t bytes) {
    return {HashText(key, bytes), key, bytes, nullptr, 0, false};
}

// False for a line without "=", which ends its section.
bool ReadLine(const mbchar::CodePage& page, const char* first, const char* last, SectionEntry& entry) {
    const char* const equals = Find(page, first, last, '=');
    if (equals == last) return false;
    const char* keyEnd = equals;
    Trim(first, keyEnd);
    const char* value = equals + 1;
    Trim(value, last);
    entry = KeyEntry(first, static_cast<std::uint32_t>(keyEnd - first));
    entry.isSpaced = keyEnd != equals;
    entry.value = value;
    entry.valueBytes = static_cast<std::uint32_t>(last - value);
    return true;
}

void ReadLines(const char* at, const char* end, std::vector<SectionEntry>& entries) {
    const mbchar::CodePage& page = mbchar::CodePage::Current();
    entries.clear();
    while (at < end) {
        const char* const next = FindByte(at, end, '\n');
        const char* first = at;
        const char* last = next;
        Trim(first, last);
        SectionEntry entry;
        if (first != last) {
            if (!ReadLine(page, first, last, entry)) break;
            entries.push_back(entry);
        }
        at = next + 1;
    }
}

// The line that counts among those with the same key: the last one with white space before its "=", because a
// key is looked up with that white space and so not found; without such a line the first.
const SectionEntry* Winner(const SectionEntry* first, const SectionEntry* last) {
    const SectionEntry* winner = first;
    for (const SectionEntry* entry = first + 1; entry < last; ++entry) {
        if (entry->isSpaced) winner = entry;
    }
    return winner;
}

void KeepWinners(std::vector<SectionEntry>& entries) {
    const SectionEntry* const end = entries.data() + entries.size();
    SectionEntry* kept = entries.data();
    for (const SectionEntry* first = entries.data(); first < end;) {
        const SectionEntry* last = first + 1;
        while (last < end && CompareEntries(*first, *last) == 0) ++last;
        const SectionEntry winner = *Winner(first, last);
        *kept++ = winner;
        first = last;
    }
    entries.resize(static_cast<std::size_t>(kept - entries.data()));
}

}  // namespace

// FNV-1a.
std::uint32_t HashText(const char* text, std::uint32_t bytes) noexcept {
    std::uint32_t hash = 0x811C9DC5;
    for (std::uint32_t i = 0; i < bytes; ++i)
        hash = (hash ^ static_cast<unsigned char>(text[i])) * 0x01000193;
    return hash;
}

ConfigFileReader::SectionData::Index::Index(const SAnsiString& text, const char* body, const char* bodyEnd,
                                            std::vector<SectionEntry>& lines)
    : text_(text) {
    ReadLines(body, bodyEnd, lines);
    std::sort(lines.begin(), lines.end(), ComesBefore);
    KeepWinners(lines);
    entries_ = lines;
}

const SectionEntry* ConfigFileReader::SectionData::Index::find(const SAnsiString& key) const {
    const SectionEntry wanted = KeyEntry(key.getString(), key.getLength());
    const auto found = std::lower_bound(
        entries_.begin(), entries_.end(), wanted,
        [](const SectionEntry& a, const SectionEntry& b) { return CompareEntries(a, b) < 0; });
    return found != entries_.end() && CompareEntries(*found, wanted) == 0 ? &*found : nullptr;
}

std::vector<SectionEntry> ConfigFileReader::SectionData::Index::byKey() const {
    std::vector<SectionEntry> sorted = entries_;
    std::sort(sorted.begin(), sorted.end(),
              [](const SectionEntry& a, const SectionEntry& b) { return CompareKeys(a, b) < 0; });
    return sorted;
}

}  // namespace TarnLibA500
