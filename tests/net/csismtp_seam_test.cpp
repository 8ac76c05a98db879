#include "net/ossockets.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <map>
#include <string>

#include "files/osfiles.h"
#include "net/loopback.h"
#include "support/alloc_hooks.h"
#include "support/assert_recorder.h"
#include "support/failing.h"
#include "support/scratch_folder.h"
#include "tarnlib/csismtpmail.h"
#include "tarnlib/csisocket.h"
#include "tarnlib/senvironment.h"
#include "tarnlib/sfile.h"

using namespace TarnLibA500;

namespace {

/// A mail server that says yes to everything, for one client at a time, and counts the messages that it got whole.
class MailServer {
  public:
    unsigned short port() const { return server_.port; }
    std::atomic<int> messages = 0;

  private:
    void serve(SOCKET client) {
        static const std::map<std::string, std::string> kReplies = {{"EHLO", "250-x\r\n250 AUTH LOGIN"},
                                                                    {"AUTH", "334 x"},
                                                                    {"dQ==", "334 x"},
                                                                    {"cA==", "235 x"},
                                                                    {"DATA", "354 x"}};
        std::string text, reply = "220 x";
        for (char block[4096]; !reply.empty();) {
            send(client, (reply + "\r\n").c_str(), static_cast<int>(reply.size() + 2), 0);
            const char* const end = reply == "354 x" ? "\r\n.\r\n" : "\r\n";
            text.clear();
            for (int count = 1; count > 0 && !text.ends_with(end);) {
                count = recv(client, block, sizeof block, 0);
                text.append(block, static_cast<std::size_t>(std::max(count, 0)));
            }
            if (reply == "354 x" && text.ends_with(end)) ++messages;
            const auto known = kReplies.find(text.substr(0, 4));
            reply = text.empty() ? "" : known != kReplies.end() ? known->second : "250 x";
        }
    }
    tarntest::LoopbackServer server_{[this](SOCKET client) { serve(client); }};
};

/// Does the work until its nth call can no longer fail; the folder has nothing left afterwards.
void FailEach(const std::filesystem::path& folder, const std::function<bool(unsigned long)>& failsAt) {
    for (unsigned long nth = 1; failsAt(nth); ++nth) {
        ASSERT_LT(nth, 3000U);
        ASSERT_TRUE(!exists(folder) || is_empty(folder)) << nth;
    }
}

}  // namespace

TEST(Mail, EveryCallMayFailAndNothingIsLeft) {
    ASSERT_TRUE(CSISocket::initialize());
    MailServer server;
    const std::filesystem::path folder = tarntest::MakeScratchFolder("mail");
    const SAnsiString attached = (folder / "a").string().c_str();
    SFile(attached, SFile::writeOnly | SFile::create, SFile::readWriteMask, SFile::denyNothing)
        .writeString("x");
    SAnsiString oldPlace;
    SEnvironment::Get("TMP", oldPlace);
    SEnvironment::Set("TMP", folder.string().c_str());
    SIArray<SAnsiString> to;
    to.Add("a@x");
    CSISMTPMessage message;
    message.SetSender("b@x");
    message.SetTo(to);
    message.AddAttachment(CSISMTPMessage::MimeAttachment(attached));
    CSISMTPMail::Settings settings;
    settings.host = "127.0.0.1";
    settings.port = server.port();
    settings.localHost = "me";
    settings.user = "u";
    settings.password = "p";
    int sent = 0;
    const auto session = [&] {
        try {
            CSISMTPMail(settings).Send(message);
            ++sent;
        } catch (const CSISMTPMailException& failure) {
            EXPECT_LE(failure.GetErrorCode(), CSISMTPMailException::messageNotPossible);
        } catch (const std::bad_alloc&) {
        }
    };
    FailEach(folder / "smtp",
             [&](auto nth) { return tarntest::FailsAt<ossockets::Calls>(nth, WSAENETDOWN, session); });
    FailEach(folder / "smtp",
             [&](auto nth) { return tarntest::FailsAt<osfiles::Calls>(nth, ERROR_WRITE_FAULT, session); });
    FailEach(folder / "smtp", [&](auto nth) {  // the server has blocks of its own, so that none are counted
        tarntest::FailAllocation(nth);
        session();
        tarntest::FailAllocation(0);
        return tarntest::FailureHappened();
    });
    {
        tarntest::AssertRecorder traces(tarntest::kTracesToo, 4);
        session();
        EXPECT_EQ(traces.take("4 csismtpclient: Command: "),
                  "EHLO me\nAUTH LOGIN\n****\n****\nMAIL From:<b@x>\nRCPT To:<a@x>\nDATA\nQUIT\n");
    }
    SEnvironment::Set("TMP", oldPlace);
    EXPECT_GT(sent, 0);
    EXPECT_GE(server.messages, sent);
    std::filesystem::remove_all(folder);
    CSISocket::uninitialize();
}

TEST(Mail, AClientWithoutASocketConnectsNever) {
    struct NoSocket : CSISMTPClient {
        NoSocket() : CSISMTPClient(nullptr, nullptr, "me", "", "", authNone) {}
    } client;
    tarntest::AssertRecorder asserts;
    EXPECT_FALSE(client.Connect() || client.CheckAliveness());
    EXPECT_TRUE(asserts.sawLast("csismtpclient", "Error opening connection, socket was not initialized."));
    client.Disconnect();
}
