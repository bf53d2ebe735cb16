#include "tests/support/TestFiles.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>

#include <gtest/gtest.h>

#include "platform/FileStream.h"
#include "platform/FileSystem.h"
#include "trevolt/Utf8.h"

namespace trevolt::test {
namespace {

std::filesystem::path Native(const std::wstring& path) {
    return std::filesystem::path(ToNativePath(path).value());
}

} // namespace

Bytes MakeBytes(std::initializer_list<int> values) {
    Bytes bytes;
    bytes.reserve(values.size());
    for (const int value : values)
        bytes.push_back(static_cast<std::byte>(value));
    return bytes;
}

CTemporaryFolder::CTemporaryFolder() {
    static std::atomic<unsigned> counter{0};
    static const unsigned seed = std::random_device{}();
    const auto base = std::filesystem::temp_directory_path().u8string();
    const std::wstring root =
        Utf8ToWide(std::string(base.begin(), base.end())).value_or(L".") + kPathSeparator;
    m_path = root + L"trevolt-test-" + std::to_wstring(seed) + L"-" + std::to_wstring(++counter) +
             kPathSeparator;
    EXPECT_TRUE(CreateFolders(m_path));
}

CTemporaryFolder::~CTemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(Native(m_path), ignored);
}

std::vector<std::wstring> CTemporaryFolder::Names() const {
    std::vector<std::wstring> names;
    for (const FolderEntry& entry : ListEntries(m_path).entries)
        if (entry.name != L"." && entry.name != L"..")
            names.push_back(entry.name);
    std::sort(names.begin(), names.end());
    return names;
}

bool FileExists(const std::wstring& path) { return PathExists(path); }

std::string ReadText(const std::wstring& path) {
    std::fstream stream;
    EXPECT_TRUE(OpenFileStream(stream, path.c_str(), std::ios::in));
    std::string text(BytesToEnd(stream).value_or(0), '\0');
    stream.read(text.data(), static_cast<std::streamsize>(text.size()));
    EXPECT_TRUE(stream.good());
    return text;
}

Bytes ReadFile(const std::wstring& path) {
    const std::string text = ReadText(path);
    Bytes bytes(text.size());
    if (!bytes.empty())
        std::memcpy(bytes.data(), text.data(), bytes.size());
    return bytes;
}

void WriteText(const std::wstring& path, std::string_view text) {
    // A file that is cut to nothing and written again goes to the disk at once on some systems, a
    // new one does not; damage tests write thousands.
    RemoveFile(path);
    std::fstream stream;
    EXPECT_TRUE(OpenFileStream(stream, path.c_str(), std::ios::out | std::ios::trunc));
    stream.write(text.data(), static_cast<std::streamsize>(text.size()));
    stream.close();
    EXPECT_TRUE(stream.good());
}

void WriteFile(const std::wstring& path, const Bytes& bytes) {
    WriteText(path, {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

std::wstring Sample(std::wstring_view name) {
    return Utf8ToWide(TREVOLT_SAMPLES_FOLDER).value() + L"/" + std::wstring(name);
}

} // namespace trevolt::test
