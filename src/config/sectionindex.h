#pragma once

#include <cstdint>
#include <vector>

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

/// The lines of a section. The text stays in one piece that all sections of a file share.
struct ConfigFileReader::SectionData::Index {
  public:
    /// The body is a part of the text. "lines" is room that many sections may share, so that each allocates
    /// once.
    Index(const SAnsiString& text, const char* body, const char* bodyEnd, std::vector<SectionEntry>& lines);

    /// Null when there is no such key.
    const SectionEntry* find(const SAnsiString& key) const;
    /// One for each key, in the order of their unsigned bytes.
    std::vector<SectionEntry> byKey() const;

  private:
    SAnsiString text_;
    std::vector<SectionEntry> entries_;  // one for each key, by hash
};

}  // namespace TarnLibA500
