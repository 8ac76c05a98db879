#include "files/failuretext.h"

#include "system/systemtext.h"

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
    SAnsiString text;
    return FindSystemErrorText(code, text) ? text : SAnsiString("system error");
}

}  // namespace TarnLibA500
