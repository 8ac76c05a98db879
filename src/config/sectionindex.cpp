#include "config/sectionindex.h"

#include <algorithm>
#include <string_view>
#include <tuple>

#include "config/configtext.h"

namespace TarnLibA500 {
namespace {

using configtext::Find;
using configtext::Trim;

// Up to this number lines are searched from end to end, which is faster than to sort them; more are sorted.
constexpr std::uint32_t kMostUnsorted = 32;

std::string_view KeyOf(const SectionEntry& entry) {
    return std::string_view(entry.key, entry.keyBytes);
}

struct HashOrder {
    bool operator()(const SectionEntry& entry, std::uint32_t hash) const { return entry.hash < hash; }
    bool operator()(std::uint32_t hash, const SectionEntry& entry) const { return hash < entry.hash; }
};

// False for a line without "=", which ends its section.
bool ReadLine(const mbchar::CodePage& page, const char* first, const char* last, SectionEntry& entry) {
    const char* const equals = Find(page, first, last, '=');
    if (equals == last) return false;
    const char* keyEnd = equals;
    Trim(first, keyEnd);
    const char* value = equals + 1;
    Trim(value, last);
    const auto keyBytes = static_cast<std::uint32_t>(keyEnd - first);
    const auto valueBytes = static_cast<std::uint32_t>(last - value);
    entry = {HashText(first, keyBytes), first, keyBytes, value, valueBytes, keyEnd != equals};
    return true;
}

// Returns the line where the section ends before its end, or the end.
const char* ReadLines(const mbchar::CodePage& page, const char* at, const char* end,
                      std::vector<SectionEntry>& entries) {
    while (at < end) {
        const char* const next = FindByte(at, end, '\n');
        const char* first = at;
        const char* last = next;
        Trim(first, last);
        SectionEntry entry;
        if (first != last) {
            if (!ReadLine(page, first, last, entry)) return at;
            entries.push_back(entry);
        }
        at = next + 1;
    }
    return end;
}

}  // namespace

// FNV-1a.
std::uint32_t HashText(const char* text, std::uint32_t bytes) noexcept {
    std::uint32_t hash = 0x811C9DC5;
    for (std::uint32_t i = 0; i < bytes; ++i)
        hash = (hash ^ static_cast<unsigned char>(text[i])) * 0x01000193;
    return hash;
}

const char* ConfigFileReader::SectionData::Lines::add(const mbchar::CodePage& page, const char* body,
                                                      const char* bodyEnd) {
    const std::size_t from = entries.size();
    const char* const stop = ReadLines(page, body, bodyEnd, entries);
    if (entries.size() - from > kMostUnsorted) {
        std::sort(entries.begin() + static_cast<std::ptrdiff_t>(from), entries.end(),
                  [](const SectionEntry& a, const SectionEntry& b) {
                      return a.hash != b.hash ? a.hash < b.hash : a.key < b.key;  // else in their order
                  });
    }
    return stop;
}

// Of lines with the same key the first counts. But a key with white space before its "=" is looked up with
// that white space when it comes, and so not found: its line takes the place of what was there.
const SectionEntry* FindEntry(const SectionEntry* first, std::uint32_t count, const SAnsiString& key) {
    const std::string_view wanted(key.getString(), key.getLength());
    const std::uint32_t hash = HashText(wanted.data(), key.getLength());
    const SectionEntry* end = first + count;
    if (count > kMostUnsorted) std::tie(first, end) = std::equal_range(first, end, hash, HashOrder());
    const SectionEntry* found = nullptr;
    for (; first < end; ++first) {
        const bool isSame = first->hash == hash && KeyOf(*first) == wanted;
        if (isSame && (found == nullptr || first->isSpaced)) found = first;
    }
    return found;
}

std::vector<SectionEntry> EntriesByKey(const SectionEntry* first, std::uint32_t count) {
    std::vector<SectionEntry> entries(first, first + count);
    std::sort(entries.begin(), entries.end(),
              [](const SectionEntry& a, const SectionEntry& b) { return KeyOf(a) < KeyOf(b); });
    const auto end =
        std::unique(entries.begin(), entries.end(),
                    [](const SectionEntry& a, const SectionEntry& b) { return KeyOf(a) == KeyOf(b); });
    entries.erase(end, entries.end());
    return entries;
}

}  // namespace TarnLibA500
