#include "tarnlib/siset.h"  // everything is there; the header compiles alone
