// The steps of a digest: of every system and kind the same. A state starts with `Start()`, takes bytes
// with `Add` and gives the digest with `Finish`.
#pragma once

#include "platform/Digest.h"

namespace trevolt {

template <class State, std::size_t digestBytes>
CDigest<State, digestBytes>::CDigest() : m_state(std::make_unique<State>()) {
    Take(m_state->Start());
}

template <class State, std::size_t digestBytes>
CDigest<State, digestBytes>::~CDigest() = default;

template <class State, std::size_t digestBytes>
bool CDigest<State, digestBytes>::Add(const std::byte* bytes, std::size_t count) {
    return m_state != nullptr && Take(m_state->Add(bytes, count));
}

template <class State, std::size_t digestBytes>
bool CDigest<State, digestBytes>::Finish(std::array<std::uint8_t, digestBytes>& digest) {
    if (m_state == nullptr || !Take(m_state->Finish(digest)))
        return false;
    m_state.reset();
    return true;
}

template <class State, std::size_t digestBytes>
bool CDigest<State, digestBytes>::Take(EHashing step) {
    m_last = step;
    if (step != EHashing::Done)
        m_state.reset();
    return step == EHashing::Done;
}

} // namespace trevolt
