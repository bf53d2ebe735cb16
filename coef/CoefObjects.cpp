#include "trevolt/CoefObjects.h"

#include <type_traits>

#include "coef/WordObjects.h"

namespace trevolt {
namespace {

template <class Element>
bool SetTableOf(CColorCorrectCoef& object, CCaliOperationData* table) {
    auto* const green = dynamic_cast<CVirtualGreenCorrectCoef<Element>*>(&object);
    if (green == nullptr)
        return false;
    green->SetTransferTable(table);
    return true;
}

/// Calls `visit` with the object as that of its element.
template <class Element, class Object, class Visit>
bool VisitAs(Object& object, const Visit& visit) {
    using Words = std::conditional_t<std::is_const_v<Object>, const CWordCorrectCoef<Element>,
                                     CWordCorrectCoef<Element>>;
    auto* const words = dynamic_cast<Words*>(&object);
    if (words != nullptr)
        visit(*words);
    return words != nullptr;
}

template <class Object, class Visit>
void VisitWords(Object& object, const Visit& visit) {
#define TREVOLT_VISIT_AS(kind, element, sizes)                                                     \
    if (VisitAs<element>(object, visit))                                                           \
        return;
    TREVOLT_WORD_KINDS(TREVOLT_VISIT_AS)
#undef TREVOLT_VISIT_AS
}

} // namespace

std::unique_ptr<CColorCorrectCoef> CreateCoefObject(EWordKind kind) {
    using Owner = std::unique_ptr<CColorCorrectCoef>;
    return VisitElementOf(kind, Owner(), []<class Element>() -> Owner {
        return std::make_unique<WordObject<Element>>();
    });
}

Status LoadBoundedStoreImage(CColorCorrectCoef& object, const std::byte* image,
                             std::size_t length) {
    Status status = E_FAIL;
    VisitWords(object, [&](auto& words) { status = words.LoadBoundedStoreImage(image, length); });
    return status;
}

std::uint64_t MaxStoreImageBytes(const CColorCorrectCoef& object) {
    std::uint64_t bytes = 0;
    VisitWords(object, [&](const auto& words) { bytes = words.MaxStoreImageBytes(); });
    return bytes;
}

bool SetTransferTable(CColorCorrectCoef& object, CCaliOperationData* table) {
    return SetTableOf<S4WordCoef>(object, table) || SetTableOf<S12WordCoef>(object, table);
}

Status SaveWholeStoreC(CColorCorrectCoef& object, const wchar_t* path) {
    auto* const chroma = dynamic_cast<CCNewChromaCorrectCoef*>(&object);
    return chroma == nullptr ? E_FAIL : chroma->SaveWholeStoreC(path);
}

bool SetChromaMode(CColorCorrectCoef& object, std::uint32_t mode) {
    auto* const chroma = dynamic_cast<CCNewChromaCorrectCoef*>(&object);
    if (chroma == nullptr)
        return false;
    chroma->SetChromaMode(mode);
    return true;
}

} // namespace trevolt
