#include "command.h"
#include "options.h"
#include "system.h"
#include "tarnlib/sguid.h"
#include "tarnlib/sstringconv.h"

namespace tarn {
namespace {

using TarnLibA500::SAnsiString;
using TarnLibA500::SGUID;

constexpr int kMostAtOnce = 1000000;

constexpr const char* kHelp =
    "[-count N] [-extend NUMBER] [-name TEXT] | -strip TEXT\n\n"
    "Prints identifiers, a line each.\n\n"
    "  -count N         as many new ones\n"
    "  -extend NUMBER   extended by a number of 32 bits\n"
    "  -name TEXT       the one that follows from a text\n"
    "  -strip TEXT      of an extended one, the identifier and the number\n\n"
    "Exit status: 0; 1 when TEXT is no extended identifier.\n";

unsigned long NumberOf(const std::string& word) {
    unsigned long number = 0;
    const bool isNumber = word.find_first_not_of("0123456789") == word.npos &&
                          TarnLibA500::SStringConv::FromString(SAnsiString(word.c_str()), number);
    if (!isNumber) throw Failure("-extend must be a number from 0 to 4294967295");
    return number;
}

ExitStatus Strip(const std::string& text) {
    try {
        SGUID base;
        unsigned long number = 0;
        if (SGUID::StripExtendedGUID(SGUID(SAnsiString(text.c_str())), base, number)) {
            Print(Str(base.ToString()) + " " + std::to_string(number) + "\n");
            return kYes;
        }
        PrintError("tarn guid: \"" + text + "\" is not extended");
    } catch (const SGUID::Error_InvalidString& failure) {
        PrintError("tarn guid: " + Str(failure.toString()));
    }
    return kNo;
}

ExitStatus ShowIdentifiers(const Words& arguments) {
    const Options options(arguments, {.values = {"count", "extend", "name", "strip"}});
    if (options.has("strip")) {
        if (options.count({"count", "extend", "name"}) != 0) throw Failure("-strip stands alone");
        return Strip(options.value("strip"));
    }
    if (options.count({"count", "name"}) == 2) throw Failure("-name gives one identifier, without -count");
    const int count = options.has("count") ? options.number("count", 1, kMostAtOnce) : 1;
    for (int i = 0; i < count; ++i) {
        SGUID id;
        options.has("name") ? void(id = SGUID::Make3rdPartyGUID(options.value("name").c_str()))
                            : void(id.Create());
        if (options.has("extend")) id = SGUID::ExtendGUID(id, NumberOf(options.value("extend")));
        Print(Str(id.ToString()) + "\n");
    }
    return kYes;
}

}  // namespace

const Command kGuidCommand = {"guid", "unique identifiers", kHelp, ShowIdentifiers};

}  // namespace tarn
