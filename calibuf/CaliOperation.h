// CCaliOperation<T>: owns the store of one coefficient object, for elements of type T.
#pragma once

#include <memory>
#include <utility>

#include "calibuf/CaliBuf.h"
#include "calibuf/WordElementKind.h"

namespace trevolt {

/// Creates an empty store for elements of type T and destroys it with itself. Used by the thread
/// that uses the store.
template <class T>
class CCaliOperation {
  public:
    CCaliOperation() : m_pCaliBuf(CCaliBuf::Create()) {
        m_pCaliBuf->SetElement(kWordElementKind<T>.elemSize, kWordElementKind<T>.planeCount);
    }
    virtual ~CCaliOperation() = default;
    CCaliOperation(const CCaliOperation&) = delete;
    CCaliOperation& operator=(const CCaliOperation&) = delete;

    /// The store, never null.
    CCaliBuf& Buffer() { return *m_pCaliBuf; }
    const CCaliBuf& Buffer() const { return *m_pCaliBuf; }

    /// The element of pixel (x, y), null when its block is missing.
    T* Find(std::uint32_t x, std::uint32_t y) {
        return reinterpret_cast<T*>(m_pCaliBuf->FindElement(x, y));
    }
    const T* Find(std::uint32_t x, std::uint32_t y) const {
        return reinterpret_cast<const T*>(std::as_const(*m_pCaliBuf).FindElement(x, y));
    }

  private:
    std::unique_ptr<CCaliBuf> m_pCaliBuf;
};

} // namespace trevolt
