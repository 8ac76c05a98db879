#include "tarnlib/simap.h"

namespace TarnLibA500 {

bool SMapStringCaseInsensitive::operator<(const SMapStringCaseInsensitive& other) const {
    const std::uint32_t length = text_.getLength();
    const std::uint32_t otherLength = other.text_.getLength();
    return length != otherLength ? length < otherLength : text_.compareNoCase(other.text_) < 0;
}

template class SIMap<SMapStringCaseInsensitive, SAnsiString>;

}  // namespace TarnLibA500
