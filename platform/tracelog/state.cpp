#include <string>

#include "seam/osclock.h"
#include "tracelog/effective.h"

namespace TraceLog400 {
namespace {

const std::uint64_t loadedAt = osclock::Tick();

void Append(TextTarget& out, const std::string& text) {
    out.append(text.data(), text.size());
}

}  // namespace

Scope::Scope(const Builder&) : start_(osclock::Counter()) {}

std::uint64_t Scope::microseconds() const {
    return osclock::MicrosecondsSince(start_);
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
    return (osclock::Tick() - loadedAt) / 1000;
}

}  // namespace TraceLog400
