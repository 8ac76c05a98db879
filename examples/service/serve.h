#pragma once

#include <functional>

#include "stopsignal.h"
#include "tarnlib/cparamlineargs.h"

enum ExitStatus : int { kStopped = 0, kRefused = 1, kFailed = 2, kCutOff = 3 };

/// The name of the instance: the option -name, or else "tarn-example-service".
TarnLibA500::SAnsiString InstanceName(const TarnLibA500::CParamLineArgs& args);

/// The service from its start to its stop, in whichever way it is run; onRunning is called once it works.
ExitStatus Serve(const TarnLibA500::CParamLineArgs& args, StopSignal& stop,
                 const std::function<void()>& onRunning);
