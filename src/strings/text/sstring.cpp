#include "tarnlib/sstring.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <string>

#include "diag/assert/require.h"
#include "strings/base/bytesearch.h"
#include "strings/base/lentblock.h"
#include "strings/base/memory.h"
#include "strings/base/wipe.h"
#include "strings/characters/collate.h"
#include "strings/characters/flavour.h"
#include "strings/text/casemap.h"
#include "strings/text/flavourconvert.h"

namespace TarnLibA500 {
namespace {

constexpr const char* kUnit = "sstring";
constexpr const char* kLengthOverflow = "length + nUnits < 0xFFFFFFFF";

// Fresh blocks carry this much room beyond what was asked for, so that small additions need no second
// allocation.
constexpr std::uint32_t kSlackUnits = 32;
constexpr std::uint32_t kTooManyUnits = 0xFFFFFFE0;
constexpr std::uint32_t kMaxGrownUnits = 0xFFFFFFDE;
constexpr std::uint32_t kMaxUnits = 0xFFFFFFFF;
constexpr int kWipeByte = '#';

template <class unit>
std::uint32_t LengthOf(const unit* text) {
    return text != nullptr ? static_cast<std::uint32_t>(std::char_traits<unit>::length(text)) : 0;
}

}  // namespace

// -------------------------------------------------------------------------------------------- buffer control

template <class unit, int flavour>
typename SString_t<unit, flavour>::SStringBuffer* SString_t<unit, flavour>::GetEmptyBuffer() noexcept {
    // Made at compile time and never destroyed: strings of other modules may outlive every destructor here.
    static constinit _EmptyBuffer empty{{-1, 0, kEmptyBufferCapacity}, unit()};
    return &empty.header;
}

// What a capacity takes. It alone says which kind of block it is, so it changes with the block only.
template <class unit, int flavour>
std::uint64_t SString_t<unit, flavour>::BlockBytes(std::uint64_t capacity) noexcept {
    return sizeof(SStringBuffer) + capacity * sizeof(unit);
}

template <class unit, int flavour>
typename SString_t<unit, flavour>::SStringBuffer* SString_t<unit, flavour>::NewBuffer(std::uint32_t n) {
    if (n >= kTooManyUnits) throw BadAllocation();
    const std::uint32_t capacity = n + kSlackUnits;
    auto* buffer = new (memory::AllocateSized(BlockBytes(capacity))) SStringBuffer(1, 0, capacity);
    buffer->getBuffer()[0] = unit();
    return buffer;
}

template <class unit, int flavour>
typename SString_t<unit, flavour>::SStringBuffer* SString_t<unit, flavour>::NewBuffer(const unit* text,
                                                                                      std::uint32_t length,
                                                                                      std::uint32_t n) {
    SStringBuffer* buffer = NewBuffer(n);
    CopyUnits(buffer->getBuffer(), text, length);
    buffer->getBuffer()[length] = unit();
    buffer->length = length;
    return buffer;
}

template <class unit, int flavour>
void SString_t<unit, flavour>::FreeBuffer(SStringBuffer* buffer) noexcept {
    // Where the compiler sees the empty block, it would warn of a free that never happens.
    __asm__("" : "+r"(buffer));
    memory::FreeSized(buffer, static_cast<std::size_t>(BlockBytes(buffer->capacity)));
}

template <class unit, int flavour>
void SString_t<unit, flavour>::growBuffer(std::uint32_t capacity) {
    const auto oldBytes = static_cast<std::size_t>(BlockBytes(buffer_->capacity));
    buffer_ = static_cast<SStringBuffer*>(memory::ReallocateSized(buffer_, oldBytes, BlockBytes(capacity)));
    buffer_->capacity = capacity;
}

template <class unit, int flavour>
void SString_t<unit, flavour>::allocBuffer(std::uint32_t n) {
    buffer_ = NewBuffer(n);
}

template <class unit, int flavour>
bool SString_t<unit, flavour>::releaseStringBuffer(SStringBuffer* buffer, bool wipe) noexcept {
    if (buffer == nullptr || IsEmptyBuffer(buffer)) return true;
    const std::size_t bytes = std::size_t{buffer->capacity} * sizeof(unit);
    // Before it is counted down, because the lender may take it back at once.
    const bool isLent = wipe && buffer->refCount.load(std::memory_order_acquire) == kLenderMark + 1;
    if (isLent) Wipe(buffer->getBuffer(), bytes, kWipeByte);
    if (buffer->refCount.fetch_sub(1, std::memory_order_acq_rel) != 1) return !wipe || isLent;
    if (wipe) Wipe(buffer->getBuffer(), bytes, kWipeByte);
    FreeBuffer(buffer);
    return true;
}

template <class unit, int flavour>
void SString_t<unit, flavour>::setBuffer(SStringBuffer* buffer, bool wipe) {
    if (buffer == buffer_) return;
    AddReference(buffer);
    if (!releaseStringBuffer(std::exchange(buffer_, buffer), wipe)) {
        throw std::runtime_error("Cannot overwrite memory, SString buffer is shared.");
    }
}

template <class unit, int flavour>
void SString_t<unit, flavour>::unlinkBuffer(bool wipe) {
    setBuffer(GetEmptyBuffer(), wipe);
}

template <class unit, int flavour>
bool SString_t<unit, flavour>::releaseBuffer(bool wipe) noexcept {
    return releaseStringBuffer(std::exchange(buffer_, nullptr), wipe);
}

template <class unit, int flavour>
void SString_t<unit, flavour>::terminateBuffer(std::uint32_t length) noexcept {
    buffer_->length = length;
    characters()[length] = unit();
}

template <class unit, int flavour>
void SString_t<unit, flavour>::copyOnWrite(std::uint32_t n) {
    const std::uint32_t length = getLength();
    const std::uint32_t needed = std::max(n, length);
    if (needed > kMaxGrownUnits) throw BadAllocation();
    if (!isExclusive()) return adopt(NewBuffer(getString(), length, needed + 1));
    if (needed + 1 <= buffer_->capacity) return;
    growBuffer(needed + 1 + kSlackUnits);
    terminateBuffer(length);
}

// The request doubles the old length, not the capacity, and a block that grows in place gets no slack:
// deliberate, and the sizes are relied upon by callers that count allocations.
template <class unit, int flavour>
unit* SString_t<unit, flavour>::concatAllocHelper(std::uint32_t k) {
    if (k == 0) return nullptr;
    const std::uint32_t oldLength = getLength();
    if (!Require(k < kMaxUnits - oldLength, kUnit, kLengthOverflow)) return nullptr;
    const std::uint32_t newLength = oldLength + k;
    if (buffer_->capacity < newLength + 1) {
        const std::uint64_t request = 2 * std::uint64_t{oldLength} + k;
        if (!Require(request < kMaxUnits, kUnit, kLengthOverflow)) return nullptr;
        const auto capacity = static_cast<std::uint32_t>(request) + 1;
        if (isExclusive()) {
            growBuffer(capacity);
        } else {
            adopt(NewBuffer(getString(), oldLength, capacity));
        }
    } else if (!isExclusive()) {
        adopt(NewBuffer(getString(), oldLength, newLength + 1));
    }
    terminateBuffer(newLength);
    return characters() + oldLength;
}

// ------------------------------------------------------------------------------- construction and assignment

template <class unit, int flavour>
SString_t<unit, flavour>::SString_t() : buffer_(GetEmptyBuffer()) {}

template <class unit, int flavour>
SString_t<unit, flavour>::SString_t(const unit* text) : SString_t(text, LengthOf(text)) {}

template <class unit, int flavour>
SString_t<unit, flavour>::SString_t(const unit* text, std::uint32_t nUnits) : buffer_(GetEmptyBuffer()) {
    if (text != nullptr && nUnits != 0) {
        if (nUnits > kMaxGrownUnits) throw BadAllocation();
        buffer_ = NewBuffer(text, nUnits, nUnits + 1);
    }
}

template <class unit, int flavour>
SString_t<unit, flavour>::SString_t(const iterator& first, const iterator& last)
    : SString_t(first.getPtr(), first.getPtr() < last.getPtr()
                                    ? static_cast<std::uint32_t>(last.getPtr() - first.getPtr())
                                    : 0) {}

template <class unit, int flavour>
SString_t<unit, flavour>::SString_t(const Char& character)
    : SString_t(character.getUnits(), character.getLength()) {}

template <class unit, int flavour>
SString_t<unit, flavour>& SString_t<unit, flavour>::operator=(const unit* text) {
    return copyFrom(text);
}

template <class unit, int flavour>
SString_t<unit, flavour>& SString_t<unit, flavour>::operator=(const Char& character) {
    return copyFrom(character.getUnits(), character.getLength());
}

template <class unit, int flavour>
SString_t<unit, flavour>& SString_t<unit, flavour>::copyFrom(const SString_t& text) {
    return copyFrom(text.getString(), text.getLength());
}

template <class unit, int flavour>
SString_t<unit, flavour>& SString_t<unit, flavour>::copyFrom(const unit* text) {
    return copyFrom(text, LengthOf(text));
}

template <class unit, int flavour>
SString_t<unit, flavour>& SString_t<unit, flavour>::copyFrom(const unit* text, std::uint32_t nUnits) {
    if (text == nullptr || nUnits == 0) {
        empty();
        return *this;
    }
    if (nUnits > kMaxGrownUnits) throw BadAllocation();
    if (isExclusive() && nUnits < buffer_->capacity) {
        CopyUnits(characters(), text, nUnits);  // the text may lie inside this block
        terminateBuffer(nUnits);
    } else {
        adopt(NewBuffer(text, nUnits, nUnits + 1));
    }
    return *this;
}

template <class unit, int flavour>
void SString_t<unit, flavour>::empty() noexcept {
    adopt(GetEmptyBuffer());
}

// ------------------------------------------------------------------------------------------------- iterator

template <class unit, int flavour>
typename SString_t<unit, flavour>::iterator& SString_t<unit, flavour>::iterator::operator++() {
    p_ = Flavour<unit, flavour>::next(p_);
    return *this;
}

template <class unit, int flavour>
typename SString_t<unit, flavour>::iterator& SString_t<unit, flavour>::iterator::operator+=(
    std::uint32_t characters) {
    p_ = Flavour<unit, flavour>::advance(p_, characters);
    return *this;
}

template <class unit, int flavour>
const SChar_t<unit, flavour> SString_t<unit, flavour>::iterator::operator*() const {
    return Char(p_);
}

// ------------------------------------------------------------------------------------------------- access

template <class unit, int flavour>
std::uint32_t SString_t<unit, flavour>::getNChars() const {
    return getCharIndex(end());
}

template <class unit, int flavour>
std::uint32_t SString_t<unit, flavour>::getCharIndex(const iterator& position) const {
    const unit* const first = getString();
    return Flavour<unit, flavour>::count(first, std::clamp(position.getPtr(), first, first + getLength()));
}

template <class unit, int flavour>
typename SString_t<unit, flavour>::iterator SString_t<unit, flavour>::getCursor(
    std::uint32_t position) const {
    return iterator(Flavour<unit, flavour>::advanceWithin(getString(), getString() + getLength(), position));
}

template <class unit, int flavour>
SChar_t<unit, flavour> SString_t<unit, flavour>::getAt(std::uint32_t position) const {
    return Flavour<unit, flavour>::characterAt(getString(), getString() + getLength(), position);
}

template <class unit, int flavour>
void SString_t<unit, flavour>::setAt(std::uint32_t position, const Char& character) {
    const iterator at = getCursor(position);
    const std::uint32_t replaced = (*at).getLength();
    if (replaced == 0 || character.getLength() == 0) return;
    const auto offset = static_cast<std::uint32_t>(at.getPtr() - getString());
    replaceUnits(offset, replaced, character.getUnits(), character.getLength());
}

// ------------------------------------------------------------------------------------------------- editing

template <class unit, int flavour>
SString_t<unit, flavour>& SString_t<unit, flavour>::concatSlowly(unit single) {
    if (unit* const end = concatAllocHelper(1)) *end = single;
    return *this;
}

template <class unit, int flavour>
SString_t<unit, flavour>& SString_t<unit, flavour>::concatSlowly(const unit* text, std::uint32_t nUnits) {
    if (text == nullptr) return *this;
    // The text may lie inside this string, whose block may move.
    const bool inside = holds(text);
    const std::ptrdiff_t offset = inside ? text - getString() : 0;
    unit* const end = concatAllocHelper(nUnits);
    if (end != nullptr) CopyUnits(end, inside ? getString() + offset : text, nUnits);
    return *this;
}

template <class unit, int flavour>
SString_t<unit, flavour>& SString_t<unit, flavour>::concat(const Char& character) {
    return concat(character.getUnits(), character.getLength());
}

template <class unit, int flavour>
void SString_t<unit, flavour>::concatFromAsciiCharacters(const char* text, std::uint32_t count) {
    const SString_t source = holds(text) ? *this : SString_t();  // keeps the old block alive
    unit* const end = text != nullptr ? concatAllocHelper(count) : nullptr;
    for (std::uint32_t i = 0; end != nullptr && i < count; ++i) end[i] = static_cast<unsigned char>(text[i]);
}

template <class unit, int flavour>
void SString_t<unit, flavour>::concatFromAsciiCharacters(const wchar_t* text, std::uint32_t count) {
    const SString_t source = holds(text) ? *this : SString_t();  // keeps the old block alive
    unit* const end = text != nullptr ? concatAllocHelper(count) : nullptr;
    for (std::uint32_t i = 0; end != nullptr && i < count; ++i)
        end[i] = static_cast<unsigned char>(text[i] & 0xFF);
}

// Puts "added" units in the place of "removed" ones. The new units may lie inside this string.
template <class unit, int flavour>
void SString_t<unit, flavour>::replaceUnits(std::uint32_t offset, std::uint32_t removed, const unit* text,
                                            std::uint32_t added) {
    const std::uint32_t kept = getLength() - removed;
    if (!Require(added < kMaxUnits - kept, kUnit, kLengthOverflow)) return;
    const SString_t source = holds(text) ? *this : SString_t();  // keeps the old block alive and untouched
    copyOnWrite(kept + added);
    unit* const place = characters() + offset;
    CopyUnits(place + added, place + removed, kept - offset);
    CopyUnits(place, text, added);
    terminateBuffer(kept + added);
}

template <class unit, int flavour>
void SString_t<unit, flavour>::insertChar(std::uint32_t position, const Char& character) {
    if (character.getLength() == 0) return;
    const auto offset = static_cast<std::uint32_t>(getCursor(position).getPtr() - getString());
    replaceUnits(offset, 0, character.getUnits(), character.getLength());
}

template <class unit, int flavour>
void SString_t<unit, flavour>::insertChars(std::uint32_t position, const SString_t& text) {
    if (text.isEmpty()) return;
    const auto offset = static_cast<std::uint32_t>(getCursor(position).getPtr() - getString());
    replaceUnits(offset, 0, text.getString(), text.getLength());
}

template <class unit, int flavour>
void SString_t<unit, flavour>::insertChars(std::uint32_t position, const unit* text) {
    if (LengthOf(text) == 0) return;
    const auto offset = static_cast<std::uint32_t>(getCursor(position).getPtr() - getString());
    replaceUnits(offset, 0, text, LengthOf(text));
}

template <class unit, int flavour>
void SString_t<unit, flavour>::deleteChar(std::uint32_t position) {
    deleteChars(position, 1);
}

template <class unit, int flavour>
void SString_t<unit, flavour>::deleteChars(std::uint32_t position, std::uint32_t count) {
    const unit* const first = getCursor(position).getPtr();
    const unit* const last = Flavour<unit, flavour>::advanceWithin(first, getString() + getLength(), count);
    if (first == last) return;
    const auto offset = static_cast<std::uint32_t>(first - getString());
    replaceUnits(offset, static_cast<std::uint32_t>(last - first), nullptr, 0);
}

// Makes the string the part between two places in it; an unchanged string keeps its block.
template <class unit, int flavour>
void SString_t<unit, flavour>::keepRange(const unit* first, const unit* last) {
    const auto length = static_cast<std::uint32_t>(last - first);
    if (length == getLength()) return;
    *this = SString_t(first, length);
}

template <class unit, int flavour>
SString_t<unit, flavour>& SString_t<unit, flavour>::trimLeft() {
    const unit* const last = getString() + getLength();
    keepRange(Flavour<unit, flavour>::skipSpace(getString(), last), last);
    return *this;
}

template <class unit, int flavour>
SString_t<unit, flavour>& SString_t<unit, flavour>::trimRight() {
    keepRange(getString(), Flavour<unit, flavour>::endWithoutSpace(getString(), getString() + getLength()));
    return *this;
}

template <class unit, int flavour>
SString_t<unit, flavour>& SString_t<unit, flavour>::trim() {
    const unit* const last = getString() + getLength();
    const unit* const first = Flavour<unit, flavour>::skipSpace(getString(), last);
    keepRange(first, Flavour<unit, flavour>::endWithoutSpace(first, last));
    return *this;
}

template <class unit, int flavour>
SString_t<unit, flavour>& SString_t<unit, flavour>::toLower() {
    changeCase(LetterCase::Lower);
    return *this;
}

template <class unit, int flavour>
SString_t<unit, flavour>& SString_t<unit, flavour>::toUpper() {
    changeCase(LetterCase::Upper);
    return *this;
}

template <class unit, int flavour>
void SString_t<unit, flavour>::changeCase(LetterCase to) {
    if (isEmpty()) return;
    const std::uint32_t length = getLength();
    if constexpr (flavour == 0) {
        // In UTF-8 a letter's other case may take more bytes; ASCII is mapped in place.
        const char* const end = getString() + length;
        if (mbchar::CodePage::Current().isUtf8() && FindNonAscii(getString(), end) != end) {
            const std::uint32_t needed = CountMapped(getString(), length, to);
            SString_t mapped;
            mapped.copyOnWrite(needed);
            WriteMapped(getString(), length, mapped.characters(), to);
            mapped.terminateBuffer(needed);
            *this = std::move(mapped);
            return;
        }
    }
    copyOnWrite(length);
    if constexpr (flavour == 0) {
        terminateBuffer(MapCase(characters(), length, length, to));
    } else if constexpr (sizeof(unit) == 1) {
        MapAsciiCase(characters(), length, to);
    } else {
        MapCase(characters(), length, to);
    }
}

template <class unit, int flavour>
void SString_t<unit, flavour>::setSize(std::uint32_t units) {
    if (units == 0 && isEmpty()) return;
    copyOnWrite(units);
    if (units < getLength()) terminateBuffer(units);
}

template <class unit, int flavour>
unit* SString_t<unit, flavour>::detach() {
    copyOnWrite(getLength());
    return characters();
}

// ----------------------------------------------------------------------------------------------- sub-strings

template <class unit, int flavour>
SString_t<unit, flavour> SString_t<unit, flavour>::left(std::uint32_t count) const {
    return left(getCursor(count));
}

template <class unit, int flavour>
SString_t<unit, flavour> SString_t<unit, flavour>::left(const iterator& position) const {
    return mid(begin(), position);
}

template <class unit, int flavour>
SString_t<unit, flavour> SString_t<unit, flavour>::right(std::uint32_t count) const {
    const std::uint32_t all = getNChars();
    return all <= count ? *this : mid(all - count);
}

template <class unit, int flavour>
SString_t<unit, flavour> SString_t<unit, flavour>::right(const iterator& position) const {
    return mid(position, end());
}

template <class unit, int flavour>
SString_t<unit, flavour> SString_t<unit, flavour>::mid(std::uint32_t start) const {
    return mid(getCursor(start), end());
}

template <class unit, int flavour>
SString_t<unit, flavour> SString_t<unit, flavour>::mid(std::uint32_t start, std::uint32_t count) const {
    return mid(getCursor(start), count);
}

template <class unit, int flavour>
SString_t<unit, flavour> SString_t<unit, flavour>::mid(const iterator& start) const {
    return mid(start, end());
}

template <class unit, int flavour>
SString_t<unit, flavour> SString_t<unit, flavour>::mid(const iterator& start, std::uint32_t count) const {
    const unit* const textEnd = getString() + getLength();
    const unit* const first = std::clamp(start.getPtr(), getString(), textEnd);
    return mid(start, iterator(Flavour<unit, flavour>::advanceWithin(first, textEnd, count)));
}

template <class unit, int flavour>
SString_t<unit, flavour> SString_t<unit, flavour>::mid(const iterator& start, const iterator& end) const {
    const unit* const textEnd = getString() + getLength();
    const unit* const first = std::clamp(start.getPtr(), getString(), textEnd);
    const unit* const last = std::clamp(end.getPtr(), first, textEnd);
    return SString_t(first, static_cast<std::uint32_t>(last - first));
}

// ------------------------------------------------------------------------------------------------- search

template <class unit, int flavour>
const unit* SString_t<unit, flavour>::locate(const unit* from, const unit* what, std::uint32_t n) const {
    const unit* const textEnd = getString() + getLength();
    if (what == nullptr || !Flavour<unit, flavour>::isSearchable(what, n)) return textEnd;
    const unit* const first = std::clamp(from, getString(), textEnd);
    if (n == 0) return first;
    const unit* const place = Flavour<unit, flavour>::find(first, textEnd, what, n);
    return place != nullptr ? place : textEnd;
}

template <class unit, int flavour>
const unit* SString_t<unit, flavour>::locateLast(const unit* from, const unit* what, std::uint32_t n) const {
    const unit* const textEnd = getString() + getLength();
    const unit* last = textEnd;
    if (n == 0) return last;
    for (const unit* at = locate(from, what, n); at < textEnd;) {
        last = at;
        at = locate(Flavour<unit, flavour>::advanceWithin(at, textEnd, 1), what, n);
    }
    return last;
}

template <class unit, int flavour>
typename SString_t<unit, flavour>::iterator SString_t<unit, flavour>::find(const SString_t& text,
                                                                           const iterator& from) const {
    return iterator(locate(from.getPtr(), text.getString(), text.getLength()));
}

template <class unit, int flavour>
typename SString_t<unit, flavour>::iterator SString_t<unit, flavour>::find(const unit* text,
                                                                           const iterator& from) const {
    return iterator(locate(from.getPtr(), text, LengthOf(text)));
}

template <class unit, int flavour>
typename SString_t<unit, flavour>::iterator SString_t<unit, flavour>::find(const Char& character,
                                                                           const iterator& from) const {
    if (character.getLength() == 0) return end();
    return iterator(locate(from.getPtr(), character.getUnits(), character.getLength()));
}

template <class unit, int flavour>
typename SString_t<unit, flavour>::iterator SString_t<unit, flavour>::findLast(const SString_t& text,
                                                                               const iterator& from) const {
    return iterator(locateLast(from.getPtr(), text.getString(), text.getLength()));
}

template <class unit, int flavour>
typename SString_t<unit, flavour>::iterator SString_t<unit, flavour>::findLast(const unit* text,
                                                                               const iterator& from) const {
    return iterator(locateLast(from.getPtr(), text, LengthOf(text)));
}

template <class unit, int flavour>
typename SString_t<unit, flavour>::iterator SString_t<unit, flavour>::findLast(const Char& character,
                                                                               const iterator& from) const {
    return iterator(locateLast(from.getPtr(), character.getUnits(), character.getLength()));
}

// By whole characters: what begins like a text that begins a character, and is searchable, begins with it.
template <class unit, int flavour>
bool SString_t<unit, flavour>::startsWith(const unit* text, std::uint32_t n) const {
    return n <= getLength() && Flavour<unit, flavour>::isSearchable(text, n) &&
           std::memcmp(getString(), text, n * sizeof(unit)) == 0;
}

template <class unit, int flavour>
bool SString_t<unit, flavour>::endsWith(const unit* text, std::uint32_t n) const {
    if (n > getLength() || !Flavour<unit, flavour>::isSearchable(text, n)) return false;
    const unit* const place = getString() + (getLength() - n);
    return std::memcmp(place, text, n * sizeof(unit)) == 0 &&
           Flavour<unit, flavour>::beginsCharacter(getString(), place);
}

template <class unit, int flavour>
bool SString_t<unit, flavour>::startsWith(const SString_t& text) const {
    return startsWith(text.getString(), text.getLength());
}

template <class unit, int flavour>
bool SString_t<unit, flavour>::startsWith(const unit* text) const {
    return text != nullptr && startsWith(text, LengthOf(text));
}

template <class unit, int flavour>
bool SString_t<unit, flavour>::startsWith(const Char& character) const {
    return character.getLength() != 0 && startsWith(character.getUnits(), character.getLength());
}

template <class unit, int flavour>
bool SString_t<unit, flavour>::endsWith(const SString_t& text) const {
    return endsWith(text.getString(), text.getLength());
}

template <class unit, int flavour>
bool SString_t<unit, flavour>::endsWith(const unit* text) const {
    return text != nullptr && endsWith(text, LengthOf(text));
}

template <class unit, int flavour>
bool SString_t<unit, flavour>::endsWith(const Char& character) const {
    return character.getLength() != 0 && endsWith(character.getUnits(), character.getLength());
}

namespace {

SString_t<char, 0> Lowered(const SString_t<char, 0>& text) {
    SString_t<char, 0> lowered(text);
    lowered.toLower();
    return lowered;
}

}  // namespace

SAnsiStringCI::iterator SAnsiStringCI::find(const Base& text, const iterator& from) const {
    const Base lowered = Lowered(*this);
    const Base wanted = Lowered(text);
    // Mapping can change byte lengths, never the number of characters: both positions are counted in those.
    const iterator place = lowered.Base::find(wanted, lowered.getCursor(getCharIndex(from)));
    return place == lowered.end() ? end() : getCursor(lowered.getCharIndex(place));
}

SAnsiStringCI::iterator SAnsiStringCI::find(const char* text, const iterator& from) const {
    return text != nullptr ? find(Base(text), from) : end();
}

SAnsiStringCI::iterator SAnsiStringCI::find(const Char& character, const iterator& from) const {
    return character.getLength() != 0 ? find(Base(character), from) : end();
}

bool SAnsiStringCI::startsWith(const Base& text) const {
    return Lowered(*this).startsWith(Lowered(text));
}

bool SAnsiStringCI::startsWith(const char* text) const {
    return text != nullptr && startsWith(Base(text));
}

bool SAnsiStringCI::startsWith(const Char& character) const {
    return character.getLength() != 0 && startsWith(Base(character));
}

bool SAnsiStringCI::endsWith(const Base& text) const {
    return Lowered(*this).endsWith(Lowered(text));
}

bool SAnsiStringCI::endsWith(const char* text) const {
    return text != nullptr && endsWith(Base(text));
}

bool SAnsiStringCI::endsWith(const Char& character) const {
    return character.getLength() != 0 && endsWith(Base(character));
}

// ------------------------------------------------------------------------------------------------ comparison

namespace {

template <class unit>
int CompareUnits(const unit* left, std::uint32_t leftLength, const unit* right, std::uint32_t rightLength) {
    using Unsigned = std::make_unsigned_t<unit>;
    const std::uint32_t common = std::min(leftLength, rightLength);
    for (std::uint32_t i = 0; i < common; ++i) {
        const auto a = static_cast<Unsigned>(left[i]);
        const auto b = static_cast<Unsigned>(right[i]);
        if (a != b) return a < b ? -1 : 1;
    }
    return (leftLength > rightLength) - (leftLength < rightLength);
}

int CompareUnits(const char* left, std::uint32_t leftLength, const char* right, std::uint32_t rightLength) {
    const int order = std::memcmp(left, right, std::min(leftLength, rightLength));
    if (order != 0) return order < 0 ? -1 : 1;
    return (leftLength > rightLength) - (leftLength < rightLength);
}

}  // namespace

template <class unit, int flavour>
int SString_t<unit, flavour>::compare(const SString_t& other) const {
    if (buffer_ == other.buffer_) return 0;
    return CompareUnits(getString(), getLength(), other.getString(), other.getLength());
}

template <class unit, int flavour>
int SString_t<unit, flavour>::compare(const unit* other) const {
    return compare(other, LengthOf(other));
}

template <class unit, int flavour>
int SString_t<unit, flavour>::compare(const unit* other, std::uint32_t nUnits) const {
    const bool isText = other != nullptr;
    return CompareUnits(getString(), getLength(), isText ? other : getString(), isText ? nUnits : 0);
}

template <class unit, int flavour>
int SString_t<unit, flavour>::compareNoCase(const SString_t& other) const {
    return compareNoCase(other.getString());
}

template <class unit, int flavour>
int SString_t<unit, flavour>::compareNoCase(const unit* other) const {
    constexpr unit kNothing[1] = {};
    const unit* const right = other != nullptr ? other : kNothing;
    if constexpr (flavour == 1 && sizeof(unit) == 1) {
        return CompareBytesNoCase(getString(), right);
    } else {
        return CollateNoCase(getString(), right);
    }
}

// ------------------------------------------------------------------------------------------------ conversion

template <class unit, int flavour>
int SString_t<unit, flavour>::toAscii(char* out, std::uint32_t nBytesInBuffer) const {
    return FlavourConvert<unit, flavour>::toAscii(getString(), getLength(), out, nBytesInBuffer);
}

template <class unit, int flavour>
int SString_t<unit, flavour>::toMBCS(char* out, std::uint32_t nBytesInBuffer) const {
    return FlavourConvert<unit, flavour>::toMBCS(getString(), getLength(), out, nBytesInBuffer);
}

template <class unit, int flavour>
int SString_t<unit, flavour>::toOCA(wchar_t* out, std::uint32_t nBytesInBuffer) const {
    return FlavourConvert<unit, flavour>::toWide(getString(), getLength(), out, nBytesInBuffer);
}

template <class unit, int flavour>
int SString_t<unit, flavour>::toWChar(wchar_t* out, std::uint32_t nBytesInBuffer) const {
    return FlavourConvert<unit, flavour>::toWide(getString(), getLength(), out, nBytesInBuffer);
}

template <class unit, int flavour>
int SString_t<unit, flavour>::toUTF8(char* out, std::uint32_t nBytesInBuffer) const {
    return FlavourConvert<unit, flavour>::toUTF8(getString(), getLength(), out, nBytesInBuffer);
}

template <class unit, int flavour>
std::uint32_t SString_t<unit, flavour>::getNBytesForAscii() const {
    return FlavourConvert<unit, flavour>::getNBytesForAscii(getString(), getLength());
}

template <class unit, int flavour>
std::uint32_t SString_t<unit, flavour>::getNBytesForMBCS() const {
    return FlavourConvert<unit, flavour>::getNBytesForMBCS(getString(), getLength());
}

template <class unit, int flavour>
std::uint32_t SString_t<unit, flavour>::getNBytesForOCA() const {
    return FlavourConvert<unit, flavour>::getNBytesForWide(getString(), getLength());
}

template <class unit, int flavour>
std::uint32_t SString_t<unit, flavour>::getNBytesForWChar() const {
    return FlavourConvert<unit, flavour>::getNBytesForWide(getString(), getLength());
}

template <class unit, int flavour>
std::uint32_t SString_t<unit, flavour>::getNBytesForUTF8() const {
    return FlavourConvert<unit, flavour>::getNBytesForUTF8(getString(), getLength());
}

template <class unit, int flavour>
bool SString_t<unit, flavour>::fromAscii(const char* text, std::uint32_t count) {
    return FlavourConvert<unit, flavour>::fromAscii(*this, text, count);
}

template <class unit, int flavour>
bool SString_t<unit, flavour>::fromMBCS(const char* text, std::uint32_t count) {
    return FlavourConvert<unit, flavour>::fromMBCS(*this, text, count);
}

template <class unit, int flavour>
bool SString_t<unit, flavour>::fromOCA(const wchar_t* text, std::uint32_t count) {
    return FlavourConvert<unit, flavour>::fromOCA(*this, text, count);
}

template <class unit, int flavour>
bool SString_t<unit, flavour>::fromWChar(const wchar_t* text, std::uint32_t count) {
    return FlavourConvert<unit, flavour>::fromWChar(*this, text, count);
}

template <class unit, int flavour>
bool SString_t<unit, flavour>::fromUTF8(const char* text, std::uint32_t nBytes) {
    return FlavourConvert<unit, flavour>::fromUTF8(*this, text, nBytes);
}

// ---------------------------------------------------------------------------------- the three instantiations

template class SString_t<char, 0>;
template class SString_t<char, 1>;
template class SString_t<wchar_t, 1>;

SAsciiString::SAsciiString(const SAnsiString& other, bool take) {
    if (take) concatFromAsciiCharacters(other.getString(), other.getNChars());
}

SAsciiString::SAsciiString(const SWCharString& other, bool take) {
    if (take) concatFromAsciiCharacters(other.getString(), other.getLength());
}

SAsciiString::SAsciiString(const SOCAString& other, bool take) {
    if (take) concatFromAsciiCharacters(other.getString(), other.getLength());
}

}  // namespace TarnLibA500
