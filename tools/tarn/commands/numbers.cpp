#include "command.h"
#include "system.h"
#include "tarnlib/neutralstr.h"
#include "tarnlib/sstringconv.h"

namespace tarn {
namespace {

using TarnLibA500::NeutralString;
using TarnLibA500::SAnsiString;
using TarnLibA500::SAnsiStringConv;

constexpr const char* kHelp =
    "TEXT...\n\n"
    "Shows how each text reads as an integer of 32 and 64 bits, in radix 10, 16 and 2, and as a real number "
    "in\n"
    "the locale-neutral form, each with the text that the value is written as.\n"
    "Exit status: 0; 1 when a text is neither a decimal integer of 64 bits nor a real number.\n";

void PrintReading(const std::string& kind, bool isNumber, const SAnsiString& value) {
    std::string label(kind);
    label.resize(22, ' ');
    Print("  " + label + (isNumber ? value.getString() : "no number") + "\n");
}

template <class Integer>
bool ShowInteger(const std::string& kind, const SAnsiString& text, int radix) {
    Integer value = 0;
    const bool isNumber = SAnsiStringConv::FromString(text, value, radix);
    SAnsiString shown = SAnsiStringConv::ToString(value, 10);
    if (isNumber && radix != 10) shown << " = " << SAnsiStringConv::ToString(value, radix);
    PrintReading(kind + ", radix " + std::to_string(radix), isNumber, shown);
    return isNumber;
}

bool ShowReal(const SAnsiString& text) {
    double value = 0;
    const bool isNumber = NeutralString::ToNumber(text, value);
    PrintReading("real", isNumber, isNumber ? NeutralString::FromNumber(value) : SAnsiString());
    return isNumber;
}

bool ShowText(const std::string& word) {
    const SAnsiString text(word.c_str());
    Print("\"" + word + "\"\n");
    ShowInteger<int>("32 bits", text, 10);
    const bool isInteger = ShowInteger<long long>("64 bits", text, 10);
    ShowInteger<long long>("64 bits", text, 16);
    ShowInteger<long long>("64 bits", text, 2);
    const bool isReal = ShowReal(text);
    return isInteger || isReal;
}

ExitStatus ShowNumbers(const Words& texts) {
    if (texts.empty()) throw Failure("at least one text is needed");
    bool allNumbers = true;
    for (const std::string& text : texts) allNumbers = ShowText(text) && allNumbers;
    return allNumbers ? kYes : kNo;
}

}  // namespace

const Command kNumbersCommand = {"numbers", "how texts read as numbers", kHelp, ShowNumbers};

}  // namespace tarn
