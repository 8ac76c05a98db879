#include "tarnlib/sprogress.h"

namespace TarnLibA500 {

SProgress::~SProgress() = default;

}  // namespace TarnLibA500
