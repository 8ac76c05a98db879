#include "tarnlib/snarrowtext.h"

#include "strings/characters/mbchar.h"

namespace TarnLibA500 {

void SNarrowText::UseUtf8() {
    mbchar::CodePage::Choose(&mbchar::CodePage::Utf8());
}

void SNarrowText::FollowLocale() noexcept {
    mbchar::CodePage::Choose(nullptr);
}

bool SNarrowText::IsUtf8() noexcept {
    return mbchar::CodePage::Chosen() != nullptr;
}

}  // namespace TarnLibA500
