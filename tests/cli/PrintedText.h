// What is printed to a stream, for tests.
#pragma once

#include <cstdio>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/TestFiles.h"
#include "trevolt/Utf8.h"

namespace trevolt::test {

/// What `print(stream)` leaves in a file.
template <class Print>
std::string Printed(const Print& print) {
    const CTemporaryFolder folder;
    const std::wstring path = folder.File(L"printed");
    std::FILE* const stream = std::fopen(WideToShownUtf8(path).c_str(), "wb");
    if (stream == nullptr) {
        ADD_FAILURE() << "the file cannot be made";
        return {};
    }
    print(stream);
    EXPECT_EQ(std::fclose(stream), 0);
    return ReadText(path);
}

} // namespace trevolt::test
