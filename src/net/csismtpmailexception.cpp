#include "tarnlib/csismtpmailexception.h"

#include <algorithm>
#include <iterator>

#include "tarnlib/sresourcetext.h"
#include "tarnlib/straceobj.h"

namespace TarnLibA500 {
namespace {

constexpr unsigned short kFirstText = 41204;
/// The codes that have a text, in the order of their texts' numbers.
constexpr int kCodes[] = {2,   3,   4,   5,   211, 214, 220, 221, 235, 250, 251, 252,
                          334, 354, 421, 432, 435, 450, 451, 452, 454, 500, 501, 502,
                          503, 504, 530, 534, 535, 538, 550, 551, 552, 553, 554};
static_assert(kFirstText + std::size(kCodes) - 1 == 41238);

}  // namespace

CSISMTPMailException::CSISMTPMailException(int code, const SAnsiString& details)
    : code_(code), details_(details) {}

CSISMTPMailException::CSISMTPMailException(const CSISMTPMailException& other) noexcept = default;
CSISMTPMailException& CSISMTPMailException::operator=(const CSISMTPMailException& other) noexcept = default;
CSISMTPMailException::~CSISMTPMailException() = default;

unsigned short CSISMTPMailException::GetMessageID() const noexcept {
    const int* const found = std::lower_bound(std::begin(kCodes), std::end(kCodes), code_);
    if (found == std::end(kCodes) || *found != code_) return 0;
    return static_cast<unsigned short>(kFirstText + (found - std::begin(kCodes)));
}

SAnsiString CSISMTPMailException::SMTPErrorCodeString() const {
    const unsigned short identifier = GetMessageID();
    return identifier != 0 ? SResourceText::Get(identifier) : SAnsiString(STraceHelper("[%1]", code_));
}

SAnsiString CSISMTPMailException::toString() const {
    const SAnsiString text = SMTPErrorCodeString();
    return details_.isEmpty() ? text : SAnsiString(text + ": " + details_);
}

}  // namespace TarnLibA500
