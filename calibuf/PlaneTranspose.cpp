#include "calibuf/PlaneTranspose.h"

#include <cstring>

namespace trevolt {
namespace {

using Planes = std::span<const std::byte* const>;

void GatherSingly(const std::byte* elements, std::size_t first, std::size_t count,
                  std::uint16_t* planes, const SPlaneLayout& layout) {
    const std::size_t elemSize = layout.wordCount * kWordBytes;
    for (std::size_t e = first; e < count; ++e)
        for (std::size_t k = 0; k < layout.wordCount; ++k)
            std::memcpy(planes + k * layout.stride + e, elements + e * elemSize + k * kWordBytes,
                        kWordBytes);
}

void ScatterSingly(Planes planes, std::byte* elements, std::size_t first, std::size_t count,
                   std::size_t elemSize) {
    for (std::size_t e = first; e < count; ++e)
        for (std::size_t k = 0; k < planes.size(); ++k)
            std::memcpy(elements + e * elemSize + k * kWordBytes, planes[k] + e * kWordBytes,
                        kWordBytes);
}

} // namespace

void GatherPlanes(const std::byte* elements, std::size_t count, std::uint16_t* planes,
                  const SPlaneLayout& layout, EVectors vectors) {
    if (count == 0)
        return;
    if (layout.wordCount == 1) {
        std::memcpy(planes, elements, count * kWordBytes);
        return;
    }
    std::size_t e = 0;
    for (const SPlaneKernels* const kernels : PlaneKernelsFor(vectors))
        e = kernels->gather(elements, e, count, planes, layout);
    GatherSingly(elements, e, count, planes, layout);
}

void ScatterPlanes(Planes planes, std::byte* elements, std::size_t count, std::size_t elemSize,
                   EVectors vectors) {
    if (count == 0)
        return;
    const bool isPacked = elemSize == planes.size() * kWordBytes;
    if (isPacked && planes.size() == 1) {
        std::memcpy(elements, planes[0], count * kWordBytes);
        return;
    }
    std::size_t e = 0;
    if (isPacked)
        for (const SPlaneKernels* const kernels : PlaneKernelsFor(vectors))
            e = kernels->scatter(planes.data(), planes.size(), elements, e, count);
    ScatterSingly(planes, elements, e, count, elemSize);
}

} // namespace trevolt
