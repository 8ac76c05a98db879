#pragma once

#include "tarnlib/sstring.h"

namespace TarnLibA500::smtp {

/// What a message is built for.
struct Form {
    SAnsiString localHost;     ///< in the message's identifier, behind "@"
    bool writesBcc = false;    ///< into the header
    bool takes8Bit = true;     ///< text beyond ASCII may stand as it is
    bool doublesDots = false;  ///< at the beginning of a line, as SMTP transfers them
};

}  // namespace TarnLibA500::smtp
