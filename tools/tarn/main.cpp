#include "command.h"
#include "logging.h"
#include "options.h"
#include "system.h"
#include "tarnlib/sdescribeexception.h"
#include "tarnlib/snarrowtext.h"
#include "tarnlib/tarnversion.h"

namespace tarn {
namespace {

const Command* const kCommands[] = {
    &kTextCommand,     &kNumbersCommand,  &kVersionCompareCommand, &kDateCommand,
    &kRegistryCommand, &kOptionsCommand,  &kTraceCommand,          &kFilesCommand,
    &kLockCommand,     &kConfigCommand,   &kEncryptCommand,        &kDecryptCommand,
    &kDigestCommand,   &kCompressCommand, &kExpandCommand,         &kCrc32Command,
    &kGuidCommand,     &kUrlCommand,      &kQueryCommand,          &kHtmlCommand,
    &kJsCommand,       &kVbsCommand,      &kLikeCommand,           &kResolveCommand,
    &kPingCommand,     &kFtpCommand,      &kMailCommand,           &kTlsCommand,
    &kSftpCommand};

void PrintOverview() {
    Print(
        "tarn: texts, numbers, dates, options, the registry, files, encryption, compression, URLs, the "
        "network and "
        "the log as the library sees "
        "them\n\n"
        "usage: tarn COMMAND ...\n\n");
    for (const Command* command : kCommands) {
        std::string name(command->name);
        name.resize(17, ' ');
        Print("  " + name + command->summary + "\n");
    }
    Print(
        "\ntarn COMMAND -help (or tarn help COMMAND) explains a command, tarn -version tells the version. "
        "Every "
        "command takes the logging options of the library "
        "(-trace\nMASK, -loggingPath DIR, ...).\n"
        "Exit status: 0; 1 when the result says no; 2 when nothing could be done, with one line that says "
        "why.\n");
}

ExitStatus PrintHelp(const Command& command) {
    Print(std::string("usage: tarn ") + command.name + " " + command.help);
    return kYes;
}

ExitStatus PrintVersion() {
    Print("tarn " TARN_VERSION_TEXT ", tarnlib " + std::string(TarnLibA500::TarnVersionText()) + "\n");
    return kYes;
}

const Command& FindCommand(const std::string& name) {
    for (const Command* command : kCommands) {
        if (name == command->name) return *command;
    }
    throw Failure("there is no command " + name + "; tarn -help lists them");
}

// Of the exception in hand: the tool's own sentences as they are.
std::string WhatFailed() {
    try {
        throw;
    } catch (const Failure& failure) {
        return failure.what();
    } catch (...) {
        return Str(TarnLibA500::SDescribeException());
    }
}

ExitStatus Run(const Command& command, const Words& arguments) {
    if (!arguments.empty() && AsksForHelp(arguments[0])) return PrintHelp(command);
    try {
        return command.run(arguments);
    } catch (...) {
        PrintError(std::string("tarn ") + command.name + ": " + WhatFailed());
    }
    return kFailed;
}

ExitStatus Dispatch(const Words& words) {
    const Logging logging;
    if (words.empty()) throw Failure("a command is missing; tarn -help lists them");
    if (words[0] == "version" || AsksForVersion(words[0])) return PrintVersion();
    if (words[0] == "help" || AsksForHelp(words[0])) {
        if (words.size() > 1) return PrintHelp(FindCommand(words[1]));
        PrintOverview();
        return kYes;
    }
    const Command& command = FindCommand(words[0]);
    const Words arguments(words.begin() + 1, words.end());
    return Run(command, command.takesEveryWord ? arguments : WithoutLoggingOptions(arguments));
}

int RunTool() {
    TarnLibA500::SNarrowText::UseUtf8();
    try {
        const ExitStatus status = Dispatch(ReadCommandLine());
        if (!FlushOutput()) throw Failure("cannot write standard output");
        return status;
    } catch (...) {
        PrintError("tarn: " + WhatFailed());
    }
    return kFailed;
}

}  // namespace
}  // namespace tarn

int main() {
    tarn::UseBinaryStreams();
    return tarn::RunTool();
}
