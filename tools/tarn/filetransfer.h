#pragma once

#include <algorithm>
#include <optional>
#include <string>

#include "command.h"
#include "options.h"
#include "streams.h"
#include "tarnlib/csiftp.h"

/// What the commands for file servers have in common: their options, and what they do with a client that is logged in.
namespace tarn {

/// The options of the help text that every such command has, after those for logging in.
extern const char* const kTransferHelp;

/// The options of a command, with those of kTransferHelp.
Options TransferOptions(const Words& arguments, const std::vector<const char*>& values,
                        const std::vector<const char*>& switches);

/// The port of the options, or the usual one.
unsigned short PortOf(const Options& options, unsigned short usual);

/// Sets the time-out of the options.
void SetTimeout(TarnLibA500::CSIftp& client, const Options& options);

/// How far an upload is: a line on a terminal.
class Upload {
  public:
    void begin(const TarnLibA500::SAnsiString& local);
    /// Somebody looks on.
    bool isSeen() const { return line_ && line_->isSeen(); }
    void add(int sent);
    void end() { line_.reset(); }

  private:
    std::optional<Progress> line_;
    unsigned long long done_ = 0;
};

/// A client that shows it.
template <class Client>
class Watched : public Client {
  public:
    Upload upload;

  protected:
    /// In pieces that let somebody who looks on see that it goes on, on a slow line too.
    int SendDataMsg(const char* data, unsigned count) override {
        constexpr unsigned kPiece = 64 * 1024;
        if (!upload.isSeen()) return Client::SendDataMsg(data, count);
        for (unsigned at = 0; at < count; at += kPiece) {
            const int sent = Client::SendDataMsg(data + at, std::min(kPiece, count - at));
            if (sent < 0) return sent;
            upload.add(sent);
        }
        return static_cast<int>(count);
    }
};

/// Does what the options say, takes leave of the server, and says what he refused, a line each.
ExitStatus Transfer(const char* command, TarnLibA500::CSIftp& client, Upload& upload, const Options& options);

}  // namespace tarn
