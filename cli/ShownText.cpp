#include "cli/ShownText.h"

namespace trevolt {

void PrintText(std::FILE* stream, std::string_view text) {
    fmt::memory_buffer shown;
    AppendShown(text, shown);
    fmt::print(stream, "{}\n", std::string_view(shown.data(), shown.size()));
}

} // namespace trevolt
