#include "platform/ConsoleProgram.h"

#include <new>

#include <windows.h>

#include "platform/StandardDescriptors.h"
#include "trevolt/Utf8.h"

int wmain(int argc, wchar_t** argv) {
    trevolt::OpenStandardDescriptors();
    SetConsoleOutputCP(CP_UTF8);
    try {
        std::vector<std::string> arguments;
        for (int i = 1; i < argc; ++i)
            arguments.push_back(trevolt::WideToShownUtf8(argv[i]));
        return trevolt::ConsoleMain(arguments);
    } catch (const std::bad_alloc&) {
        return trevolt::EndWithoutMemory();
    }
}
