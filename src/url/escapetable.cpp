#include "url/escapetable.h"

#include <string_view>

namespace TarnLibA500 {
namespace {

constexpr unsigned kFirstPrintable = 32;
constexpr unsigned kLastPrintable = 126;

constexpr bool StandsForItself(unsigned byte) {
    return (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z') || (byte >= '0' && byte <= '9') ||
           byte == '.' || byte == '_';
}

constexpr bool StandsForItself3(unsigned byte) {
    constexpr std::string_view kSigns = "%+,={}&$";
    return byte >= kFirstPrintable && byte <= kLastPrintable &&
           kSigns.find(static_cast<char>(byte)) == kSigns.npos;
}

template <class Test>
constexpr EscapeTable Generate(Test standsForItself) {
    EscapeTable table{};
    for (unsigned byte = 0; byte < EscapeTable::kBytes; ++byte) {
        char* const form = table.form[byte];
        table.isEscaped[byte] = !standsForItself(byte);
        table.length[byte] = table.isEscaped[byte] ? EscapeTable::kMaxForm : 1;
        form[0] = table.isEscaped[byte] ? '%' : static_cast<char>(byte);
        form[1] = table.isEscaped[byte] ? kUpperHexDigits[byte >> 4] : '\0';
        form[2] = table.isEscaped[byte] ? kUpperHexDigits[byte & 15] : '\0';
    }
    return table;
}

constexpr EscapeTable generateTable() {
    EscapeTable table = Generate(StandsForItself);
    table.form[' '][0] = '+';
    table.form[' '][1] = '\0';
    table.form[' '][2] = '\0';
    table.length[' '] = 1;
    return table;
}

constexpr EscapeTable generateTable3() {
    return Generate(StandsForItself3);
}

}  // namespace

// Made at compile time: there is no first use to wait for.
constinit const EscapeTable kStandardEscapes = generateTable();
constinit const EscapeTable kStandardEscapesNoPlus = Generate(StandsForItself);
constinit const EscapeTable kReducedEscapes = generateTable3();

}  // namespace TarnLibA500
