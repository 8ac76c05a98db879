#include <algorithm>
#include <optional>

#include "command.h"
#include "network.h"
#include "options.h"
#include "streams.h"
#include "system.h"
#include "tarnlib/csiftp.h"
#include "tarnlib/pathparts.h"
#include "tarnlib/senvironment.h"
#include "tarnlib/sfile.h"
#include "tarnlib/sfilesys.h"

namespace tarn {
namespace {

using TarnLibA500::CSIftp;
using TarnLibA500::FileProp;
using TarnLibA500::SAnsiString;
using TarnLibA500::SEnvironment;
using TarnLibA500::SFile;
using TarnLibA500::SFileSys;
using TarnLibA500::SIArray;

constexpr const char* kHelp =
    "-host H -user U (-pass-env NAME | -pass-file F) [options]\n\n"
    "Manages files and directories on an FTP server, in this order:\n\n"
    "  -cd D         changes the working directory\n"
    "  -mkdir D      makes a directory and those above it\n"
    "  -put LOCAL    sends a file, or all files of a pattern (\"data\\*.csv\"); may be repeated\n"
    "  -to REMOTE    its name there; with a pattern or several files the directory for them\n"
    "  -delete F     deletes a file\n"
    "  -rmdir D      removes a directory\n"
    "  -pwd          prints the working directory\n\n"
    "  -port N       the port of the server (21)\n"
    "  -pass-env N   the environment variable that has the password\n"
    "  -pass-file F  the file whose first line is the password\n"
    "  -account A    for servers that ask for one\n"
    "  -passive      this end opens the data connections\n"
    "  -ascii        sends text: every line ends with CR LF\n"
    "  -timeout S    seconds that each wait may take (60)\n\n"
    "Exit status: 0; 1 when the server says no, with a line for what it refused; 2 when the connection or "
    "the\n"
    "login failed.\n";

/// The client, with a line on a terminal that tells how far it is.
class Client : public CSIftp {
  public:
    bool put(const SAnsiString& local, const SAnsiString& remote) {
        done_ = 0;
        progress_.emplace(SizeOf(local));
        const bool isStored = PutFile(local, remote);
        progress_.reset();
        return isStored;
    }

  protected:
    /// In pieces that let somebody who looks on see that it goes on, on a slow line too.
    int SendDataMsg(const char* data, unsigned count) override {
        constexpr unsigned kPiece = 64 * 1024;
        if (!progress_ || !progress_->isSeen()) return CSIftp::SendDataMsg(data, count);
        for (unsigned at = 0; at < count; at += kPiece) {
            const int sent = CSIftp::SendDataMsg(data + at, std::min(kPiece, count - at));
            if (sent < 0) return sent;
            progress_->show(done_ += static_cast<unsigned>(sent));
        }
        return static_cast<int>(count);
    }

  private:
    static long long SizeOf(const SAnsiString& local) try {
        return SFile(local, SFile::readOnly, SFile::readWriteMask, SFile::denyNothing).sizeEx();
    } catch (const TarnLibA500::SFileException&) {
        return -1;  // the client will say so
    }

    std::optional<Progress> progress_;
    unsigned long long done_ = 0;
};

/// What was refused, a line each.
class Refusals {
  public:
    void add(const char* what, const std::string& name) {
        PrintError(std::string("tarn ftp: the server refuses to ") + what + " " + name);
        haveSome_ = true;
    }
    ExitStatus status() const { return haveSome_ ? kNo : kYes; }

  private:
    bool haveSome_ = false;
};

/// Not from the command line, which other users of the machine can read.
SAnsiString Password(const Options& options) {
    if (options.count({"pass-env", "pass-file"}) != 1) throw Failure("-pass-env or -pass-file is needed");
    if (options.has("pass-file")) {
        SFile file(options.value("pass-file").c_str(), SFile::readOnly, SFile::readWriteMask,
                   SFile::denyNothing);
        return file.readLine();
    }
    SAnsiString password;
    const std::string name = options.value("pass-env");
    if (!SEnvironment::Get(name.c_str(), password)) throw Failure("there is no environment variable " + name);
    return password;
}

void LogIn(Client& client, const Options& options) {
    constexpr int kMostPort = 65535;
    constexpr int kMostSeconds = 86'400;
    const int port = options.has("port") ? options.number("port", 1, kMostPort) : 21;
    if (options.has("timeout"))
        client.SetTimeout(static_cast<unsigned>(options.number("timeout", 1, kMostSeconds)));
    client.SetPassive(options.has("passive"));
    const std::string host = options.value("host");
    const SAnsiString password = Password(options);
    if (!client.Connect(host.c_str(), static_cast<unsigned short>(port)))
        throw Failure(host + " does not serve now");
    if (!client.Login(options.value("user").c_str(), password, options.value("account").c_str()))
        throw Failure(host + " refuses the login");
    if (options.has("ascii")) client.SetASCII();
}

void PutOne(Client& client, const SAnsiString& local, const SAnsiString& remote, Refusals& refusals) {
    if (!client.put(local, remote)) refusals.add("store", Str(remote));
}

/// A file by its own name in a directory of the server, or in the working one.
SAnsiString NameIn(const SAnsiString& directory, const SAnsiString& name) {
    return directory.isEmpty() ? name : TarnLibA500::MakePath(directory, name, '/');
}

/// The files of a pattern.
void PutMatches(Client& client, const std::string& pattern, const SAnsiString& to, Refusals& refusals) {
    const std::size_t slash = pattern.find_last_of("/\\");
    const std::string directory = slash == pattern.npos ? "." : pattern.substr(0, slash + 1);
    const std::string names = slash == pattern.npos ? pattern : pattern.substr(slash + 1);
    SIArray<FileProp> entries;
    SFileSys::listing(directory.c_str(), names.c_str(), entries);
    bool haveAny = false;
    for (const FileProp& entry : entries) {
        if (entry.isDirectory) continue;
        haveAny = true;
        if (!entry.isExact) throw Failure("the name " + Str(entry.name) + " cannot be spelled");
        PutOne(client, TarnLibA500::MakePath(directory.c_str(), entry.name), NameIn(to, entry.name),
               refusals);
    }
    if (!haveAny) throw Failure("there are no files " + pattern);
}

void Put(Client& client, const Options& options, Refusals& refusals) {
    const SAnsiString to = options.value("to").c_str();
    const Words names = options.values("put");
    for (const std::string& name : names) {
        if (name.find_first_of("*?") != name.npos) {
            PutMatches(client, name, to, refusals);
            continue;
        }
        if (!SFileSys::isFile(name.c_str())) throw Failure("there is no file " + name);
        const SAnsiString own = name.substr(name.find_last_of("/\\") + 1).c_str();  // npos + 1 is 0
        PutOne(client, name.c_str(), names.size() == 1 && !to.isEmpty() ? to : NameIn(to, own), refusals);
    }
}

ExitStatus Ftp(const Words& arguments) {
    const Options options(arguments, {.required = {"host", "user"},
                                      .values = {"port", "pass-env", "pass-file", "account", "timeout", "cd",
                                                 "mkdir", "put", "to", "delete", "rmdir"},
                                      .switches = {"passive", "ascii", "pwd"}});
    const Network network;
    Client client;
    Refusals refusals;
    LogIn(client, options);
    const auto argument = [&](const char* name) { return SAnsiString(options.value(name).c_str()); };
    const auto attempt = [&](const char* name, const char* what, bool (CSIftp::*action)(const SAnsiString&)) {
        if (options.has(name) && !(client.*action)(argument(name))) refusals.add(what, options.value(name));
    };
    attempt("cd", "change to", &CSIftp::ChangeWorkingDir);
    attempt("mkdir", "make", &CSIftp::CreateDirs);
    Put(client, options, refusals);
    attempt("delete", "delete", &CSIftp::RemoveFile);
    attempt("rmdir", "remove", &CSIftp::RemoveDir);
    if (options.has("pwd")) Print(Str(client.GetWorkingDir()) + "\n");
    client.Disconnect();
    return refusals.status();
}

}  // namespace

const Command kFtpCommand = {"ftp", "puts files on an FTP server and manages its directories", kHelp, Ftp};

}  // namespace tarn
