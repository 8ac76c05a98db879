#include "tarnlib/sstackwalk.h"

#include <unwind.h>

#include <cstddef>
#include <cstdint>

#include "diag/assert/levels.h"
#include "diag/logging/exportedname.h"
#include "system/systemtext.h"
#include "tarnlib/sstringconv.h"
#include "tarnlib/straceobj.h"

#include <windows.h>

namespace TarnLibA500 {
namespace {

constexpr std::size_t kMaxFrames = 62;
constexpr int kNumberWidth = 3;

struct Frames {
    const void* addresses[kMaxFrames];
    std::size_t count = 0;

    bool add(const void* address) {
        if (address == nullptr || count == kMaxFrames) return false;
        addresses[count++] = address;
        return true;
    }
};

// The tables that exceptions unwind by are there in every build; frame pointers are not.
_Unwind_Reason_Code CollectFrame(_Unwind_Context* context, void* frames) {
    const auto address = static_cast<std::uintptr_t>(_Unwind_GetIP(context));
    const bool goOn = static_cast<Frames*>(frames)->add(reinterpret_cast<const void*>(address));
    return goOn ? _URC_NO_REASON : _URC_END_OF_STACK;
}

bool IsReadable(const void* address) {
    MEMORY_BASIC_INFORMATION memory;
    return VirtualQuery(address, &memory, sizeof memory) != 0 && memory.State == MEM_COMMIT &&
           (memory.Protect & (PAGE_NOACCESS | PAGE_GUARD)) == 0;
}

// From an exception only the frame pointers can be followed, as far as they were kept.
void CollectFromException(const EXCEPTION_POINTERS& exception, Frames& frames) {
    const CONTEXT& context = *exception.ContextRecord;
    frames.add(reinterpret_cast<const void*>(static_cast<std::uintptr_t>(context.Eip)));
    auto frame = reinterpret_cast<const void* const*>(static_cast<std::uintptr_t>(context.Ebp));
    while (IsReadable(static_cast<const void*>(frame)) && IsReadable(static_cast<const void*>(frame + 1)) &&
           frames.add(frame[1])) {
        const auto caller = static_cast<const void* const*>(frame[0]);
        if (caller <= frame) return;
        frame = caller;
    }
}

SAnsiString FrameLine(std::size_t number, const void* address) {
    SAnsiString line = SStringConv::ToString(number);
    while (line.getLength() < kNumberWidth) line = " " + line;
    return line + " " + DescribeCode(address) + " (0x" + SStringConv::ToString(address) + ")\n";
}

bool AppendFrames(SAnsiString& text, const Frames& frames, std::size_t skip) {
    if (frames.count == 0) {
        const SAnsiString why = SystemErrorText(GetLastError());
        TARN_TRACE_AT(levels::kFailure, "sstackwalk", "the stack cannot be walked: %1", why);
        text += "Could not generate the stack dump because of an error: " + why;
        return false;
    }
    for (std::size_t i = skip; i < frames.count; ++i) text += FrameLine(i - skip, frames.addresses[i]);
    return true;
}

std::size_t NotNegative(int skip) {
    return skip > 0 ? static_cast<std::size_t>(skip) : 0;
}

}  // namespace

bool SStackWalk::StackWalkAll(SAnsiString& text, int skip) {
    Frames frames;
    _Unwind_Backtrace(&CollectFrame, &frames);
    return AppendFrames(text, frames, NotNegative(skip) + 1);  // not this function itself
}

bool SStackWalk::StackWalkAll(SAnsiString& text, int skip, _EXCEPTION_POINTERS* exception) {
    if (exception == nullptr || exception->ContextRecord == nullptr) return StackWalkAll(text, skip + 1);
    Frames frames;
    CollectFromException(*exception, frames);
    return AppendFrames(text, frames, NotNegative(skip));
}

}  // namespace TarnLibA500
