#include "tracelog/oldlogs.h"

#include <algorithm>
#include <cstdint>
#include <vector>

#include "seam/osclock.h"
#include "tracelog/effective.h"
#include "tracelog/osfile.h"

namespace TraceLog400::detail {
namespace {

constexpr std::int64_t kTicksPerDay = 24LL * 60 * 60 * 10'000'000;  // of 100 ns
constexpr const wchar_t* kExtension = L".log";

struct OldLog {
    std::wstring name;
    DWORD process = 0;
    unsigned number = 0;  ///< 0: the one that is written, or was last
    std::int64_t written = 0;

    bool isCurrent() const { return number == 0 && process == GetCurrentProcessId(); }
};

// Reads a file name from left to right.
class NameReader {
  public:
    explicit NameReader(const std::wstring& name) : name_(name) {}
    bool take(const std::wstring& text) {
        if (name_.compare(at_, text.size(), text) != 0) return false;
        at_ += text.size();
        return true;
    }
    /// A number as the engine writes it, without more zeros in front than it takes for the least digits.
    template <class Number>
    bool takeNumber(Number& number, std::size_t leastDigits) {
        const std::size_t end = std::min(name_.find_first_not_of(L"0123456789", at_), name_.size());
        const std::size_t digits = end - at_;
        if (digits < leastDigits || digits > 10 || (digits > leastDigits && name_[at_] == L'0')) return false;
        std::uint64_t value = 0;
        for (; at_ < end; ++at_) value = value * 10 + static_cast<std::uint64_t>(name_[at_] - L'0');
        number = static_cast<Number>(value);
        return value != 0 && number == value;
    }
    bool atEnd() const { return at_ == name_.size(); }

  private:
    const std::wstring& name_;
    std::size_t at_ = 0;
};

// component_process[.device][.number].log
bool ReadName(const std::wstring& component, const std::wstring& device, OldLog& log) {
    constexpr std::size_t kLeastDigitsOfNumber = 3;
    NameReader reader(log.name);
    if (!reader.take(component + L"_") || !reader.takeNumber(log.process, 1)) return false;
    for (const std::wstring& known : {device, std::wstring(L"request"), std::wstring(L"sdk")}) {
        if (!known.empty() && reader.take(L"." + known)) break;
    }
    if (reader.take(kExtension)) return reader.atEnd();
    return reader.take(L".") && reader.takeNumber(log.number, kLeastDigitsOfNumber) &&
           reader.take(kExtension) && reader.atEnd();
}

std::vector<OldLog> FindLogs(const std::wstring& directory, const std::wstring& device) {
    const std::wstring& component = CurrentIdentity().fileStem;
    std::vector<OldLog> logs;
    osfile::ForEachFile((directory + component + L"_*" + kExtension).c_str(),
                        [&](const WIN32_FIND_DATAW& found) {
                            OldLog log{found.cFileName, 0, 0, osclock::UnitsOf(found.ftLastWriteTime)};
                            if (!ReadName(component, device, log)) return;
                            if (log.process == GetCurrentProcessId() || !osfile::IsAlive(log.process))
                                logs.push_back(std::move(log));
                        });
    return logs;
}

bool IsNewer(const OldLog& a, const OldLog& b) {
    if (a.isCurrent() != b.isCurrent()) return a.isCurrent();
    return a.written != b.written ? a.written > b.written : a.number > b.number;
}

bool IsTooOld(const OldLog& log, unsigned days) {
    return days != 0 && osclock::Now() >= log.written + days * kTicksPerDay;
}

// What is open elsewhere, or was removed by another process meanwhile, is no failure.
DWORD RemoveUnused(const std::wstring& path) {
    if (osfile::RemoveUnused(path.c_str())) return ERROR_SUCCESS;
    const DWORD error = GetLastError();
    return error == ERROR_SHARING_VIOLATION || !osfile::Exists(path.c_str()) ? ERROR_SUCCESS : error;
}

}  // namespace

OldLogFailure RemoveOldLogs(const OldLogLimits& limits, const std::wstring& device) {
    const std::wstring directory = CurrentDirectoryOfLogs();
    std::vector<OldLog> logs = FindLogs(directory, device);
    std::sort(logs.begin(), logs.end(), &IsNewer);
    OldLogFailure failure;
    for (std::size_t i = 0; i < logs.size(); ++i) {
        const bool isTooMany = limits.files != 0 && i >= limits.files;
        if (logs[i].isCurrent() || !(isTooMany || IsTooOld(logs[i], limits.days))) continue;
        const DWORD error = RemoveUnused(directory + logs[i].name);
        if (error != ERROR_SUCCESS && failure.error == ERROR_SUCCESS)
            failure = {directory + logs[i].name, error};
    }
    return failure;
}

}  // namespace TraceLog400::detail
