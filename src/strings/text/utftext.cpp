#include "strings/text/utftext.h"

#include "strings/characters/utf.h"
#include "strings/text/stringbuilder.h"

namespace TarnLibA500 {

bool DecodeUTF8(const char* source, std::uint32_t nBytes, SOCAString& target) {
    target.empty();
    StringBuilder<wchar_t, 1> built(nBytes);  // never more units than bytes
    wchar_t* end = built.units();
    const auto* const first = reinterpret_cast<const unsigned char*>(source);
    if (!utf::ConvertWhole(first, first + nBytes, end, built.units() + nBytes)) return false;
    built.cut(static_cast<std::uint32_t>(end - built.units()));
    target = static_cast<const SString_t<wchar_t, 1>&>(built);
    return true;
}

}  // namespace TarnLibA500
