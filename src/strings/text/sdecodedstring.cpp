#include "tarnlib/sdecodedstring.h"  // everything is there; the header compiles alone
