#pragma once

#include "tarnlib/sstring.h"

namespace TarnLibA500 {

/// The port in the reply to EPSV, "229 Entering (|||6446|)"; 0 when there is none.
unsigned short PortOfEpsv(const SAnsiString& reply);

/// The port in the reply to PASV, "227 Entering (127,0,0,1,25,46)", with or without parentheses; 0 when there is none.
/// The address is not looked at: it may lead anywhere.
unsigned short PortOfPasv(const SAnsiString& reply);

}  // namespace TarnLibA500
