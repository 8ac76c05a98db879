#include <algorithm>

#include "assertwatch.h"
#include "command.h"
#include "options.h"
#include "system.h"
#include "tarnlib/sdatetimeconv.h"

namespace tarn {
namespace {

using TarnLibA500::SAnsiString;
using TarnLibA500::SDateTime;
using TarnLibA500::STimeSpan;
using TarnLibA500::STimeZone;

constexpr const char* kUsualPattern = "yyyy-MM-dd@HH:mm:ss.SS";
constexpr const char* kHelp =
    "[-format PATTERN] [-zone RULES] [-parse TEXT] [-add SPAN]\n\n"
    "Shows a moment: now, or the one that TEXT tells.\n\n"
    "  -format PATTERN    y M d H h m s S t g stand for parts, as in yyyy-MM-dd@HH:mm:ss.SS (the usual\n"
    "                     one) or \"dddd, d MMMM yyyy, h:mm tt\"; what stands in quotes is copied\n"
    "  -zone RULES        the zone for reading and showing: local (the usual one), utc, or rules such as\n"
    "                     \"CET,-60,CEST,-120,M3.5.0/02:00,M10.5.0/03:00\" (minutes west of Greenwich)\n"
    "  -parse TEXT        yyyy-MM-dd, yyyy/MM/dd or yyyyMMdd, then T, @ or a blank and HH:mm[:ss[.f]], then\n"
    "                     Z, +hh:mm or -hh:mm, which comes before the zone\n"
    "  -add SPAN          adds days, hours, minutes, seconds and milliseconds: 1d2h30m, -90m, 250ms\n\n"
    "Exit status: 0; 1 when TEXT is no date, or the sum beyond all dates.\n";

STimeZone FindZone(const std::string& rules) {
    const TarnLibA500::SAnsiStringCI name(rules.c_str());
    if (rules.empty() || name == "local") return STimeZone::TZ_Local();
    if (name == "utc") return STimeZone::TZ_UTC();
    const AssertWatch watch;  // rules that cannot be read are reported
    const STimeZone zone(rules.c_str());
    if (watch.sawOne()) throw Failure("-zone: \"" + rules + "\" are no rules; tarn date -help shows some");
    return zone;
}

struct SpanUnit {
    const char* name;
    long long milliseconds;
};
constexpr SpanUnit kSpanUnits[] = {
    {"d", 86'400'000}, {"h", 3'600'000}, {"ms", 1}, {"m", 60'000}, {"s", 1'000}};
constexpr std::size_t kMostDigits = 9;

/// Reads a number with its unit at the place, and steps over it.
STimeSpan TakeSpanPart(const std::string& text, std::size_t& at) {
    const std::size_t unitAt = std::min(text.find_first_not_of("0123456789", at), text.size());
    const std::size_t digits = unitAt - at;
    for (const SpanUnit& unit : kSpanUnits) {
        const std::string name(unit.name);
        if (digits == 0 || digits > kMostDigits || text.compare(unitAt, name.size(), name) != 0) continue;
        const long long number = std::stoll(text.substr(at, digits));
        at = unitAt + name.size();
        return STimeSpan::FromMilliseconds(number * unit.milliseconds);
    }
    throw Failure("-add: \"" + text + "\" is no span; 1d2h30m and -90m are");
}

STimeSpan ReadSpan(const std::string& text) {
    const bool negative = text[0] == '-';
    STimeSpan span;
    std::size_t at = negative || text[0] == '+' ? 1 : 0;
    do {
        span += TakeSpanPart(text, at);
    } while (at < text.size());
    return negative ? STimeSpan() - span : span;
}

ExitStatus ShowDate(const Words& arguments) {
    const Options options(arguments, {.values = {"format", "zone", "parse", "add"}});
    const STimeZone zone = FindZone(options.value("zone"));
    SDateTime value = SDateTime::GetCurrentDateTime();
    const std::string text = options.value("parse");
    if (options.has("parse") && !StringToDate(text.c_str(), value, zone)) {
        Print("\"" + text + "\" is no date\n");
        return kNo;
    }
    if (options.has("add")) value += ReadSpan(options.value("add"));
    if (!value.IsValid()) {
        Print("the sum is beyond all dates\n");
        return kNo;
    }
    const std::string pattern = options.has("format") ? options.value("format") : kUsualPattern;
    Print(Str(value.Format(pattern.c_str(), zone)) + "\n");
    return kYes;
}

}  // namespace

const Command kDateCommand = {"date", "a moment in a zone: shown, read, moved", kHelp, ShowDate};

}  // namespace tarn
