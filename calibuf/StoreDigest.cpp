#include "calibuf/StoreDigest.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <span>

#include "calibuf/BlockGrid.h"
#include "calibuf/PlaneTranspose.h"
#include "trevolt/MemoryBudget.h"

namespace trevolt {
namespace {

/// Fills a block's `data` with the default element.
void FillDefaults(const WordElementKind& kind, std::byte* data) {
    for (std::size_t i = 0; i < kBlockElements; ++i)
        std::memcpy(data + i * kind.elemSize, kind.defaultWords.data(), kind.elemSize);
}

/// Puts a row of a block together, where the planes hold it; `left` is the block's first column.
void CopyRow(const CWordPlanes& planes, std::uint32_t left, std::uint32_t y, std::byte* row) {
    const WordElementKind& kind = planes.Kind();
    const std::uint32_t count = std::min(kBlockWidth, planes.Width() - left);
    std::array<const std::byte*, kMaxWords> words{};
    for (std::size_t k = 0; k < kind.wordCount; ++k)
        words[k] = reinterpret_cast<const std::byte*>(planes.FindRun(k, left, y, count));
    if (words.front() != nullptr)
        ScatterPlanes(std::span(words).first(kind.wordCount), row, count, kind.elemSize);
}

} // namespace

bool CStoreDigest::Finish(std::wstring& text) {
    constexpr wchar_t kDigits[] = L"0123456789ABCDEF";
    std::array<std::uint8_t, 16> digest{};
    if (!m_md5.Finish(digest))
        return false;
    text.clear();
    for (const std::uint8_t byte : digest) {
        text += kDigits[byte >> 4];
        text += kDigits[byte & 15];
    }
    return true;
}

bool ComputeStoreDigest(const CWordPlanes& planes, std::wstring& text) {
    const std::size_t elemSize = planes.Kind().elemSize;
    CBudgetBlock block(kBlockElements * elemSize);
    if (!block)
        return false;
    CStoreDigest digest;
    for (std::uint32_t top = 0; top < planes.Height(); top += kBlockHeight)
        for (std::uint32_t left = 0; left < planes.Width(); left += kBlockWidth) {
            FillDefaults(planes.Kind(), block.Data());
            const std::uint32_t bottom = std::min(top + kBlockHeight, planes.Height());
            for (std::uint32_t y = top; y < bottom; ++y)
                CopyRow(planes, left, y,
                        block.Data() + std::size_t{y - top} * kBlockWidth * elemSize);
            if (!digest.AddBlock(block.Data(), block.Size()))
                return false;
        }
    return digest.Finish(text);
}

} // namespace trevolt
