#include "tarnlib/sinstancelock.h"

#include <algorithm>
#include <cwchar>
#include <iterator>
#include <utility>

#include "diag/assert/levels.h"
#include "files/osfiles.h"
#include "seam/osclock.h"
#include "system/systemtext.h"
#include "tarnlib/straceobj.h"

#include <sddl.h>

// The lock is the existence of a mutex, which nobody ever owns: a mutex that is owned is free when its thread ends.
namespace TarnLibA500 {
namespace {

constexpr const char* kUnit = "sinstancelock";
constexpr const wchar_t* kAllSessions = L"Global\\";
constexpr const wchar_t* kFamily = L"tarnlib.instance.";
constexpr const wchar_t* kRecordEnd = L".owner";
// The system allows 260 for the whole of it.
constexpr std::uint32_t kMaxNameUnits = 200;
constexpr std::uint32_t kLongNameHead = 100;

unsigned long long HashOf(const SWCharString& text) {
    constexpr unsigned long long kBasis = 0xCBF29CE484222325;
    constexpr unsigned long long kPrime = 0x100000001B3;
    unsigned long long hash = kBasis;
    const wchar_t* const units = text.getString();
    for (std::uint32_t i = 0; i < text.getLength(); ++i) hash = (hash ^ units[i]) * kPrime;
    return hash;
}

/// Control characters, and the backslash, which would end the name, as their codes.
SWCharString SpelledText(const SWCharString& text) {
    const wchar_t* const units = text.getString();
    SWCharString spelled;
    for (std::uint32_t i = 0; i < text.getLength(); ++i) {
        const bool isPlain = units[i] >= L' ' && units[i] != L'\\' && units[i] != L'%';
        wchar_t code[8] = {units[i]};
        if (!isPlain) std::swprintf(code, std::size(code), L"%%%04X", static_cast<unsigned>(units[i]));
        spelled.concat(code);
    }
    return spelled;
}

/// The part of an object's name that stands for the lock's.
SWCharString SpelledName(const SAnsiString& name) {
    const char* const end = name.getString() + name.getLength();
    SWCharString spelled;
    for (const char* at = name.getString();;) {  // text ends at a zero, the name does not
        const char* const zero = std::find(at, end, '\0');
        spelled.concat(SpelledText(ToSystem(SAnsiString(at, static_cast<std::uint32_t>(zero - at)))));
        if (zero == end) break;
        spelled.concat(L"%0000");
        at = zero + 1;
    }
    if (spelled.getLength() <= kMaxNameUnits) return spelled;
    wchar_t hash[20];
    std::swprintf(hash, std::size(hash), L"%%%016llX", HashOf(spelled));
    return SWCharString(spelled.getString(), kLongNameHead).concat(hash);
}

SWCharString ObjectName(const SAnsiString& name, const wchar_t* space, const wchar_t* end) {
    return SWCharString(space).concat(kFamily).concat(SpelledName(name)).concat(end);
}

/// Everybody may read, the system and administrators and the user may do everything.
class ReadableByAll {
  public:
    ReadableByAll() {
        constexpr const wchar_t* kRights = L"D:(A;;GA;;;SY)(A;;GA;;;BA)(A;;GA;;;OW)(A;;GR;;;WD)";
        ConvertStringSecurityDescriptorToSecurityDescriptorW(kRights, SDDL_REVISION_1,
                                                             &attributes_.lpSecurityDescriptor, nullptr);
    }
    ~ReadableByAll() { LocalFree(attributes_.lpSecurityDescriptor); }
    ReadableByAll(const ReadableByAll&) = delete;
    ReadableByAll& operator=(const ReadableByAll&) = delete;
    /// Without a descriptor the system's usual rights hold.
    SECURITY_ATTRIBUTES* get() { return &attributes_; }

  private:
    SECURITY_ATTRIBUTES attributes_ = {sizeof(SECURITY_ATTRIBUTES), nullptr, FALSE};
};

/// Memory with the number of this process. Not every user may make some for all sessions.
osfiles::File PublishOwner(const SAnsiString& name) {
    ReadableByAll rights;
    for (const wchar_t* space : {kAllSessions, L""}) {
        const SWCharString object = ObjectName(name, space, kRecordEnd);
        osfiles::File record = osfiles::NewMemory(object.getString(), sizeof(DWORD), rights.get());
        if (!record) continue;
        if (void* const memory = osfiles::View(record.get(), FILE_MAP_WRITE)) {
            *static_cast<DWORD*>(memory) = GetCurrentProcessId();
            osfiles::CloseView(memory);
            return record;
        }
    }
    return osfiles::File();
}

/// 0 when the holder has not told.
DWORD PublishedOwner(const SAnsiString& name) {
    for (const wchar_t* space : {kAllSessions, L""}) {
        const osfiles::File record = osfiles::OpenMemory(ObjectName(name, space, kRecordEnd).getString());
        const void* const memory = record ? osfiles::View(record.get()) : nullptr;
        if (memory == nullptr) continue;
        const DWORD owner = *static_cast<const DWORD*>(memory);
        osfiles::CloseView(memory);
        return owner;
    }
    return 0;
}

}  // namespace

SInstanceLock::SInstanceLock(const SAnsiString& name) : name_(name) {}

SInstanceLock::~SInstanceLock() {
    giveBack();
}

SInstanceLock::Result SInstanceLock::takeOnce() {
    bool isNew = false;
    osfiles::File mutex = osfiles::NewMutex(ObjectName(name_, kAllSessions, L"").getString(), isNew);
    const DWORD error = mutex ? DWORD{ERROR_SUCCESS} : GetLastError();
    if (mutex && isNew) {
        osfiles::File record = PublishOwner(name_);
        owner_ = GetCurrentProcessId();
        mutex_ = mutex.release();
        record_ = record ? record.release() : nullptr;
        return taken;
    }
    // One that another user holds may not be opened.
    if (!mutex && error != ERROR_ACCESS_DENIED) {
        lastError_ = error;
        return failed;
    }
    owner_ = PublishedOwner(name_);
    return heldByAnother;
}

// Whoever only looks keeps the mutex for a moment; and a new holder needs one until his number is published.
SInstanceLock::Result SInstanceLock::take() {
    constexpr int kMoments = 4;
    constexpr DWORD kMomentMilliseconds = 20;
    if (isHeld()) return taken;
    owner_ = 0;
    Result result = takeOnce();
    for (int moment = 0; result == heldByAnother && moment < kMoments; ++moment) {
        osclock::Sleep(kMomentMilliseconds);
        result = takeOnce();
    }
    if (result == heldByAnother) TARN_TRACE_AT(levels::kFailure, kUnit, "process %1 holds %2", owner_, name_);
    if (result == failed)
        TARN_TRACE_AT(levels::kFailure, kUnit, "cannot take %1: error %2", name_, lastError_);
    return result;
}

void SInstanceLock::giveBack() noexcept {
    // The number goes first, as the last one made: without a lock it would be nobody's.
    const osfiles::File mutex(std::exchange(mutex_, nullptr));
    const osfiles::File record(std::exchange(record_, nullptr));
    owner_ = 0;
}

}  // namespace TarnLibA500
