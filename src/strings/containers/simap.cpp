#include "tarnlib/simap.h"

#include "strings/characters/collate.h"

namespace TarnLibA500 {

int SMapCollate(const char* left, const char* right, std::uint32_t nBytes) {
    return CollateNoCase(left, right, nBytes);
}

template class SIMap<SMapStringCaseInsensitive, SAnsiString>;

}  // namespace TarnLibA500
