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
