#pragma once

#include "seam/seam.h"

#include <windows.h>

/// The system's generator of identifiers.
namespace TarnLibA500::osguid {

struct Kind {
    static void SetError(unsigned long /*error*/) {}
};
using Calls = seam::Calls<Kind>;

using Generator = HRESULT(WINAPI*)(GUID*);

/// False when there is no generator, or it fails.
inline bool Generate(Generator generator, GUID& guid) {
    return !Calls::MustFail() && generator != nullptr && SUCCEEDED(generator(&guid));
}

}  // namespace TarnLibA500::osguid
