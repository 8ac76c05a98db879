#pragma once

#include "tarnlib/cparamlineargs.h"

/// Runs as a service of the system, whose control manager has started this process; returns when the service has stopped.
int RunAsService(const TarnLibA500::CParamLineArgs& args);
