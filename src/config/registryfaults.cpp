#ifdef TARN_TEST_SEAMS
#include "config/osregistry.h"

namespace TarnLibA500::osregistry {
namespace {

unsigned long calls = 0;
unsigned long opens = 0;
unsigned long failing = 0;
long openKeys = 0;
LONG errorToGive = ERROR_SUCCESS;

}  // namespace

LONG Before(bool isOpen) {
    if (isOpen) ++opens;
    return ++calls == failing ? errorToGive : ERROR_SUCCESS;
}

void CountOpened() {
    ++openKeys;
}

void CountClosed() {
    --openKeys;
}

void FailCall(unsigned long nth, LONG error) {
    errorToGive = error;
    failing = nth != 0 ? calls + nth : 0;
}

unsigned long CallsSoFar() {
    return calls;
}

unsigned long OpensSoFar() {
    return opens;
}

long OpenKeys() {
    return openKeys;
}

}  // namespace TarnLibA500::osregistry
#endif
