#include "tarnlib/loggingplugin.h"  // everything is there; the header compiles alone
