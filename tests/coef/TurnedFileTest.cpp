// Turned copies of a rectangle, banded and whole: what they load to beside turning pixel by pixel.
#include <gtest/gtest.h>

#include "tests/coef/CoefObjects.h"
#include "tests/support/TestFiles.h"

namespace trevolt {
namespace {

struct SPlace {
    std::uint32_t x;
    std::uint32_t y;
};

/// Where pixel (x, y) of a w × h rectangle goes.
SPlace Turned(std::uint32_t mode, std::uint32_t w, std::uint32_t h, std::uint32_t x,
              std::uint32_t y) {
    switch (mode) {
    case 1:
        return {h - 1 - y, x};
    case 2:
        return {w - 1 - x, h - 1 - y};
    default:
        return {y, w - 1 - x};
    }
}

template <class Object>
class TurnedFiles : public ::testing::Test {
  protected:
    using Facts = test::KindOf<Object>;

    TurnedFiles() {
        object.SetFileKind(2);
        test::CreateWithPattern(object, 600, 300);
    }

    /// Whether the file loads to the rectangle's pixels, turned by hand.
    ::testing::AssertionResult LoadsTurned(std::uint32_t mode, const SPixelRect& rect) {
        const auto w = static_cast<std::uint32_t>(rect.Width());
        const auto h = static_cast<std::uint32_t>(rect.Height());
        Object loaded;
        loaded.SetFileKind(2);
        EXPECT_EQ(loaded.Create(static_cast<std::uint16_t>(mode == 2 ? w : h),
                                static_cast<std::uint16_t>(mode == 2 ? h : w)),
                  S_OK);
        if (const Status status = loaded.LoadCoef(path.c_str()); status != S_OK)
            return ::testing::AssertionFailure() << "status " << status;
        for (std::uint32_t y = 0; y < h; ++y)
            for (std::uint32_t x = 0; x < w; ++x) {
                const SPlace to = Turned(mode, w, h, x, y);
                if (test::WordsAt(loaded, to.x, to.y) !=
                    test::WordsAt(object, static_cast<std::uint32_t>(rect.left) + x,
                                  static_cast<std::uint32_t>(rect.top) + y))
                    return ::testing::AssertionFailure() << x << ", " << y;
            }
        return ::testing::AssertionSuccess();
    }

    Status SaveFile(const wchar_t* file, const SPixelRect& rect, std::uint32_t mode) {
        return (object.*Facts::kTurnedFile)(file, rect, mode, nullptr, nullptr);
    }

    test::CTemporaryFolder folder;
    std::wstring path = folder.File(L"turned.coef");
    Object object;
};
TYPED_TEST_SUITE(TurnedFiles, test::AllKinds);

TYPED_TEST(TurnedFiles, WholeFiles) {
    for (const std::uint32_t mode : {1U, 2U, 3U})
        for (const SPixelRect& rect : {SPixelRect{0, 0, 600, 300}, SPixelRect{250, 120, 530, 290},
                                       SPixelRect{17, 3, 18, 4}}) {
            ASSERT_EQ(this->SaveFile(this->path.c_str(), rect, mode), S_OK);
            EXPECT_TRUE(this->LoadsTurned(mode, rect)) << "mode " << mode;
        }
}

TYPED_TEST(TurnedFiles, Bands) {
    const SPixelRect rect{10, 5, 590, 295};
    for (const std::uint32_t mode : {1U, 2U, 3U}) {
        const auto turnedWidth =
            static_cast<std::int32_t>(mode == 2 ? rect.Width() : rect.Height());
        const auto turnedHeight =
            static_cast<std::int32_t>(mode == 2 ? rect.Height() : rect.Width());
        const SPixelRect whole{0, 0, turnedWidth, turnedHeight};
        std::uint64_t directory = 0;
        std::uint64_t data = 0;
        std::array<std::byte, 16> name{std::byte{'t'}};
        const std::uint8_t flag = 1;
        for (std::int32_t top = 0; top < turnedHeight; top += 128) {
            // The part of the rectangle whose turned copy are these rows.
            const std::int32_t bottom = std::min(top + 128, turnedHeight);
            SPixelRect source = rect;
            if (mode == 1) {
                source.left = rect.left + top;
                source.right = rect.left + bottom;
            } else if (mode == 2) {
                source.top = rect.bottom - bottom;
                source.bottom = rect.bottom - top;
            } else {
                source.left = rect.right - bottom;
                source.right = rect.right - top;
            }
            ASSERT_EQ((this->object.*TestFixture::Facts::kTurnedBand)(
                          this->path.c_str(), source, mode, whole, directory, data,
                          static_cast<std::uint32_t>(top), name.data(), &flag),
                      S_OK);
        }
        EXPECT_TRUE(this->LoadsTurned(mode, rect)) << "mode " << mode;
        const SChunkHeader header = DecodeChunkHeader(test::ReadFile(this->path).data());
        EXPECT_EQ(header.width, static_cast<std::uint32_t>(turnedWidth));
        EXPECT_EQ(header.height, static_cast<std::uint32_t>(turnedHeight));
        EXPECT_EQ(header.ownerData[0], 't');
        EXPECT_EQ(header.ownerFlag, 1);
    }
}

TYPED_TEST(TurnedFiles, APixelByHand) {
    const SPixelRect rect{0, 0, 4, 2};
    ASSERT_EQ(this->SaveFile(this->path.c_str(), rect, 1), S_OK);
    TypeParam loaded;
    loaded.SetFileKind(2);
    ASSERT_EQ(loaded.Create(2, 4), S_OK);
    ASSERT_EQ(loaded.LoadCoef(this->path.c_str()), S_OK);
    EXPECT_EQ(test::WordsAt(loaded, 1, 0), test::WordsAt(this->object, 0, 0));
    EXPECT_EQ(test::WordsAt(loaded, 0, 3), test::WordsAt(this->object, 3, 1));
}

TYPED_TEST(TurnedFiles, WhatTheStoreDoesNotHaveIsDefault) {
    ASSERT_EQ(this->SaveFile(this->path.c_str(), {590, 290, 780, 390}, 2), S_OK);
    TypeParam loaded;
    loaded.SetFileKind(2);
    ASSERT_EQ(loaded.Create(190, 100), S_OK);
    ASSERT_EQ(loaded.LoadCoef(this->path.c_str()), S_OK);
    EXPECT_EQ(test::WordsAt(loaded, 189, 99), test::WordsAt(this->object, 590, 290));
    EXPECT_EQ(test::WordsAt(loaded, 0, 0), test::ElementOf<TypeParam>{}.w);
}

// What a block holds past the store's size belongs to no pixel.
TYPED_TEST(TurnedFiles, PaddingIsDefault) {
    TypeParam small;
    small.SetFileKind(2);
    test::CreateWithPattern(small, 40, 24);
    const auto marked = *small.FindPixel(5, 5);
    *small.FindPixel(40, 3) = marked;
    *small.FindPixel(3, 24) = marked;
    ASSERT_EQ((small.*TestFixture::Facts::kTurnedFile)(this->path.c_str(), {0, 0, 42, 26}, 2,
                                                       nullptr, nullptr),
              S_OK);
    TypeParam loaded;
    loaded.SetFileKind(2);
    ASSERT_EQ(loaded.Create(42, 26), S_OK);
    ASSERT_EQ(loaded.LoadCoef(this->path.c_str()), S_OK);
    for (std::uint32_t y = 0; y < 26; ++y)
        for (std::uint32_t x = 0; x < 42; ++x)
            ASSERT_EQ(test::WordsAt(loaded, 41 - x, 25 - y), x < 40 && y < 24
                                                                 ? test::WordsAt(small, x, y)
                                                                 : test::ElementOf<TypeParam>{}.w)
                << x << ", " << y;
    // All of it outside.
    ASSERT_EQ((small.*TestFixture::Facts::kTurnedFile)(this->path.c_str(), {41, 0, 50, 9}, 1,
                                                       nullptr, nullptr),
              S_OK);
    ASSERT_EQ(loaded.LoadCoef(this->path.c_str()), S_OK);
    EXPECT_EQ(test::WordsAt(loaded, 0, 0), test::ElementOf<TypeParam>{}.w);
}

TYPED_TEST(TurnedFiles, Statuses) {
    const SPixelRect rect{0, 0, 40, 24};
    std::uint64_t directory = 0;
    std::uint64_t data = 0;
    const auto band = [&](const wchar_t* file, const SPixelRect& area, std::uint32_t mode) {
        return (this->object.*TestFixture::Facts::kTurnedBand)(
            file, area, mode, {0, 0, 40, 24}, directory, data, 0, nullptr, nullptr);
    };
    const std::wstring unopenable = this->folder.File(L"missing") + L"/a.coef";
    const wchar_t* const file = this->path.c_str();
    EXPECT_EQ(this->SaveFile(nullptr, rect, 1), E_COEF_INVALIDARG);
    EXPECT_EQ(band(nullptr, rect, 2), E_COEF_INVALIDARG);
    for (const SPixelRect& bad :
         {SPixelRect{0, 0, 0, 24}, SPixelRect{0, 0, 40, 0}, SPixelRect{40, 0, 0, 24},
          SPixelRect{-1, 0, 40, 24}, SPixelRect{0, -1, 40, 24}}) {
        EXPECT_EQ(this->SaveFile(file, bad, 1), E_COEF_INVALIDARG);
        EXPECT_EQ(band(file, bad, 2), E_COEF_INVALIDARG);
    }
    for (const std::uint32_t mode : {0U, 4U, 0xFFFFFFFFU}) {
        EXPECT_EQ(this->SaveFile(file, rect, mode), E_COEF_INVALIDARG);
        EXPECT_EQ(band(file, rect, mode), E_COEF_INVALIDARG);
    }
    // A copy that no grid can hold.
    EXPECT_EQ(this->SaveFile(file, {0, 0, 2147483647, 2147483647}, 1), E_FAIL);
    EXPECT_EQ(band(file, {0, 0, 2147483647, 1}, 2), E_FAIL);
    EXPECT_FALSE(test::FileExists(this->path));
    EXPECT_EQ(this->SaveFile(unopenable.c_str(), rect, 1), TestFixture::Facts::kOutputOpenFailed);
    EXPECT_EQ(band(unopenable.c_str(), rect, 2), TestFixture::Facts::kOutputOpenFailed);
    TypeParam empty;
    EXPECT_EQ((empty.*TestFixture::Facts::kTurnedFile)(file, rect, 1, nullptr, nullptr),
              E_COEF_INVALIDARG);
}

} // namespace
} // namespace trevolt
