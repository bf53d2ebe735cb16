#include "cli/TextPieces.h"

#include <fmt/format.h>

namespace trevolt {

void CTextPieces::Add(std::string_view characters) {
    if (characters.size() > m_piece.size() - m_size)
        End();
    m_size += characters.copy(m_piece.data() + m_size, m_piece.size() - m_size);
}

void CTextPieces::End() {
    fmt::print(m_stream, "{}", std::string_view(m_piece.data(), m_size));
    m_size = 0;
}

} // namespace trevolt
