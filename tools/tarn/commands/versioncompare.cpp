#include "assertwatch.h"
#include "command.h"
#include "system.h"
#include "tarnlib/sversion.h"

namespace tarn {
namespace {

constexpr const char* kHelp =
    "A B\n\n"
    "Prints -1, 0 or 1 and what it means. Components stand between blanks, full stops and commas and "
    "compare\n"
    "as numbers; when all common ones agree, more components win.\n"
    "Exit status: 0; 1 when a component that was compared is no number (it counts as 0).\n";

ExitStatus CompareVersions(const Words& arguments) {
    if (arguments.size() != 2) throw Failure("two versions are needed");
    const AssertWatch watch;  // a component that is no number is reported
    const int order = TarnLibA500::SVersion::CompareVersions(arguments[0].c_str(), arguments[1].c_str());
    const char* const relation = order < 0 ? " is lower than " : order > 0 ? " is higher than " : " equals ";
    Print(std::to_string(order) + "\n" + arguments[0] + relation + arguments[1] + "\n");
    if (!watch.sawOne()) return kYes;
    Print("a component is no number and counted as 0\n");
    return kNo;
}

}  // namespace

const Command kVersionCompareCommand = {"version-compare", "which of two versions is higher", kHelp,
                                        CompareVersions};

}  // namespace tarn
