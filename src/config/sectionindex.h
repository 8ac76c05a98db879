#pragma once

#include <cstdint>
#include <vector>

#include "tarnlib/configfilereader.h"

namespace TarnLibA500 {

/// A key and its value, where they stand in the text.
struct SectionEntry {
    const char* key;
    std::uint32_t keyBytes;
    bool isSpaced;        ///< white space stood between the key and the "="
    std::uint64_t start;  ///< the key's first eight bytes as a number: it orders most keys
    const char* value;
    std::uint32_t valueBytes;
};

/// The lines of a section, sorted by key. The text stays in one piece that all sections of a file share.
struct ConfigFileReader::SectionData::Index {
  public:
    /// The body is a part of the text.
    Index(const SAnsiString& text, const char* body, const char* bodyEnd);

    /// Null when there is no such key.
    const SectionEntry* find(const SAnsiString& key) const;
    /// One for each key, in the order of their unsigned bytes.
    const std::vector<SectionEntry>& entries() const noexcept { return entries_; }

  private:
    SAnsiString text_;
    std::vector<SectionEntry> entries_;
};

}  // namespace TarnLibA500
