#pragma once

#include <cstdint>
#include <vector>

#include "strings/characters/mbchar.h"
#include "tarnlib/configfilereader.h"

namespace TarnLibA500 {

/// A key and its value, where they stand in the text.
struct SectionEntry {
    std::uint32_t hash;  ///< of the key
    const char* key;
    std::uint32_t keyBytes;
    const char* value;
    std::uint32_t valueBytes;
    bool isSpaced;  ///< white space stood between the key and the "="
};

/// A number for a text, so that most comparisons need no look at the text.
std::uint32_t HashText(const char* text, std::uint32_t bytes) noexcept;

/// The lines of the sections of a text, which stays in one piece. One object serves all sections of a file.
struct ConfigFileReader::SectionData::Lines : public CRefCount {
    explicit Lines(const SAnsiString& whole) : text(whole) {}

    /// Adds the lines of a section's body, which is a part of the text. Returns where it stopped: at a line
    /// without "=", or at the body's end.
    const char* add(const mbchar::CodePage& page, const char* body, const char* bodyEnd);
    std::uint32_t count() const noexcept { return static_cast<std::uint32_t>(entries.size()); }

    SAnsiString text;
    std::vector<SectionEntry> entries;  ///< section by section; many lines of one are sorted by hash
};

/// The line that counts for a key among a section's; null when there is none.
const SectionEntry* FindEntry(const SectionEntry* first, std::uint32_t count, const SAnsiString& key);

/// One line for each key, in the order of their unsigned bytes.
std::vector<SectionEntry> EntriesByKey(const SectionEntry* first, std::uint32_t count);

}  // namespace TarnLibA500
