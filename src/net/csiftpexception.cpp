#include "tarnlib/csiftpexception.h"

#include "tarnlib/sresourcetext.h"

namespace TarnLibA500 {

CSIftpException::CSIftpException(ErrorCodes code, unsigned short messageID, const SAnsiString& detail)
    : code_(code), messageID_(messageID), detail_(detail) {}

CSIftpException::CSIftpException(const CSIftpException& other) noexcept = default;
CSIftpException& CSIftpException::operator=(const CSIftpException& other) noexcept = default;
CSIftpException::~CSIftpException() = default;

SAnsiString CSIftpException::GetDetails() const {
    SAnsiString text("Error stringres ID [");
    return text << messageID_ << "]. " << detail_;
}

SAnsiString CSIftpException::GetFTPErrorString() const {
    return SResourceText::Get(messageID_, detail_);
}

SAnsiString CSIftpException::toString() const {
    return GetFTPErrorString();
}

}  // namespace TarnLibA500
