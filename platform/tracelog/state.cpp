#include <string>

#include "tracelog/effective.h"

#include <windows.h>

namespace TraceLog400 {
namespace {

std::int64_t Counter() {
    LARGE_INTEGER count;
    QueryPerformanceCounter(&count);
    return count.QuadPart;
}

const ULONGLONG loadedAt = GetTickCount64();

void Append(TextTarget& out, const std::string& text) {
    out.append(text.data(), text.size());
}

}  // namespace

Scope::Scope(const Builder&) : start_(Counter()) {}

std::uint64_t Scope::microseconds() const {
    constexpr std::int64_t kMicroseconds = 1'000'000;
    LARGE_INTEGER frequency;
    QueryPerformanceFrequency(&frequency);
    const std::int64_t ticks = Counter() - start_;
    return static_cast<std::uint64_t>(ticks / frequency.QuadPart * kMicroseconds +
                                      ticks % frequency.QuadPart * kMicroseconds / frequency.QuadPart);
}

void State::print(TextTarget& out) {
    const detail::FileSettings& files = detail::fileSettings;
    Append(out, std::string("writing: ") + (detail::isWriting ? "yes" : "no") + "\nmask: ");
    EvalConfig().mask(out);
    Append(out, "\nsource files:\n");
    detail::PrintFilter(out);
    Append(out, "\ncomponent: " + detail::CurrentIdentity().component);
    Append(out, "\nsize limit: " + std::to_string(files.sizeLimit) +
                    " bytes\nkeep: " + (files.keep ? "on" : "off") +
                    "\nclose after every line: " + (files.alwaysClose ? "yes" : "no") +
                    "\nlines may wait: " + (files.buffered ? "yes" : "no") + "\n");
    detail::PrintDevices(out);
}

void State::tick() {
    detail::FlushDevices();
}

std::uint64_t major_tick() {
    return (GetTickCount64() - loadedAt) / 1000;
}

}  // namespace TraceLog400
