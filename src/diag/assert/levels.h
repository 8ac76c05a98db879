#pragma once

/// The trace levels of the library's own units, by purpose. No unit has a number of its own; docs/logging.md
/// tells which letters of a mask show each. Levels 1 and 3 are for requests and stand for nothing else.
namespace TarnLibA500::levels {

/// A structured entry of SLogger::Log.
inline constexpr int kEntry = 0;
/// What an operation is about to open.
inline constexpr int kOpening = 2;
/// What is wanted only while looking for a fault: lines of a dialogue, steps of a wait.
inline constexpr int kDetail = 4;
/// Entry to and exit from a block.
inline constexpr int kScope = 5;
/// A step of a workflow, or another one that may be of interest while everything goes well.
inline constexpr int kStep = 6;
/// A failure that the caller gets as a result or an exception.
inline constexpr int kFailure = 7;
/// What silently changes or loses something, and what is refused for safety: the default mask shows it.
inline constexpr int kLoss = 9;
/// A text that should be an identifier and is none.
inline constexpr int kRefusedText = 12;

}  // namespace TarnLibA500::levels
