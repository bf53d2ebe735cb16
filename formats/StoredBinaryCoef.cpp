#include "formats/StoredBinaryCoef.h"

#include <array>
#include <bit>
#include <cstdint>
#include <utility>

#include "common/CheckedArithmetic.h"
#include "common/ElementTurn.h"
#include "common/FrameWriter.h"
#include "formats/BinaryCoefBody.h"
#include "trevolt/MassiveGrid.h"
#include "trevolt/TransferReport.h"

namespace trevolt {
namespace {

/// A stored element as the bytes that move.
template <class Kind>
using ElementBytes = std::array<std::byte, Kind::kStoredBytes>;

/// Gives the rows of the picture that is turned: the top-left pixels of a body, and the identity
/// where the body has none. Used by one thread at a time.
template <class Kind>
class CPictureRows {
  public:
    explicit CPictureRows(const CMassiveGrid& body) : m_body(body) {}

    /// `count` elements, `kTurnTile` at most, from (x, y) on: where they lie in the body, or put
    /// together here when they do not lie in one run of it.
    const ElementBytes<Kind>* operator()(std::int32_t x, std::int32_t y, std::int32_t count) const {
        const auto column = static_cast<std::uint32_t>(x);
        const auto row = static_cast<std::uint32_t>(y);
        const auto behind = column + static_cast<std::uint32_t>(count);
        const std::uint32_t index = row * m_body.Width() + column;
        const bool isInBody = row < m_body.Height() && behind <= m_body.Width();
        if (isInBody &&
            (index & CMassiveGrid::kBlockMask) + (behind - column) <= CMassiveGrid::kBlockElements)
            return At(index);
        for (std::uint32_t i = 0; i < behind - column; ++i)
            m_run[i] =
                row < m_body.Height() && column + i < m_body.Width() ? *At(index + i) : kIdentity;
        return m_run.data();
    }

  private:
    static constexpr ElementBytes<Kind> kIdentity =
        std::bit_cast<ElementBytes<Kind>>(Kind::Identity());

    const ElementBytes<Kind>* At(std::uint32_t index) const {
        return reinterpret_cast<const ElementBytes<Kind>*>(m_body.Element(index));
    }

    const CMassiveGrid& m_body;
    mutable std::array<ElementBytes<Kind>, kTurnTile> m_run;
};

template <class Kind>
class CStoredBinaryCoef : public CStoredCoef {
  public:
    Status Load(std::istream& stream, std::size_t threads) {
        return ReadCoefBody(stream, Kind::kMagic, m_body, threads);
    }

    PixelSize Size() const override { return {m_body.Width(), m_body.Height()}; }

    Status WriteTurned(std::ostream& stream, const PixelSize& size, std::uint32_t code,
                       std::size_t threads) const override {
        const PixelSize turned = CQuarterTurn(code, size.width, size.height).TurnedSize();
        const auto elements = CheckedProduct<std::int32_t>(turned.width, turned.height);
        if (!elements) { // no body has as many
            CTransferReport::NoteMemoryRefused();
            return E_FAIL;
        }
        WriteCoefHeader(stream, Kind::kMagic, static_cast<std::uint32_t>(turned.width),
                        static_cast<std::uint32_t>(turned.height));
        const std::uint64_t rowBytes =
            static_cast<std::uint64_t>(turned.width) * Kind::kStoredBytes;
        return WriteFrame(
            stream, static_cast<std::uint64_t>(*elements) * Kind::kStoredBytes, threads,
            [&](std::uint64_t offset, std::size_t count, CBudgetBlock& scratch) {
                const std::uint64_t top = offset / rowBytes;
                const std::uint64_t bottom = (offset + count + rowBytes - 1) / rowBytes;
                scratch = GatherRows(size, code, top, bottom);
                return scratch ? scratch.Data() + (offset - top * rowBytes) : nullptr;
            });
    }

    void CopyElements(std::uint32_t x, std::uint32_t y, std::uint32_t count,
                      SMatrixCoef* elements) const override {
        const std::uint32_t first = y * m_body.Width() + x;
        for (std::uint32_t i = 0; i < count; ++i) {
            elements[i] = SMatrixCoef{};
            Kind::Load(Kind::At(m_body, first + i), elements[i]);
        }
    }

  private:
    /// The rows of the turned body from `top` to `bottom`; nothing without memory.
    CBudgetBlock GatherRows(const PixelSize& size, std::uint32_t code, std::uint64_t top,
                            std::uint64_t bottom) const {
        const std::int64_t width = CQuarterTurn(code, size.width, size.height).TurnedSize().width;
        CBudgetBlock rows(static_cast<std::size_t>(bottom - top) * static_cast<std::size_t>(width) *
                          Kind::kStoredBytes);
        if (rows)
            GatherTurned(code, size.width, size.height,
                         {0, static_cast<std::int32_t>(top), static_cast<std::int32_t>(width),
                          static_cast<std::int32_t>(bottom)},
                         CPictureRows<Kind>(m_body),
                         reinterpret_cast<ElementBytes<Kind>*>(rows.Data()), width);
        return rows;
    }

    CMassiveGrid m_body{Kind::kStoredBytes};
};

} // namespace

template <class Kind>
SStoredLoad LoadStoredBinaryCoef(std::istream& stream, std::size_t threads) {
    auto coef = std::make_unique<CStoredBinaryCoef<Kind>>();
    const Status status = coef->Load(stream, threads);
    return {status, std::move(coef)};
}

#define TREVOLT_LOAD_STORED(Kind)                                                                  \
    template SStoredLoad LoadStoredBinaryCoef<Kind>(std::istream&, std::size_t);
TREVOLT_EACH_BINARY_COEF_KIND(TREVOLT_LOAD_STORED)
#undef TREVOLT_LOAD_STORED

} // namespace trevolt
