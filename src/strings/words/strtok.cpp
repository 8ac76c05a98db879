#include "tarnlib/strtok.h"

#include <exception>

#include "diag/assert/require.h"
#include "strings/base/bytesearch.h"
#include "strings/characters/mbchar.h"

namespace TarnLibA500 {
namespace {

constexpr const char* kUnit = "strtok";
// The unit under which the cutting of name-value pairs has always reported.
constexpr const char* kPairsUnit = "nvpairs";

// Empty for a zero byte.
SAnsiString OneByte(char byte) {
    const char text[] = {byte, '\0'};
    return SAnsiString(text);
}

}  // namespace

// ------------------------------------------------------------------------------------------------ the text

SAnsiString::iterator STextRest::start() const noexcept {
    return SAnsiString::iterator(text_.getString() + position_);
}

// The end when there is no such token; a search for an empty one would match at once and cut nothing, for
// ever.
SAnsiString::iterator STextRest::find(const SAnsiString& token) const {
    if (token.isEmpty()) return text_.end();
    const char* const what = token.getString();
    const mbchar::CodePage& page = mbchar::CodePage::Current();
    const bool isByte = token.getLength() == 1 && *what != '\0' && page.isAlone(*what);
    if (!isByte || !page.isFoundByBytes()) return text_.find(token, start());
    return SAnsiString::iterator(FindByte(start().getPtr(), text_.end().getPtr(), *what));
}

// By bytes, as the token was found: a zero byte in it would end a walk by characters.
SAnsiString::iterator STextRest::behind(const SAnsiString& token, SAnsiString::iterator place) const {
    return place == text_.end() ? text_.end() : SAnsiString::iterator(place.getPtr() + token.getLength());
}

const SAnsiString& STextRest::get() const {
    if (position_ != 0) {
        text_ = text_.right(start());
        position_ = 0;
    }
    return text_;
}

SAnsiString STextRest::before(const SAnsiString& token) const {
    return SAnsiString(start(), find(token));
}

SAnsiString STextRest::after(const SAnsiString& token) const {
    return text_.right(behind(token, find(token)));
}

void STextRest::cut(const SAnsiString& token, SAnsiString& piece) {
    const SAnsiString::iterator place = find(token);
    piece.copyFrom(start().getPtr(), static_cast<std::uint32_t>(place.getPtr() - start().getPtr()));
    position_ = static_cast<std::uint32_t>(behind(token, place).getPtr() - text_.getString());
    if (isEmpty()) {
        text_.empty();
        position_ = 0;
    }
}

// ------------------------------------------------------------------------------------------------ SStrTok

SStrTok::SStrTok(const SAnsiString& string, const SAnsiString& token) {
    Set(string, token);
}

SStrTok::SStrTok(const char* string, const char* token) {
    Set(string, token);
}

void SStrTok::Set(const SAnsiString& string, const SAnsiString& token) {
    SetString(string);
    SetToken(token);
}

void SStrTok::Set(const char* string, const char* token) {
    SetString(string);
    SetToken(token);
}

void SStrTok::SetString(const SAnsiString& string) {
    rest_ = STextRest(string);
}

void SStrTok::SetString(const char* string) {
    Require(string != nullptr, kUnit, "String != NULL");
    rest_ = STextRest(string);
}

void SStrTok::SetToken(const SAnsiString& token) {
    Require(!token.isEmpty(), kUnit, "!SString( Token ).isEmpty()");
    token_ = token;
}

void SStrTok::SetToken(const char* token) {
    if (Require(token != nullptr, kUnit, "Token != NULL")) return SetToken(SAnsiString(token));
    token_.empty();
}

void SStrTok::SetToken(char token) {
    SetToken(OneByte(token));
}

SAnsiString SStrTok::Next() {
    SAnsiString piece;
    rest_.cut(token_, piece);
    return piece;
}

SAnsiString SStrTok::LeftStr() const {
    return rest_.before(token_);
}

SAnsiString SStrTok::RightStr() const {
    return rest_.after(token_);
}

SAnsiString SStrTok::GetString() const {
    return rest_.get();
}

bool SStrTok::IsEmpty() const {
    return rest_.isEmpty();
}

// ------------------------------------------------------------------------------------------------ RSStrTok

RSStrTok::RSStrTok(const char* text) : rest_(SAnsiString(text)) {}

RSStrTok::RSStrTok(const SAnsiString& text) : rest_(text) {}

void RSStrTok::Set(const char* text) {
    rest_ = STextRest(SAnsiString(text));
}

void RSStrTok::Set(const SAnsiString& text) {
    rest_ = STextRest(text);
}

void RSStrTok::SetToken(const char* token) {
    token_ = token;
}

void RSStrTok::SetToken(char token) {
    token_ = OneByte(token);
}

SAnsiString RSStrTok::Next() {
    SAnsiString piece;
    try {
        rest_.cut(token_, piece);
    } catch (const std::exception&) {
        SAssert(kPairsUnit, __LINE__, "FALSE");
    }
    return piece;
}

SAnsiString RSStrTok::Next(char token) {
    SetToken(token);
    return Next();
}

SAnsiString RSStrTok::Next(const char* token) {
    SetToken(token);
    return Next();
}

SAnsiString RSStrTok::LeftStr() {
    return Next();
}

SAnsiString RSStrTok::LeftStr(char token) {
    return Next(token);
}

SAnsiString RSStrTok::LeftStr(const char* token) {
    return Next(token);
}

SAnsiString RSStrTok::RightStr() {
    Next();
    return Next();
}

SAnsiString RSStrTok::RightStr(char token) {
    SetToken(token);
    return RightStr();
}

SAnsiString RSStrTok::RightStr(const char* token) {
    SetToken(token);
    return RightStr();
}

const SAnsiString& RSStrTok::rest() const {
    return rest_.get();
}

bool RSStrTok::IsEmpty() const {
    return rest_.isEmpty();
}

}  // namespace TarnLibA500
