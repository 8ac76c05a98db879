#include "tarnlib/smtphelper.h"

#include <algorithm>

#include "net/hostaddresses.h"
#include "net/smtpheader.h"
#include "strings/base/asciichar.h"
#include "tarnlib/csisocket.h"

namespace TarnLibA500 {
namespace {

bool IsDomain(std::string_view name) {
    return !name.empty() && name.front() != '.' && name.back() != '.' && name.find("..") == name.npos &&
           std::all_of(name.begin(), name.end(), [](char c) {
               return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || IsDigit(c) || c == '-' || c == '.';
           });
}

}  // namespace

SAnsiString SMTPHelper::GetAddress(const SAnsiString& address) {
    const smtp::Mailbox mailbox(address);
    return mailbox.isValid() ? mailbox.address : SAnsiString();
}

SAnsiString SMTPHelper::EncodeHeaderText(const SAnsiString& text) {
    return smtp::HeaderText(smtp::ToUtf8(text), 0);
}

SAnsiString SMTPHelper::GetLocalHost() {
    SAnsiString name = LocalHostName();
    if (IsDomain(smtp::View(name))) return name;
    SAnsiString address;
    if (!CSISocket::getnthipstring(0, address)) address = "127.0.0.1";
    return "[" + address + "]";
}

}  // namespace TarnLibA500
