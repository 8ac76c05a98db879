#include "tarnlib/snarrowtext.h"

#include "strings/characters/mbchar.h"

namespace TarnLibA500 {

void SNarrowText::UseUtf8() {
    mbchar::CodePage::UseUtf8();
}

void SNarrowText::FollowLocale() noexcept {
    mbchar::CodePage::FollowLocale();
}

bool SNarrowText::IsUtf8() noexcept {
    return mbchar::CodePage::CurrentIsUtf8();
}

}  // namespace TarnLibA500
