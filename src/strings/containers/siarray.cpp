#include "tarnlib/siarray.h"

namespace TarnLibA500 {

template class SIArray<SAnsiString>;
template class SIArray<SAnsiStringCI>;

}  // namespace TarnLibA500
