#include "tarnlib/simap.h"

#include <cstring>

namespace TarnLibA500 {
namespace {

// A zero-terminated copy for the collation, on the stack as long as keys usually are.
class Terminated {
  public:
    explicit Terminated(const SMapText& text) {
        if (text.length >= sizeof usual_) {
            long_ = SAnsiString(text.text, text.length);
            return;
        }
        std::memcpy(usual_, text.text, text.length);
        usual_[text.length] = '\0';
        text_ = usual_;
    }
    Terminated(const Terminated&) = delete;
    Terminated& operator=(const Terminated&) = delete;
    const char* get() const { return text_ != nullptr ? text_ : long_.getString(); }

  private:
    const char* text_ = nullptr;
    char usual_[128];
    SAnsiString long_;
};

}  // namespace

bool SMapStringCaseInsensitive::operator<(const SMapStringCaseInsensitive& other) const {
    const std::uint32_t length = text_.getLength();
    const std::uint32_t otherLength = other.text_.getLength();
    return length != otherLength ? length < otherLength : text_.compareNoCase(other.text_) < 0;
}

int SMapOrder(const SMapStringCaseInsensitive& key, const SMapText& text) {
    const std::uint32_t length = key.GetString().getLength();
    if (length != text.length) return length < text.length ? -1 : 1;
    return length != 0 ? key.GetString().compareNoCase(Terminated(text).get()) : 0;
}

template class SIMap<SMapStringCaseInsensitive, SAnsiString>;

}  // namespace TarnLibA500
