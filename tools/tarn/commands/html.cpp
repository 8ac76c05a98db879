#include "command.h"
#include "tarnlib/swebencode.h"
#include "textoption.h"

namespace tarn {
namespace {

using TarnLibA500::SAnsiString;
using TarnLibA500::SWebEncode;

template <SAnsiString (*encode)(const SAnsiString&)>
ExitStatus ShowEncoded(const Words& arguments) {
    const Options options(arguments, {.values = {"text"}});
    PrintResult(options, Str(encode(TextOf(options))));
    return kYes;
}

constexpr const char* kHtmlHelp =
    "[-text T]\n\n"
    "Writes a text for a page in HTML: & < > \" become entities. Without -text it is standard input, "
    "whole.\n";
constexpr const char* kJsHelp =
    "[-text T]\n\n"
    "Writes what stands between the quotes of a string literal in JavaScript. Without -text it is standard\n"
    "input, whole.\n";
constexpr const char* kVbsHelp =
    "[-text T]\n\n"
    "Writes a text as a string expression of VBScript. Without -text it is standard input, whole.\n";

}  // namespace

const Command kHtmlCommand = {"html", "text for a page in HTML", kHtmlHelp,
                              ShowEncoded<SWebEncode::HTMLEncode>};
const Command kJsCommand = {"js", "text for a literal in JavaScript", kJsHelp,
                            ShowEncoded<SWebEncode::JavaScriptEncode>};
const Command kVbsCommand = {"vbs", "text as an expression in VBScript", kVbsHelp,
                             ShowEncoded<SWebEncode::VBScriptStringEncode>};

}  // namespace tarn
