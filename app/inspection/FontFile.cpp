#include "app/inspection/FontFile.h"

// The assembler takes the file as it is, where a compiler would read every byte as a number.
#ifdef _WIN32
#define TREVOLT_CONSTANTS ".section .rdata,\"dr\"\n"
#else
#define TREVOLT_CONSTANTS ".section .rodata\n"
#endif
__asm__(TREVOLT_CONSTANTS ".globl trevolt_font_begin\n"
                          ".globl trevolt_font_end\n"
                          ".balign 16\n"
                          "trevolt_font_begin:\n"
                          ".incbin \"" TREVOLT_FONT_FILE "\"\n"
                          "trevolt_font_end:\n"
                          ".byte 0\n"
                          ".text\n");

extern "C" {
extern const unsigned char trevolt_font_begin[]; // NOLINT(readability-identifier-naming)
extern const unsigned char trevolt_font_end[];   // NOLINT(readability-identifier-naming)
}

namespace trevolt {

std::span<const unsigned char> FontFile() { return {trevolt_font_begin, trevolt_font_end}; }

} // namespace trevolt
