#include "platform/ConsoleProgram.h"

int main(int argc, char** argv) {
    return trevolt::ConsoleMain({argv + (argc > 0 ? 1 : 0), argv + argc});
}
