#include "tarnlib/simplebuffer.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>

#include "support/assert_recorder.h"

using namespace TarnLibA500;
using tarntest::AssertRecorder;

namespace {

struct Buffer : SSimpleBuffer {
    using SSimpleBuffer::concat;
    using SSimpleBuffer::GetEmptyBuffer;
    using SSimpleBuffer::getInternalBuffer;
    using SSimpleBuffer::SSimpleBuffer;
    Buffer(const std::string& bytes, std::uint32_t room = 10) : SSimpleBuffer(room) {
        std::copy(bytes.begin(), bytes.end(), getBuffer());
        releaseBuffer(static_cast<std::uint32_t>(bytes.size()));
    }
    std::string text() const { return {getBufferProtected(), getBufferProtected() + getNBytes()}; }
};

}  // namespace

TEST(SimpleBuffer, ChangesInPlaceOnlyWhatHasRoomAndIsNotShared) {
    const std::uint32_t& kNone = SSimpleBuffer::kUnspecified;  // a client may take a reference
    constexpr bool kAppend = true, kWrite = false, kShared = true, kOwn = false;
    // bytes to append with a reserve, or a minimum to ask for; the room afterwards; whether the block stays
    using Case = std::tuple<bool, std::uint32_t, std::uint32_t, bool, std::uint32_t, bool>;
    for (const auto& [append, size, extra, shared, newRoom, sameBlock] :
         {Case{kAppend, 6, kNone, kOwn, 10, true}, Case{kAppend, 7, kNone, kOwn, 10, false},
          Case{kAppend, 7, 5, kOwn, 15, false}, Case{kAppend, 1, 7, kOwn, 10, true},
          Case{kAppend, 1, kNone, kShared, 4, false}, Case{kAppend, 1, 2, kShared, 6, false},
          Case{kWrite, kNone, 0, kOwn, 10, true}, Case{kWrite, 9, 0, kOwn, 10, true},
          Case{kWrite, 10, 0, kOwn, 10, false}, Case{kWrite, 20, 0, kOwn, 20, false},
          Case{kWrite, kNone, 0, kShared, 3, false}, Case{kWrite, 5, 0, kShared, 5, false}}) {
        Buffer buffer("abc");
        const Buffer sharer = shared ? buffer : Buffer("abc");
        const auto* block = buffer.getInternalBuffer();
        append ? buffer.append("defghij", size, extra) : void(buffer.getBuffer(size)[0] = 'X');
        EXPECT_EQ(buffer.text(), append ? std::string("abcdefghij", 3 + size) : "Xbc");
        EXPECT_EQ(buffer.getNBytesAllocated(), newRoom) << size;
        EXPECT_EQ(buffer.getInternalBuffer() == block, sameBlock) << size;
        EXPECT_EQ(sharer.text(), "abc");
    }
}

TEST(SimpleBuffer, AppendsItsOwnBytesAndRefusesOverflow) {
    Buffer buffer("abcd", 4);
    buffer.append(buffer, buffer.getNBytes(), 20);
    buffer.append(buffer.getBufferProtected() + 1, 2);
    buffer.concat(buffer, 1);
    EXPECT_EQ(buffer.getNBytesAllocated(), 11U);
    const AssertRecorder reports(tarntest::kTracesToo);
    buffer.append("x", 0xFFFFFFF5);
    buffer.append("x", 1, 0xFFFFFFFE);
    EXPECT_EQ((buffer << 0xFF, buffer.text()), "abcdabcdbca\xFF");
    EXPECT_EQ(reports.count(), 2U);
}

TEST(SimpleBuffer, WhatWasWrittenSurvivesASharerInBetween) {
    Buffer buffer("old");
    std::copy_n("new!", 4, buffer.getBuffer());
    const Buffer sharer = buffer;
    buffer.releaseBuffer(4);
    EXPECT_TRUE(buffer.text() == "new!" && sharer.getNBytes() == 3);
}

TEST(SimpleBuffer, TheEmptyBlockIsOneAndIsNeverWritten) {
    const auto* empty = Buffer::GetEmptyBuffer();
    Buffer a, b(a);
    EXPECT_TRUE(a.getInternalBuffer() == empty && a.detach() == nullptr && a.getBuffer() != empty->data);
    const AssertRecorder reports(tarntest::kTracesToo);
    b.releaseBuffer(2);
    EXPECT_NE(reports.last().find("(bytesUsed <= buffer->bytesAllocated : "), std::string::npos);
    EXPECT_TRUE(b.text() == std::string(2, '\0') && empty->bytesUsed == 0 && empty->refCount == -1);
}

TEST(SimpleBuffer, AnObjectWithoutABlockSurvivesEveryMember) {
    const AssertRecorder reports(tarntest::kTracesToo);
    Buffer none(nullptr, 3, true), copy(none), other("x", 0, false);
    EXPECT_EQ(reports.last().find("assert failure: (simplebuffer:324). "), 0U);
    EXPECT_TRUE(none.isEmpty() && none.getNBytesAllocated() == 0 && none == other && none == nullptr);
    EXPECT_TRUE(none.compare(Buffer("a")) == -1 && Buffer("a").compare(none) == 1);
    (copy << 'x', copy).concat("x", 1);
    EXPECT_TRUE(copy.getBuffer(5) == nullptr && copy.detach() == nullptr && reports.count() == 6);
    copy.releaseBuffer(1);
    EXPECT_EQ(copy.text(), std::string(1, '\0'));
    EXPECT_EQ((other.empty(), other << 'y', none = other, none.text()), "y");
}

TEST(SimpleBuffer, DetachHandsOverOrCopies) {
    const AssertRecorder reports(tarntest::kTracesToo);
    Buffer own("own");
    const unsigned char* bytes = own;
    const Buffer adopting(own.detach(), 3, true);
    Buffer shared = adopting;
    const Buffer copied(shared.detach(), 3, true);
    EXPECT_EQ(reports.last(), "6 simplebuffer: SSimpleBuffer::detach() copying buffer before detaching");
    EXPECT_TRUE(own.isEmpty() && shared.isEmpty() && adopting.getBufferProtected() == bytes);
    EXPECT_TRUE(copied.getBufferProtected() != bytes && copied == adopting);
}

TEST(SimpleBuffer, ComparesUnsignedBytesThenLengths) {
    const std::string ascending[] = {"", {"\0", 1}, {"\0\0", 2}, "a", "aa", "b", "\x7F", "\x80", "\xFF"};
    for (const auto& a : ascending) {
        for (const auto& b : ascending) {
            const Buffer left(a), right(b);
            EXPECT_EQ(left.compare(right), (&a > &b) - (&a < &b));
            EXPECT_TRUE((left < right) == (&a < &b) && (left > right) == (&a > &b));
            EXPECT_TRUE((left <= right) == (&a <= &b) && (left >= right) == (&a >= &b));
        }
    }
    const unsigned char text[] = "abc";
    EXPECT_TRUE(Buffer("ab") == text && Buffer("ax") != text && !(Buffer("ab") == nullptr));
}
