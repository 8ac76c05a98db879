#include "files/failuretext.h"

#include "system/systemtext.h"

#include <windows.h>

namespace TarnLibA500 {

SAnsiString FillTemplate(const char* sentence, const SAnsiString& first, const SAnsiString& second,
                         const SAnsiString& third) {
    const SAnsiString* const texts[] = {&first, &second, &third};
    SAnsiString filled;
    for (const char* at = sentence; *at != '\0'; ++at) {
        if (at[0] == '%' && at[1] >= '1' && at[1] <= '3') {
            filled.concat(*texts[at[1] - '1']);
            ++at;
        } else {
            filled.concat(*at);
        }
    }
    return filled;
}

SAnsiString SystemMessage(unsigned long code) {
    constexpr DWORD kMaxText = 500;
    wchar_t text[kMaxText];
    const DWORD length =
        FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, code,
                       MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT), text, kMaxText, nullptr);
    return length != 0 ? FromSystem(text) : SAnsiString("system error");
}

}  // namespace TarnLibA500
