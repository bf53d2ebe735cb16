#include "coef/VirtualGreenCorrectCoef.h"

namespace trevolt {

template <class Element>
bool CVirtualGreenCorrectCoef<Element>::FillRectChannel(std::int32_t channel, std::uint32_t x,
                                                        std::uint32_t y, std::uint32_t width,
                                                        std::uint32_t height, float value,
                                                        std::uint32_t tableIndex) {
    return this->FillThrough(m_pTransferTable, channel, {x, y, width, height}, value, tableIndex);
}

template <class Element>
bool CVirtualGreenCorrectCoef<Element>::SetPixelChannel(std::int32_t channel, std::uint32_t x,
                                                        std::uint32_t y, float value,
                                                        std::uint32_t tableIndex) {
    return this->SetThrough(m_pTransferTable, channel, x, y, value, tableIndex);
}

template <class Element>
Status CVirtualGreenCorrectCoef<Element>::QueryOwnSize(const wchar_t* path, std::uint32_t& width,
                                                       std::uint32_t& height) const {
    SChunkHeader header;
    if (const Status status = ReadChunkFileHeader(path, {&this->Kind().formatId, 1}, header);
        Failed(status))
        return status;
    if (header.fileKind != this->FileKind())
        return E_COEF_BADFORMAT;
    width = header.width;
    height = header.height;
    return S_OK;
}

template <class Element>
Status CVirtualGreenCorrectCoef<Element>::LoadCoefRect(const wchar_t* path, std::uint32_t x,
                                                       std::uint32_t y) {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    const Status status = QueryOwnSize(path, width, height);
    return Failed(status) ? status : LoadChunkFile(this->Store(), path, x, y);
}

template <class Element>
Status CVirtualGreenCorrectCoef<Element>::ReadOwnInfo(const wchar_t* path, std::byte* name,
                                                      std::uint32_t capacity, std::uint8_t& flag) {
    return ReadOwnerData(path, {&kWordKind<Element>.formatId, 1}, name, capacity, flag);
}

template class CVirtualGreenCorrectCoef<S4WordCoef>;
template class CVirtualGreenCorrectCoef<S12WordCoef>;

} // namespace trevolt
