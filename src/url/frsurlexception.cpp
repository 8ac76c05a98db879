#include "tarnlib/frsurlexception.h"

#include "files/failuretext.h"
#include "url/frsprotocol.h"

namespace TarnLibA500 {

FRSUrlException::FRSUrlException() noexcept = default;
FRSUrlException::FRSUrlException(const FRSUrlException& other) noexcept = default;
FRSUrlException::FRSUrlException(FRSUrlException&& other) noexcept = default;
FRSUrlException& FRSUrlException::operator=(const FRSUrlException& other) noexcept = default;
FRSUrlException& FRSUrlException::operator=(FRSUrlException&& other) noexcept = default;
FRSUrlException::~FRSUrlException() = default;

FRSUrlException::FRSUrlException(ErrorCodes code, const SAnsiString& message, const SAnsiString& url) noexcept
    : code_(code), message_(message), url_(url) {}

SAnsiString FRSUrlException::toString() const {
    return FillTemplate(message_.getString(), url_, kFrsProtocol);
}

}  // namespace TarnLibA500
