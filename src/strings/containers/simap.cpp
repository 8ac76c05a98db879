#include "tarnlib/simap.h"

#include "strings/characters/collate.h"

namespace TarnLibA500 {

const unsigned char* SMapWeights() {
    return CollationWeights();
}

int SMapCollate(const char* left, const char* right, std::uint32_t nBytes) {
    const unsigned char* const weights = CollationWeights();
    int order = 0;
    if (weights != nullptr && SMapDecide(weights, left, right, nBytes, order)) return order;
    return CollateNoCase(left, right, nBytes);
}

template class SIMap<SMapStringCaseInsensitive, SAnsiString>;

}  // namespace TarnLibA500
