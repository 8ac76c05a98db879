#include "tarnlib/sresourcetext.h"

#include "diag/assert/levels.h"
#include "tarnlib/straceobj.h"

namespace TarnLibA500 {
namespace {

struct Message {
    unsigned short identifier;
    const char* text;
};

// By their numbers, with places as trace texts have them.
constexpr Message kMessages[] = {
    {41204, "There is no connection to the mail server"},
    {41205, "The mail server does not reply"},
    {41206, "The mail server does not let the user in"},
    {41207, "The message cannot be sent as it is"},
    {41208, "System status or help (211)"},
    {41209, "Help (214)"},
    {41210, "The mail server is ready (220)"},
    {41211, "The mail server closes the connection (221)"},
    {41212, "The mail server has let the user in (235)"},
    {41213, "The mail server has done what was asked for (250)"},
    {41214, "The mail server will forward the message (251)"},
    {41215, "The mail server cannot tell whether there is such a recipient (252)"},
    {41216, "The mail server asks for the user's name or password (334)"},
    {41217, "The mail server waits for the message (354)"},
    {41218, "The mail server is not available now (421)"},
    {41219, "The user's password must be changed first (432)"},
    {41220, "The mail server does not take this encrypted form of the password (435)"},
    {41221, "The mailbox cannot be used now (450)"},
    {41222, "An error of the mail server has ended the action (451)"},
    {41223, "The mail server has too little room now (452)"},
    {41224, "The mail server cannot let anybody in now (454)"},
    {41225, "The mail server does not know the command (500)"},
    {41226, "The mail server refuses the arguments of the command (501)"},
    {41227, "The mail server does not have the command (502)"},
    {41228, "The mail server expects another command first (503)"},
    {41229, "The mail server does not take the command with this argument (504)"},
    {41230, "The mail server wants to know the user first (530)"},
    {41231, "This way of telling the user is too weak for the mail server (534)"},
    {41232, "The mail server does not accept user and password (535)"},
    {41233, "This way of telling the user needs an encrypted connection (538)"},
    {41234, "There is no such mailbox, or it must not be used (550)"},
    {41235, "The recipient is not a user of the mail server (551)"},
    {41236, "The message is larger than the mailbox has room for (552)"},
    {41237, "The name of the mailbox is not allowed (553)"},
    {41238, "The mail server refuses the message (554)"},
    {41318, "The FTP server does not transfer text (TYPE A): %1"},
    {41319, "The FTP server refuses the data connection: %1"},
    {41321, "The FTP server refuses the user name: %1"},
    {41322, "The FTP server refuses the password: %1"},
    {41327, "The connection to the FTP server failed: %1"},
    {41332, "The FTP server does not transfer binary data (TYPE I): %1"},
    {41333, "A command cannot be sent to the FTP server: %1"},
};

}  // namespace

SAnsiString SResourceText::Get(unsigned short identifier, const SAnsiString& detail) {
    for (const Message& message : kMessages) {
        if (message.identifier == identifier) return STraceHelper(message.text, detail);
    }
    TARN_TRACE_AT(levels::kFailure, "sresourcetext", "no text has the number %1", identifier);
    return STraceHelper("[%1]", identifier);
}

}  // namespace TarnLibA500
