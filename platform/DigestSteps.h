// The steps of a digest: of every system and kind the same. A state starts with `Start()`, takes bytes
// with `Add` and gives the digest with `Finish`, each of which answers false when the system fails.
#pragma once

#include <utility>

#include "platform/Digest.h"

namespace trevolt {

template <class State, std::size_t digestBytes>
CDigest<State, digestBytes>::CDigest() : m_state(std::make_unique<State>()) {
    if (!m_state->Start())
        m_state.reset();
}

template <class State, std::size_t digestBytes>
CDigest<State, digestBytes>::~CDigest() = default;

template <class State, std::size_t digestBytes>
bool CDigest<State, digestBytes>::Add(const std::byte* bytes, std::size_t count) {
    if (m_state && !m_state->Add(bytes, count))
        m_state.reset();
    return m_state != nullptr;
}

template <class State, std::size_t digestBytes>
bool CDigest<State, digestBytes>::Finish(std::array<std::uint8_t, digestBytes>& digest) {
    const auto state = std::move(m_state);
    return state && state->Finish(digest);
}

} // namespace trevolt
