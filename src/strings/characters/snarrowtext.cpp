#include "tarnlib/snarrowtext.h"

#include "diag/assert/narrowreports.h"
#include "strings/characters/mbchar.h"

namespace TarnLibA500 {

void SNarrowText::UseUtf8() {
    mbchar::CodePage::UseUtf8();
    reportsAreUtf8 = true;
}

void SNarrowText::FollowLocale() noexcept {
    mbchar::CodePage::FollowLocale();
    reportsAreUtf8 = false;
}

bool SNarrowText::IsUtf8() noexcept {
    return mbchar::CodePage::CurrentIsUtf8();
}

}  // namespace TarnLibA500
