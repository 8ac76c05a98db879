#include "config/sectionindex.h"

#include <algorithm>
#include <cstring>

#include "config/configtext.h"

namespace TarnLibA500 {
namespace {

using configtext::Find;
using configtext::Trim;

std::uint64_t StartOf(const char* key, std::uint32_t bytes) {
    unsigned char start[8] = {};
    std::memcpy(start, key, std::min<std::size_t>(bytes, sizeof start));
    std::uint64_t number = 0;
    for (const unsigned char byte : start) number = number << 8 | byte;
    return number;
}

int CompareKeys(const SectionEntry& a, const SectionEntry& b) {
    if (a.start != b.start) return a.start < b.start ? -1 : 1;
    const int order = std::memcmp(a.key, b.key, std::min(a.keyBytes, b.keyBytes));
    if (order != 0) return order;
    return (a.keyBytes > b.keyBytes) - (a.keyBytes < b.keyBytes);
}

// By key, and lines with the same key in their order.
bool ComesBefore(const SectionEntry& a, const SectionEntry& b) {
    const int order = CompareKeys(a, b);
    return order != 0 ? order < 0 : a.key < b.key;
}

SectionEntry KeyEntry(const char* key, std::uint32_t bytes) {
    return {key, bytes, false, StartOf(key, bytes), nullptr, 0};
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

std::vector<SectionEntry> ReadLines(const char* at, const char* end) {
    const mbchar::CodePage& page = mbchar::CodePage::Current();
    std::vector<SectionEntry> entries;
    while (at < end) {
        const auto* const found =
            static_cast<const char*>(std::memchr(at, '\n', static_cast<std::size_t>(end - at)));
        const char* const next = found != nullptr ? found : end;
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
    return entries;
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
        while (last < end && CompareKeys(*first, *last) == 0) ++last;
        const SectionEntry winner = *Winner(first, last);
        *kept++ = winner;
        first = last;
    }
    entries.resize(static_cast<std::size_t>(kept - entries.data()));
}

}  // namespace

ConfigFileReader::SectionData::Index::Index(const SAnsiString& text, const char* body, const char* bodyEnd)
    : text_(text), entries_(ReadLines(body, bodyEnd)) {
    std::sort(entries_.begin(), entries_.end(), ComesBefore);
    KeepWinners(entries_);
}

const SectionEntry* ConfigFileReader::SectionData::Index::find(const SAnsiString& key) const {
    const SectionEntry wanted = KeyEntry(key.getString(), key.getLength());
    const auto found =
        std::lower_bound(entries_.begin(), entries_.end(), wanted,
                         [](const SectionEntry& a, const SectionEntry& b) { return CompareKeys(a, b) < 0; });
    return found != entries_.end() && CompareKeys(*found, wanted) == 0 ? &*found : nullptr;
}

}  // namespace TarnLibA500
