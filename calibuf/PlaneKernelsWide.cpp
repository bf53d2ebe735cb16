// Compiled for processors with AVX2 alone.
#include "calibuf/PlaneKernelSource.h"

namespace trevolt {

constinit const SPlaneKernels kWidePlaneKernels = kKernelsOf<TwoLanes>;

} // namespace trevolt
