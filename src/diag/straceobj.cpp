#include "tarnlib/straceobj.h"

namespace TarnLibA500 {

void STraceObj::emit(const SAnsiString& text) const {
    EmitTraceText(level_, file_, line_, text.getString());
}

}  // namespace TarnLibA500
