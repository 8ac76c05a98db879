#include "tarnlib/tarnapi.h"  // everything is there; the header compiles alone
