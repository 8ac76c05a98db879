#include "assertwatch.h"
#include "command.h"
#include "system.h"
#include "tarnlib/nvpairs.h"
#include "textoption.h"

namespace tarn {
namespace {

using TarnLibA500::CNameValuePairs;
using TarnLibA500::SAnsiString;
using TarnLibA500::SAsciiString;
using TarnLibA500::SWCharString;

constexpr int kLastCodeset = TarnLibA500::MBCSCodesetConverter::ISO8859_15;
constexpr int kUtf8 = TarnLibA500::MBCSCodesetConverter::UTF8;

constexpr const char* kHelp =
    "-encode|-decode [-text T] [-codeset N | -wide | -reduced]\n\n"
    "Escapes a text for a query string, or undoes that. Without -text it is standard input, whole.\n\n"
    "  -codeset N    the bytes are those of a code set: 1 UTF-8 (the usual one), 2 Windows 1252, 3 Windows "
    "932,\n"
    "                5 ISO 8859-15\n"
    "  -wide         UTF-16 units: %XX up to U+00FF, %uXXXX above (-decode reads both in any case)\n"
    "  -reduced      the same, with only control characters, characters above ~ and % + , = { } & $ "
    "escaped\n\n"
    "Exit status: 0; 1 when a % in what is decoded begins no escape: it stays.\n";

SWCharString Wide(const SAnsiString& text) {
    SWCharString wide;
    wide.fromMBCS(text.getString(), text.getLength());
    return wide;
}

CNameValuePairs::ExplicitCodeset CodesetOf(const Options& options) {
    const int number = options.has("codeset") ? options.number("codeset", 0, kLastCodeset) : kUtf8;
    return static_cast<CNameValuePairs::ExplicitCodeset>(number);
}

std::string Encode(const Options& options, const SAnsiString& text) {
    if (!options.has("wide") && !options.has("reduced"))
        return Str(CNameValuePairs::URLStrEncodeBytewise(text, CodesetOf(options)));
    SAsciiString escaped;
    options.has("wide") ? CNameValuePairs::URLStrEncodeAppend(escaped, Wide(text))
                        : CNameValuePairs::URLStrEncodeAppend3(escaped, Wide(text));
    return {escaped.getString(), escaped.getLength()};
}

ExitStatus ShowQuery(const Words& arguments) {
    const Options options(
        arguments, {.values = {"text", "codeset"}, .switches = {"encode", "decode", "wide", "reduced"}});
    if (options.count({"encode", "decode"}) != 1) throw Failure("either -encode or -decode is needed");
    if (options.count({"codeset", "wide", "reduced"}) > 1)
        throw Failure("-codeset, -wide and -reduced do not go together");
    const SAnsiString text = TextOf(options);
    const AssertWatch watch;  // a "%" that begins no escape is reported
    PrintResult(options, options.has("encode")
                             ? Encode(options, text)
                             : Str(CNameValuePairs::URLStrDecodeAndConvert(text, CodesetOf(options))));
    return watch.sawOne() ? kNo : kYes;
}

}  // namespace

const Command kQueryCommand = {"query", "escapes text for a query string, and back", kHelp, ShowQuery};

}  // namespace tarn
