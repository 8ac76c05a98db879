#include "tarnlib/refcount.h"  // everything is there; the header compiles alone
