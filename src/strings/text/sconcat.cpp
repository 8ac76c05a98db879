#include "tarnlib/sconcat.h"

#include <limits>

#include "strings/base/intconv.h"
#include "strings/base/integertypes.h"
#include "strings/base/memory.h"

namespace TarnLibA500 {

template <class unit, int flavour>
template <class Integer>
void SConcatPart<unit, flavour>::write(Integer number) noexcept {
    static_assert(std::numeric_limits<Integer>::digits10 + 3 <= sizeof(digits_) / sizeof(unit),
                  "sign, digits, terminator");
    text_ = digits_;
    length_ = StringConvFromDecimal(digits_, number);
}

#define TARN_PART_OF_INTEGER(T)                                  \
    template <class unit, int flavour>                           \
    SConcatPart<unit, flavour>::SConcatPart(T number) noexcept { \
        write(number);                                           \
    }
TARN_FOR_EACH_INTEGER(TARN_PART_OF_INTEGER)

template <class unit, int flavour>
SString_t<unit, flavour> SConcatPart<unit, flavour>::Join(const SConcatPart* parts, std::size_t count) {
    std::uint64_t length = 0;
    for (std::size_t i = 0; i < count; ++i) length += parts[i].length_;
    if (length > UINT32_MAX) throw BadAllocation();
    String joined;
    joined.setSize(static_cast<std::uint32_t>(length));
    for (std::size_t i = 0; i < count; ++i) joined.concat(parts[i].text_, parts[i].length_);
    return joined;
}

template class SConcatPart<char, 0>;
template class SConcatPart<char, 1>;
template class SConcatPart<wchar_t, 1>;

}  // namespace TarnLibA500
