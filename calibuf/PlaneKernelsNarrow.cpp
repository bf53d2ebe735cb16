#include "calibuf/PlaneKernelSource.h"

namespace trevolt {

constinit const SPlaneKernels kNarrowPlaneKernels = kKernelsOf<OneLane>;

} // namespace trevolt
