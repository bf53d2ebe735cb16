#include "cli/ShownText.h"

#include <algorithm>

#include "common/ShownCharacters.h"

namespace trevolt {
namespace {

constexpr std::size_t kLongestCharacter = 4; // bytes

} // namespace

void CShownLine::push_back(char byte) {
    if (m_size == m_text.size())
        Show(kLongestCharacter - 1);
    m_text[m_size++] = byte;
}

void CShownLine::End() {
    Show(0);
    m_pieces.Add("\n");
    m_pieces.End();
}

void CShownLine::Show(std::size_t rest) {
    std::string_view text(m_text.data(), m_size);
    while (text.size() > rest) {
        const CShownCharacter character(text);
        m_pieces.Add(character.Text());
        text.remove_prefix(character.Bytes());
    }
    std::copy(text.begin(), text.end(), m_text.begin());
    m_size = text.size();
}

void PrintText(std::FILE* stream, std::string_view text) {
    CShownLine line(stream);
    std::copy(text.begin(), text.end(), std::back_inserter(line));
    line.End();
}

} // namespace trevolt
