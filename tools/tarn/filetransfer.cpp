#include "filetransfer.h"

#include "system.h"
#include "tarnlib/pathparts.h"
#include "tarnlib/sfile.h"
#include "tarnlib/sfilesys.h"

namespace tarn {

using TarnLibA500::CSIftp;
using TarnLibA500::CSIftpException;
using TarnLibA500::FileProp;
using TarnLibA500::SAnsiString;
using TarnLibA500::SFile;
using TarnLibA500::SFileSys;
using TarnLibA500::SIArray;

const char* const kTransferHelp =
    "  -cd D         changes the working directory\n"
    "  -mkdir D      makes a directory and those above it\n"
    "  -put LOCAL    sends a file, or all files of a pattern (\"data\\*.csv\"); may be repeated\n"
    "  -to REMOTE    its name there; with a pattern or several files the directory for them\n"
    "  -delete F     deletes a file\n"
    "  -rmdir D      removes a directory\n"
    "  -pwd          prints the working directory\n\n"
    "  -pass-env N   the environment variable that has the password\n"
    "  -pass-file F  the file whose first line is the password\n"
    "  -timeout S    seconds that each wait may take (60)\n";

Options TransferOptions(const Words& arguments, const std::vector<const char*>& values,
                        const std::vector<const char*>& switches) {
    Options::Names names = {
        .required = {"host", "user"},
        .values = {"port", "pass-env", "pass-file", "timeout", "cd", "mkdir", "put", "to", "delete", "rmdir"},
        .switches = {"pwd"}};
    names.values.insert(names.values.end(), values.begin(), values.end());
    names.switches.insert(names.switches.end(), switches.begin(), switches.end());
    return Options(arguments, names);
}

// ----------------------------------------------------------------------------------------- logging in

unsigned short PortOf(const Options& options, unsigned short usual) {
    constexpr int kMostPort = 65535;
    return options.has("port") ? static_cast<unsigned short>(options.number("port", 1, kMostPort)) : usual;
}

void SetTimeout(CSIftp& client, const Options& options) {
    constexpr int kMostSeconds = 86'400;
    if (options.has("timeout"))
        client.SetTimeout(static_cast<unsigned>(options.number("timeout", 1, kMostSeconds)));
}

// ----------------------------------------------------------------------------------------- the work

void Upload::begin(const SAnsiString& local) {
    long long size = -1;
    try {
        size = SFile(local, SFile::readOnly, SFile::readWriteMask, SFile::denyNothing).sizeEx();
    } catch (const TarnLibA500::SFileException&) {
        size = -1;  // the client will say so
    }
    done_ = 0;
    line_.emplace(size);
}

void Upload::add(int sent) {
    if (sent > 0 && line_) line_->show(done_ += static_cast<unsigned>(sent));
}

namespace {

class Work {
  public:
    Work(const char* command, CSIftp& client, Upload& upload, const Options& options)
        : command_(command), client_(client), upload_(upload), options_(options) {}

    ExitStatus run() {
        attempt("cd", "change to", &CSIftp::ChangeWorkingDir);
        attempt("mkdir", "make", &CSIftp::CreateDirs);
        put();
        attempt("delete", "delete", &CSIftp::RemoveFile);
        attempt("rmdir", "remove", &CSIftp::RemoveDir);
        if (options_.has("pwd")) Print(Str(client_.GetWorkingDir()) + "\n");
        client_.Disconnect();
        return hasRefused_ ? kNo : kYes;
    }

  private:
    void noteRefusal(const char* what, const std::string& name) {
        PrintError(std::string("tarn ") + command_ + ": the server refuses to " + what + " " + name);
        hasRefused_ = true;
    }

    void attempt(const char* name, const char* what, bool (CSIftp::*action)(const SAnsiString&)) {
        if (!options_.has(name)) return;
        const std::string argument = options_.value(name);
        if (!(client_.*action)(argument.c_str())) noteRefusal(what, argument);
    }

    /// Some clients throw when it is the server who does not open the file.
    bool isStored(const SAnsiString& local, const SAnsiString& remote) try {
        return client_.PutFile(local, remote);
    } catch (const CSIftpException& failure) {
        if (failure.GetErrorCode() != CSIftpException::dataConnectionError || !client_.Connected()) throw;
        return false;
    }

    void putOne(const SAnsiString& local, const SAnsiString& remote) {
        upload_.begin(local);
        const bool isDone = isStored(local, remote);
        upload_.end();
        if (!isDone) noteRefusal("store", Str(remote));
    }

    /// A file by its own name in a directory of the server, or in the working one.
    static SAnsiString NameIn(const SAnsiString& directory, const SAnsiString& name) {
        return directory.isEmpty() ? name : TarnLibA500::MakePath(directory, name, '/');
    }

    /// The files of a pattern.
    void putMatches(const std::string& pattern, const SAnsiString& to) {
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
            putOne(TarnLibA500::MakePath(directory.c_str(), entry.name), NameIn(to, entry.name));
        }
        if (!haveAny) throw Failure("there are no files " + pattern);
    }

    void put() {
        const SAnsiString to = options_.value("to").c_str();
        const Words names = options_.values("put");
        for (const std::string& name : names) {
            if (name.find_first_of("*?") != name.npos) {
                putMatches(name, to);
                continue;
            }
            if (!SFileSys::isFile(name.c_str())) throw Failure("there is no file " + name);
            const SAnsiString own = name.substr(name.find_last_of("/\\") + 1).c_str();  // npos + 1 is 0
            putOne(name.c_str(), names.size() == 1 && !to.isEmpty() ? to : NameIn(to, own));
        }
    }

    const char* command_;
    CSIftp& client_;
    Upload& upload_;
    const Options& options_;
    bool hasRefused_ = false;
};

}  // namespace

ExitStatus Transfer(const char* command, CSIftp& client, Upload& upload, const Options& options) {
    return Work(command, client, upload, options).run();
}

}  // namespace tarn
