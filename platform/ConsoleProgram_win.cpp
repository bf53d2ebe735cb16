#include "platform/ConsoleProgram.h"

#include <algorithm>
#include <array>
#include <new>

#include <windows.h>

#include "platform/StandardDescriptors.h"
#include "trevolt/Utf8.h"

namespace {

/// The letters of a short word, for a comparison that takes no memory.
class CShortWord {
  public:
    explicit CShortWord(std::wstring_view word)
        : m_length(std::min(word.size(), m_letters.size())) {
        for (std::size_t i = 0; i < m_length; ++i)
            m_letters[i] = word[i] < 0x80 ? static_cast<char>(word[i]) : '?';
    }

    std::string_view Text() const { return {m_letters.data(), m_length}; }

  private:
    std::array<char, 16> m_letters{};
    std::size_t m_length;
};

} // namespace

int wmain(int argc, wchar_t** argv) {
    trevolt::OpenStandardDescriptors();
    SetConsoleOutputCP(CP_UTF8);
    try {
        std::vector<std::string> arguments;
        for (int i = 1; i < argc; ++i)
            arguments.push_back(trevolt::WideToShownUtf8(argv[i]));
        return trevolt::ConsoleMain(arguments);
    } catch (const std::bad_alloc&) {
        return trevolt::EndWithoutMemory(CShortWord(argc > 1 ? argv[1] : L"").Text());
    }
}
