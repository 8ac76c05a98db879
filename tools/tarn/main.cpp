#include <exception>

#include "command.h"
#include "logging.h"
#include "options.h"
#include "system.h"

namespace tarn {
namespace {

const Command* const kCommands[] = {
    &kTextCommand,    &kNumbersCommand, &kVersionCompareCommand, &kDateCommand, &kRegistryCommand,
    &kOptionsCommand, &kTraceCommand,   &kFilesCommand,          &kLockCommand, &kConfigCommand};

void PrintOverview() {
    Print(
        "tarn: texts, numbers, dates, options, the registry, files and the log as the library sees them\n\n"
        "usage: tarn COMMAND ...\n\n");
    for (const Command* command : kCommands) {
        std::string name(command->name);
        name.resize(17, ' ');
        Print("  " + name + command->summary + "\n");
    }
    Print(
        "\ntarn COMMAND -help explains a command. Every command takes the logging options of the library "
        "(-trace\nMASK, -loggingPath DIR, ...).\n"
        "Exit status: 0; 1 when the result says no; 2 when nothing could be done, with one line that says "
        "why.\n");
}

ExitStatus Run(const Command& command, const Words& arguments) {
    if (!arguments.empty() && AsksForHelp(arguments[0])) {
        Print(std::string("usage: tarn ") + command.name + " " + command.help);
        return kYes;
    }
    try {
        return command.run(arguments);
    } catch (const Failure& failure) {
        PrintError(std::string("tarn ") + command.name + ": " + failure.what());
    }
    return kFailed;
}

ExitStatus Dispatch(const Words& words) {
    const Logging logging(words);
    if (words.empty()) throw Failure("a command is missing; tarn -help lists them");
    if (AsksForHelp(words[0])) {
        PrintOverview();
        return kYes;
    }
    for (const Command* command : kCommands) {
        if (words[0] != command->name) continue;
        const Words arguments(words.begin() + 1, words.end());
        return Run(*command, command->takesEveryWord ? arguments : WithoutLoggingOptions(arguments));
    }
    throw Failure("there is no command " + words[0] + "; tarn -help lists them");
}

}  // namespace
}  // namespace tarn

int main() {
    const tarn::Utf8Output output;
    try {
        return tarn::Dispatch(tarn::ReadCommandLine());
    } catch (const std::exception& failure) {
        tarn::PrintError(std::string("tarn: ") + failure.what());
    }
    return tarn::kFailed;
}
