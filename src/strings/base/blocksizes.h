#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

/// The sizes of small blocks. A request is rounded up to one of them, by its bytes alone, so that whoever knows how
/// many bytes a block was asked for knows its size.
namespace TarnLibA500::blocksizes {

/// Requests of more bytes are not small.
inline constexpr std::size_t kLargest = 1024;
/// The pages that are cut into blocks.
inline constexpr std::size_t kPageBytes = 4096;
inline constexpr std::size_t kAlignment = 8;

/// By steps of 8 from what the shortest text takes, of 16 from 128, and from 256 on what fits a page a number of
/// times: at most a tenth of a block is wasted below, a fifth above.
inline constexpr std::array<std::uint16_t, 31> kBytes = {
    48,  56,  64,  72,  80,  88,  96,  104, 112, 120, 128, 144, 160, 176, 192, 208,
    224, 240, 256, 272, 288, 312, 336, 368, 408, 448, 512, 584, 680, 816, 1024};
inline constexpr unsigned kCount = kBytes.size();
static_assert(kBytes.back() == kLargest);

namespace detail {

constexpr std::size_t StepsOf(std::size_t bytes) {
    return (bytes + kAlignment - 1) / kAlignment;
}

constexpr auto NumbersBySteps() {
    std::array<std::uint8_t, StepsOf(kLargest) + 1> numbers{};
    std::uint8_t number = 0;
    for (std::size_t steps = 0; steps < numbers.size(); ++steps) {
        if (steps * kAlignment > kBytes[number]) ++number;
        numbers[steps] = number;
    }
    return numbers;
}
inline constexpr auto kNumbers = NumbersBySteps();

}  // namespace detail

/// The number of the size that a request of at most kLargest bytes gets.
constexpr unsigned NumberOf(std::size_t bytes) noexcept {
    return detail::kNumbers[detail::StepsOf(bytes)];
}

}  // namespace TarnLibA500::blocksizes
