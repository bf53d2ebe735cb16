// Rectangle operations beside a naive model, pixel by pixel: random rectangles, sizes and stores
// with blocks missing here and there, up to a thousand seeds a kind.
#include <functional>
#include <optional>
#include <set>

#include <gtest/gtest.h>

#include "tests/coef/CoefObjects.h"
#include "tests/coef/RandomStores.h"
#include "trevolt/FixedPoint.h"

namespace trevolt {
namespace {

using test::AnyFloat;
using test::AnyWord;
using test::Below;
using test::Random;
using test::SRect;

/// The model: every pixel of up to three by three blocks, and whether its block is there.
template <class Object>
class CModel {
  public:
    using Element = test::ElementOf<Object>;
    static constexpr std::uint32_t kWidth = 3 * 256;
    static constexpr std::uint32_t kHeight = 3 * 128;
    static constexpr std::size_t kWords = test::kWordsOf<Object>;

    CModel(Object& object, Random& random)
        : m_object(object),
          m_width(1 + Below(random, kWidth)),
          m_height(1 + Below(random, kHeight)),
          m_pixels(std::size_t{kWidth} * kHeight) {
        EXPECT_EQ(object.Create(static_cast<std::uint16_t>(m_width),
                                static_cast<std::uint16_t>(m_height)),
                  S_OK);
        test::DropSomeBlocks(*object.Store(), random);
        for (const std::uint32_t index : object.Store()->UsedBlocks())
            m_isPresent[index / kGridColumns][index % kGridColumns] = true;
    }

    bool Has(std::uint32_t x, std::uint32_t y) const {
        return x < kWidth && y < kHeight && m_isPresent[y / 128][x / 256];
    }
    Element& At(std::uint32_t x, std::uint32_t y) { return m_pixels[std::size_t{y} * kWidth + x]; }

    SRect AnyRect(Random& random) const { return test::AnyRect(random, m_width, m_height); }

    /// The rectangle cut to the store, nothing when it is refused.
    std::optional<SRect> Cut(const SRect& rect) const {
        return test::CutTo(rect, m_width, m_height);
    }

    /// Whether the object holds what the model does in and around the rectangle.
    ::testing::AssertionResult Agrees(const SRect& rect) {
        const std::uint32_t left = rect.x < 2 ? 0 : rect.x - 2;
        const std::uint32_t top = rect.y < 2 ? 0 : rect.y - 2;
        for (std::uint32_t y = top; y < std::min(rect.y + rect.h + 2, kHeight); ++y)
            for (std::uint32_t x = left; x < std::min(rect.x + rect.w + 2, kWidth); ++x) {
                const Element* pixel = m_object.FindPixel(x, y);
                if ((pixel != nullptr) != Has(x, y))
                    return ::testing::AssertionFailure() << x << ", " << y << " missing or not";
                if (pixel != nullptr && pixel->w != At(x, y).w)
                    return ::testing::AssertionFailure() << x << ", " << y << " differs";
            }
        return ::testing::AssertionSuccess();
    }

    ::testing::AssertionResult AgreesEverywhere() { return Agrees({0, 0, kWidth, kHeight}); }

  private:
    Object& m_object;
    std::uint32_t m_width;
    std::uint32_t m_height;
    std::vector<Element> m_pixels;
    bool m_isPresent[3][3] = {};
};

template <class Object>
struct SRectTrial {
    Object& object;
    CModel<Object>& model;
    Random& random;
    SRect rect;
};

/// Runs an operation that puts `perPixel` values a pixel into the store: run(values, pitch) calls
/// it, and store(element, values of one pixel) says what a pixel becomes.
template <class Value, class Object, class AnyValue, class Run, class Put>
void TryInto(SRectTrial<Object> t, std::size_t perPixel, bool isCut, std::uint32_t extraPitch,
             AnyValue anyValue, Run run, Put put) {
    const auto cut = isCut ? t.model.Cut(t.rect) : std::optional(t.rect);
    const SRect area = cut.value_or(SRect{});
    const std::size_t pitch = area.w + extraPitch;
    std::vector<Value> values((pitch * area.h + 1) * perPixel);
    for (Value& value : values)
        value = anyValue();
    const bool isEmpty = t.rect.w == 0 || t.rect.h == 0;
    const Status expected = !isCut && isEmpty ? E_COEF_INVALIDARG : cut ? S_OK : E_FAIL;
    ASSERT_EQ(run(values.data(), static_cast<std::uint32_t>(pitch)), expected);
    for (std::uint32_t j = 0; j < area.h; ++j)
        for (std::uint32_t i = 0; i < area.w; ++i)
            if (t.model.Has(area.x + i, area.y + j))
                put(t.model.At(area.x + i, area.y + j), &values[(j * pitch + i) * perPixel]);
}

/// Runs an operation that takes `perPixel` values a pixel out of the store: missing pixels leave
/// the caller's as they were.
template <class Value, class Object, class Run, class Take>
void TryOutOf(SRectTrial<Object> t, std::size_t perPixel, std::uint32_t extraPitch, Run run,
              Take take) {
    constexpr Value kUntouched{77};
    const auto cut = t.model.Cut(t.rect);
    const SRect area = cut.value_or(SRect{});
    const std::size_t pitch = area.w + extraPitch;
    std::vector<Value> values((pitch * area.h + 1) * perPixel, kUntouched);
    std::vector<Value> expected = values;
    for (std::uint32_t j = 0; j < area.h; ++j)
        for (std::uint32_t i = 0; i < area.w; ++i)
            if (t.model.Has(area.x + i, area.y + j))
                take(t.model.At(area.x + i, area.y + j), &expected[(j * pitch + i) * perPixel]);
    ASSERT_EQ(run(values.data(), static_cast<std::uint32_t>(pitch)), cut ? S_OK : E_FAIL);
    ASSERT_EQ(values, expected);
}

template <class Object>
using RectOperation = std::function<void(SRectTrial<Object>)>;

// Raw elements in: packed or with a pitch.
template <class Object, class Call>
RectOperation<Object> RawIn(Call call, std::uint32_t extraPitch = 0, bool isCut = true) {
    return [=](SRectTrial<Object> t) {
        TryInto<std::uint16_t>(
            t, CModel<Object>::kWords, isCut, extraPitch, [&] { return AnyWord(t.random); },
            [&](const std::uint16_t* words, std::uint32_t pitch) {
                return call(t.object, t.rect, words, pitch);
            },
            [](auto& element, const std::uint16_t* words) {
                std::copy_n(words, element.w.size(), element.w.begin());
            });
    };
}

template <class Object, class Call>
RectOperation<Object> RawOut(Call call, std::uint32_t extraPitch = 0) {
    return [=](SRectTrial<Object> t) {
        TryOutOf<std::uint16_t>(
            t, CModel<Object>::kWords, extraPitch,
            [&](std::uint16_t* words, std::uint32_t pitch) {
                return call(t.object, t.rect, words, pitch);
            },
            [](const auto& element, std::uint16_t* words) {
                std::copy(element.w.begin(), element.w.end(), words);
            });
    };
}

/// The word of a channel as slot 37 has it.
template <class Object>
std::size_t ChannelWord(std::int32_t channel) {
    if constexpr (std::is_same_v<Object, CCNewBrightCorrectCoef>)
        return static_cast<std::size_t>(channel % 3);
    else if constexpr (std::is_same_v<Object, CVirtualGreenBrightCorrectCoef>)
        return static_cast<std::size_t>(channel % 4);
    else
        return static_cast<std::size_t>(channel);
}

/// The operations that every kind has.
template <class Object>
std::vector<RectOperation<Object>> SharedOperations() {
    const auto word = [](const std::uint16_t value) {
        return static_cast<float>(value) / 65535.0F;
    };
    const auto anyChannel = [](Random& random) {
        return static_cast<std::int32_t>(Below(random, CModel<Object>::kWords));
    };
    return {
        [=](SRectTrial<Object> t) { // 7
            const auto channel = static_cast<std::int32_t>(Below(t.random, 9));
            const float value = AnyFloat(t.random);
            const bool isGreen = CModel<Object>::kWords % 4 == 0;
            const auto k = static_cast<std::size_t>(channel % (isGreen ? 4 : 3));
            const bool isEmpty = t.rect.w == 0 || t.rect.h == 0;
            ASSERT_EQ(t.object.FillRectChannel(channel, t.rect.x, t.rect.y, t.rect.w, t.rect.h,
                                               value, 57),
                      !isEmpty);
            const float clamped = std::clamp(std::roundf(value * 65535.0F), 0.0F, 65535.0F);
            for (std::uint32_t y = t.rect.y; y < t.rect.y + t.rect.h; ++y)
                for (std::uint32_t x = t.rect.x; x < t.rect.x + t.rect.w; ++x)
                    if (t.model.Has(x, y))
                        t.model.At(x, y).w[k] = static_cast<std::uint16_t>(clamped);
        },
        [=](SRectTrial<Object> t) { // 15
            const std::int32_t channel = anyChannel(t.random);
            const auto cut = t.model.Cut(t.rect);
            SPixelRect region = t.rect.Edges();
            TryOutOf<float>(
                t, 1, 0,
                [&](float* values, std::uint32_t) {
                    return t.object.GetRectFloatEx(channel, region, values);
                },
                [&](const auto& element, float* value) {
                    *value = word(element.w[ChannelWord<Object>(channel)]);
                });
            ASSERT_EQ(region, cut.value_or(t.rect).Edges());
        },
        [=](SRectTrial<Object> t) { // 29
            const std::int32_t channel = anyChannel(t.random);
            TryInto<float>(
                t, 1, true, 0, [&] { return AnyFloat(t.random); },
                [&](const float* values, std::uint32_t) {
                    return t.object.SetRectChannelFloat(channel, t.rect.x, t.rect.y, t.rect.w,
                                                        t.rect.h, values);
                },
                [&](auto& element, const float* value) {
                    element.w[ChannelWord<Object>(channel)] = static_cast<std::uint16_t>(
                        static_cast<std::int64_t>(std::roundf(*value * 65535.0F)));
                });
        },
        [=](SRectTrial<Object> t) { // 36
            const std::int32_t channel = anyChannel(t.random);
            TryOutOf<float>(
                t, 1, 0,
                [&](float* values, std::uint32_t) {
                    return t.object.GetRectChannelFloat(channel, t.rect.x, t.rect.y, t.rect.w,
                                                        t.rect.h, values);
                },
                [&](const auto& element, float* value) {
                    *value = word(element.w[ChannelWord<Object>(channel)]);
                });
        },
        [=](SRectTrial<Object> t) { // 98
            const std::int32_t channel = anyChannel(t.random);
            TryOutOf<float>(
                t, 1, 5,
                [&](float* values, std::uint32_t pitch) {
                    return t.object.GetRectChannelFloat98(channel, t.rect.x, t.rect.y, t.rect.w,
                                                          t.rect.h, values, pitch);
                },
                [&](const auto& element, float* value) {
                    *value = word(element.w[ChannelWord<Object>(channel)]);
                });
        },
    };
}

/// The float and byte transfers that brightness and chroma have.
template <class Object>
std::vector<RectOperation<Object>> MapKindOperations() {
    return {
        [](SRectTrial<Object> t) { // 20
            const std::uint32_t divisor = 1 + Below(t.random, 300);
            TryInto<std::uint8_t>(
                t, CModel<Object>::kWords, true, 0,
                [&] { return static_cast<std::uint8_t>(Below(t.random, 256)); },
                [&](const std::uint8_t* values, std::uint32_t) {
                    return t.object.SetRectFromBytes(t.rect.x, t.rect.y, t.rect.w, t.rect.h, values,
                                                     divisor);
                },
                [&](auto& element, const std::uint8_t* values) {
                    for (std::size_t k = 0; k < element.w.size(); ++k)
                        element.w[k] = static_cast<std::uint16_t>(values[k] * 65535U / divisor);
                });
        },
        [](SRectTrial<Object> t) { // 22
            TryInto<float>(
                t, 9, true, 0, [&] { return AnyFloat(t.random); },
                [&](const float* values, std::uint32_t) {
                    return t.object.SetRectFromMatrixFloat(t.rect.x, t.rect.y, t.rect.w, t.rect.h,
                                                           values);
                },
                [&](auto& element, const float* values) {
                    const std::size_t step = element.w.size() == 3 ? 4 : 1;
                    for (std::size_t k = 0; k < element.w.size(); ++k)
                        element.w[k] = static_cast<std::uint16_t>(
                            static_cast<std::int32_t>(values[k * step] * 65535.0F));
                });
        },
    };
}

template <class Object>
std::vector<RectOperation<Object>> OwnOperations();

template <>
std::vector<RectOperation<CCNewBrightCorrectCoef>> OwnOperations() {
    using Object = CCNewBrightCorrectCoef;
    auto operations = MapKindOperations<Object>();
    operations.push_back(
        RawOut<Object>([](Object& o, const SRect& r, std::uint16_t* words, std::uint32_t) {
            return o.GetRect3Word(r.x, r.y, r.w, r.h, words);
        }));
    operations.push_back(RawIn<Object>(
        [](Object& o, const SRect& r, const std::uint16_t* words, std::uint32_t pitch) {
            return o.SetRect3WordEx(r.x, r.y, r.w, r.h, words, pitch);
        },
        3));
    operations.push_back(
        RawIn<Object>([](Object& o, const SRect& r, const std::uint16_t* words,
                         std::uint32_t) { return o.SetRect3Word(r.x, r.y, r.w, r.h, words); },
                      0, /*isCut=*/false));
    operations.push_back(RawIn<Object>(
        [](Object& o, const SRect& r, const std::uint16_t* words, std::uint32_t pitch) {
            return o.CopyRectFrom120({words, r.w, r.h, pitch}, r.x, r.y);
        },
        7));
    operations.push_back(RawOut<Object>(
        [](Object& o, const SRect& r, std::uint16_t* words, std::uint32_t pitch) {
            return o.CopyRectOut123(r.x, r.y, {words, r.w, r.h, pitch});
        },
        7));
    operations.push_back([](SRectTrial<Object> t) { // 26
        TryInto<float>(
            t, 3, true, 0, [&] { return AnyFloat(t.random); },
            [&](const float* values, std::uint32_t) {
                return t.object.SetRectFromFloat3(t.rect.x, t.rect.y, t.rect.w, t.rect.h, values);
            },
            [&](auto& element, const float* values) {
                for (std::size_t k = 0; k < 3; ++k)
                    element.w[k] =
                        static_cast<std::uint16_t>(static_cast<std::int32_t>(values[k] * 65535.0F));
            });
    });
    return operations;
}

template <>
std::vector<RectOperation<CCNewChromaCorrectCoef>> OwnOperations() {
    using Object = CCNewChromaCorrectCoef;
    auto operations = MapKindOperations<Object>();
    operations.push_back(
        RawIn<Object>([](Object& o, const SRect& r, const std::uint16_t* words, std::uint32_t) {
            return o.SetRect9WordU16(r.x, r.y, r.w, r.h, words);
        }));
    operations.push_back(
        RawOut<Object>([](Object& o, const SRect& r, std::uint16_t* words, std::uint32_t) {
            return o.GetRect9Word(r.x, r.y, r.w, r.h, words);
        }));
    operations.push_back(RawIn<Object>(
        [](Object& o, const SRect& r, const std::uint16_t* words, std::uint32_t pitch) {
            return o.SetRect9WordEx(r.x, r.y, r.w, r.h, words, pitch);
        },
        3));
    operations.push_back(RawOut<Object>(
        [](Object& o, const SRect& r, std::uint16_t* words, std::uint32_t pitch) {
            return o.TransferRect9WordEx(r.x, r.y, r.w, r.h, words, pitch, /*intoStore=*/false);
        },
        4));
    operations.push_back(RawIn<Object>(
        [](Object& o, const SRect& r, const std::uint16_t* words, std::uint32_t pitch) {
            return o.TransferRect9WordEx(r.x, r.y, r.w, r.h, const_cast<std::uint16_t*>(words),
                                         pitch, /*intoStore=*/true);
        },
        4));
    operations.push_back(
        RawIn<Object>([](Object& o, const SRect& r, const std::uint16_t* words,
                         std::uint32_t) { return o.SetRect9Word(r.x, r.y, r.w, r.h, words); },
                      0, /*isCut=*/false));
    operations.push_back(RawIn<Object>(
        [](Object& o, const SRect& r, const std::uint16_t* words, std::uint32_t pitch) {
            return o.CopyRectFrom119({words, r.w, r.h, pitch}, r.x, r.y);
        },
        7));
    operations.push_back(RawOut<Object>(
        [](Object& o, const SRect& r, std::uint16_t* words, std::uint32_t pitch) {
            return o.CopyRectOut123(r.x, r.y, {words, r.w, r.h, pitch});
        },
        7));
    operations.push_back([](SRectTrial<Object> t) { // 7 through the table; the step starts anew
        static CCaliOperationData reference;
        const std::uint32_t row = 1 + Below(t.random, 56);
        const float step = AnyFloat(t.random) / 10;
        bool isMet = false;
        if (row >= 41)
            reference.SetStep(row, step);
        for (std::uint32_t y = t.rect.y; y < t.rect.y + t.rect.h; ++y)
            for (std::uint32_t x = t.rect.x; x < t.rect.x + t.rect.w; ++x)
                if (t.model.Has(x, y)) {
                    std::uint16_t& word = t.model.At(x, y).w[1];
                    const auto entry = static_cast<std::int32_t>(reference.Row(row)[word]);
                    word = static_cast<std::uint16_t>(std::clamp(entry, 0, 65535));
                    isMet = true;
                }
        ASSERT_EQ(t.object.FillRectChannel(4, t.rect.x, t.rect.y, t.rect.w, t.rect.h, step, row),
                  t.rect.w != 0 && t.rect.h != 0);
        if (isMet && row >= 41) {
            ASSERT_EQ(t.object.TransferTable()->StepValue(), step);
        }
    });
    operations.push_back([](SRectTrial<Object> t) { // 19: missing pixels give their defaults
        const auto cut = t.model.Cut(t.rect);
        const SRect area = cut.value_or(SRect{});
        std::vector<std::uint16_t> words(std::size_t{area.w} * area.h * 10 + 1, 77);
        std::vector<std::uint16_t> expected = words;
        for (std::uint32_t j = 0; j < area.h; ++j)
            for (std::uint32_t i = 0; i < area.w; ++i) {
                const bool isThere = t.model.Has(area.x + i, area.y + j);
                const auto matrix = isThere ? t.model.At(area.x + i, area.y + j) : S9WordCoef{};
                auto* out = &expected[(std::size_t{j} * area.w + i) * 10];
                *std::copy(matrix.w.begin(), matrix.w.end(), out) = 0;
            }
        ASSERT_EQ(t.object.GetRect10Word(t.rect.x, t.rect.y, t.rect.w, t.rect.h, words.data()),
                  cut ? S_OK : E_FAIL);
        ASSERT_EQ(words, expected);
    });
    return operations;
}

template <>
std::vector<RectOperation<CVirtualGreenBrightCorrectCoef>> OwnOperations() {
    using Object = CVirtualGreenBrightCorrectCoef;
    return {
        RawIn<Object>([](Object& o, const SRect& r, const std::uint16_t* words, std::uint32_t) {
            return o.SetRect4WordU16(r.x, r.y, r.w, r.h, words);
        }),
        RawOut<Object>([](Object& o, const SRect& r, std::uint16_t* words, std::uint32_t) {
            return o.GetRect4Word(r.x, r.y, r.w, r.h, words);
        }),
        RawIn<Object>([](Object& o, const SRect& r, const std::uint16_t* words, std::uint32_t) {
            return o.SetRect4WordRaw(r.Edges(), words);
        }),
        RawIn<Object>(
            [](Object& o, const SRect& r, const std::uint16_t* words, std::uint32_t pitch) {
                return o.SetRect4WordVB(r.x, r.y, r.w, r.h, words, pitch);
            },
            2),
    };
}

template <>
std::vector<RectOperation<CVirtualGreenChromaCorrectCoef>> OwnOperations() {
    using Object = CVirtualGreenChromaCorrectCoef;
    return {
        RawIn<Object>([](Object& o, const SRect& r, const std::uint16_t* words, std::uint32_t) {
            return o.SetRect4WordU16(r.x, r.y, r.w, r.h, words);
        }),
        RawIn<Object>(
            [](Object& o, const SRect& r, const std::uint16_t* words, std::uint32_t pitch) {
                return o.SetRect12WordEx(r.x, r.y, r.w, r.h, words, pitch);
            },
            2),
        RawIn<Object>([](Object& o, const SRect& r, const std::uint16_t* words, std::uint32_t) {
            return o.SetRect12WordVC(r.Edges(), words);
        }),
        RawOut<Object>(
            [](Object& o, const SRect& r, std::uint16_t* words, std::uint32_t pitch) {
                return o.CopyRectOut123(r.x, r.y, {words, r.w, r.h, pitch});
            },
            7),
    };
}

template <class Object>
class RectTransfer : public ::testing::Test {};
TYPED_TEST_SUITE(RectTransfer, test::AllKinds);

TYPED_TEST(RectTransfer, DoesAsThePixelsOneByOne) {
#ifdef TREVOLT_ADDRESS_SANITIZER // every operation all the same, in a third of the time
    constexpr unsigned kStores = 8;
#else
    constexpr unsigned kStores = 25;
#endif
    constexpr unsigned kSeedsAStore = 40;
    auto operations = SharedOperations<TypeParam>();
    for (auto& operation : OwnOperations<TypeParam>())
        operations.push_back(operation);
    std::set<std::size_t> tried;
    for (unsigned store = 0; store < kStores; ++store) {
        Random sizes(store);
        TypeParam object;
        CModel<TypeParam> model(object, sizes);
        for (unsigned i = 0; i < kSeedsAStore; ++i) {
            const unsigned seed = 1000 + store * kSeedsAStore + i;
            SCOPED_TRACE(seed);
            Random random(seed);
            const SRect rect = model.AnyRect(random);
            const std::size_t chosen = Below(random, static_cast<std::uint32_t>(operations.size()));
            SCOPED_TRACE(chosen);
            tried.insert(chosen);
            operations[chosen]({object, model, random, rect});
            if (::testing::Test::HasFatalFailure())
                return;
            ASSERT_TRUE(model.Agrees(rect))
                << rect.x << ' ' << rect.y << ' ' << rect.w << ' ' << rect.h;
        }
        ASSERT_TRUE(model.AgreesEverywhere());
    }
    EXPECT_EQ(tried.size(), operations.size());
}

TYPED_TEST(RectTransfer, RefusesWhatIsNoRectangle) {
    TypeParam object;
    test::CreateWithPattern(object, 40, 24);
    const std::wstring before = test::DigestOf(object);
    std::vector<float> values(40 * 24, 0.25F);
    EXPECT_EQ(object.SetRectChannelFloat(0, 0, 0, 40, 24, nullptr), E_FAIL);
    EXPECT_EQ(object.SetRectChannelFloat(0, 0, 0, 0, 24, values.data()), E_FAIL);
    EXPECT_EQ(object.SetRectChannelFloat(0, 0, 0, 40, 0, values.data()), E_FAIL);
    EXPECT_EQ(object.SetRectChannelFloat(0, 41, 0, 1, 1, values.data()), E_FAIL);
    EXPECT_EQ(object.SetRectChannelFloat(0, 0, 25, 1, 1, values.data()), E_FAIL);
    EXPECT_EQ(object.SetRectChannelFloat(0, 0xFFFFFFFF, 0, 0xFFFFFFFF, 1, values.data()), E_FAIL);
    EXPECT_EQ(object.SetRectChannelFloat(-1, 0, 0, 1, 1, values.data()), E_FAIL);
    // On the edge: cut to nothing, and fine.
    EXPECT_EQ(object.SetRectChannelFloat(0, 40, 0, 5, 5, values.data()), S_OK);
    EXPECT_EQ(object.SetRectChannelFloat(0, 0, 24, 5, 5, values.data()), S_OK);
    EXPECT_EQ(test::DigestOf(object), before);
    // A width that no 32-bit sum holds is cut like any other.
    EXPECT_EQ(object.SetRectChannelFloat(0, 38, 22, 0xFFFFFFFF, 0xFFFFFFFF, values.data()), S_OK);
    EXPECT_EQ(test::WordsAt(object, 39, 23)[0], 16384); // round(0.25 × 65535)
    SPixelRect region{-1, 0, 4, 4};
    EXPECT_EQ(object.GetRectFloatEx(0, region, values.data()), E_COEF_INVALIDARG);
}

/// The operations of a kind that take a pitch, each for 10 × 2 elements at (x, 0).
template <class Object>
auto PitchedOperations() {
    using Call = std::function<Status(Object&, std::uint32_t x, std::uint32_t pitch)>;
    static std::vector<std::uint16_t> words(12 * 12 * 3, 1);
    static std::vector<float> floats(12 * 3, 0.5F);
    std::vector<std::pair<int, Call>> calls{{98, [](Object& o, std::uint32_t x, std::uint32_t p) {
                                                 return o.GetRectChannelFloat98(0, x, 0, 10, 2,
                                                                                floats.data(), p);
                                             }}};
    const auto add = [&](int slot, Call call) { calls.emplace_back(slot, std::move(call)); };
    const auto addViewOut = [&] {
        add(123, [](Object& o, std::uint32_t x, std::uint32_t p) {
            return o.CopyRectOut123(x, 0, {words.data(), 10, 2, p});
        });
    };
    if constexpr (std::is_same_v<Object, CCNewBrightCorrectCoef>) {
        add(28, [](Object& o, std::uint32_t x, std::uint32_t p) {
            return o.SetRect3WordEx(x, 0, 10, 2, words.data(), p);
        });
        add(120, [](Object& o, std::uint32_t x, std::uint32_t p) {
            return o.CopyRectFrom120({words.data(), 10, 2, p}, x, 0);
        });
        addViewOut();
    } else if constexpr (std::is_same_v<Object, CCNewChromaCorrectCoef>) {
        add(24, [](Object& o, std::uint32_t x, std::uint32_t p) {
            return o.SetRect9WordEx(x, 0, 10, 2, words.data(), p);
        });
        for (const bool intoStore : {true, false})
            add(30, [intoStore](Object& o, std::uint32_t x, std::uint32_t p) {
                return o.TransferRect9WordEx(x, 0, 10, 2, words.data(), p, intoStore);
            });
        add(119, [](Object& o, std::uint32_t x, std::uint32_t p) {
            return o.CopyRectFrom119({words.data(), 10, 2, p}, x, 0);
        });
        addViewOut();
    } else if constexpr (std::is_same_v<Object, CVirtualGreenBrightCorrectCoef>) {
        add(110, [](Object& o, std::uint32_t x, std::uint32_t p) {
            return o.SetRect4WordVB(x, 0, 10, 2, words.data(), p);
        });
    } else {
        add(11, [](Object& o, std::uint32_t x, std::uint32_t p) {
            return o.SetRect12WordEx(x, 0, 10, 2, words.data(), p);
        });
        addViewOut();
    }
    return calls;
}

// Rows that overlap are refused; what counts is the width that is cut to the store.
TYPED_TEST(RectTransfer, RefusesAPitchBelowTheCutWidth) {
    TypeParam object;
    test::CreateWithPattern(object, 40, 24);
    const std::wstring before = test::DigestOf(object);
    for (const auto& [slot, call] : PitchedOperations<TypeParam>()) {
        for (const std::uint32_t pitch : {0U, 1U, 9U})
            EXPECT_EQ(call(object, 0, pitch), E_COEF_INVALIDARG) << slot;
        EXPECT_EQ(call(object, 33, 6), E_COEF_INVALIDARG) << slot; // seven columns are there
    }
    EXPECT_EQ(test::DigestOf(object), before);
    for (const auto& [slot, call] : PitchedOperations<TypeParam>()) {
        EXPECT_EQ(call(object, 0, 10), S_OK) << slot;
        EXPECT_EQ(call(object, 33, 7), S_OK) << slot;
        EXPECT_EQ(call(object, 40, 0), S_OK) << slot; // cut to nothing
    }
}

TEST(UncutCopies, TellWhatIsMissing) {
    CCNewBrightCorrectCoef bright;
    CCNewChromaCorrectCoef chroma;
    const std::vector<std::uint16_t> words(9, 1);
    for (const bool isCreated : {false, true}) {
        if (isCreated) {
            EXPECT_EQ(bright.Create(4, 4), S_OK);
            EXPECT_EQ(chroma.Create(4, 4), S_OK);
        }
        EXPECT_EQ(bright.SetRect3Word(0, 0, 1, 1, nullptr), E_COEF_NOBUFFER);
        EXPECT_EQ(bright.SetRect3Word(0, 0, 0, 1, words.data()), E_COEF_INVALIDARG);
        EXPECT_EQ(bright.SetRect3Word(0, 0, 1, 0, words.data()), E_COEF_INVALIDARG);
        EXPECT_EQ(chroma.SetRect9Word(0, 0, 1, 1, nullptr), E_COEF_NOBUFFER);
        EXPECT_EQ(chroma.SetRect9Word(0, 0, 0, 1, words.data()), E_COEF_INVALIDARG);
        EXPECT_EQ(chroma.SetRectExtraWord(0, 0, 1, 1, nullptr), E_COEF_NOBUFFER);
        EXPECT_EQ(chroma.SetRectExtraWord(0, 0, 1, 0, words.data()), E_COEF_INVALIDARG);
        // Not cut: pixels past the size but inside the block are written.
        EXPECT_EQ(bright.SetRect3Word(200, 100, 1, 1, words.data()), S_OK);
        EXPECT_EQ(chroma.SetRectExtraWord(200, 100, 1, 1, words.data()), S_OK);
    }
    EXPECT_EQ(bright.FindPixel(200, 100)->w, (std::array<std::uint16_t, 3>{1, 1, 1}));
    EXPECT_EQ(chroma.FindExtraWord(200, 100)->w[0], 1);
    EXPECT_EQ(chroma.FindExtraWord(0, 0)->w[0], 0);
}

TEST(UncutCopies, ExtraWordsPassMissingBlocksOver) {
    CCNewChromaCorrectCoef chroma;
    ASSERT_EQ(chroma.Create(300, 140), S_OK);
    CCaliBuf& extra = *chroma.ExtraStore();
    extra.Clear();
    for (const std::uint32_t index : {0U, 512U, 513U}) { // block 1 is missing
        ASSERT_EQ(extra.AllocateBlock(index, index % 512 * 256, index / 512 * 128), S_OK);
        ASSERT_EQ(extra.FillBlockDefault(index), S_OK);
    }
    std::vector<std::uint16_t> words(20 * 16);
    for (std::size_t i = 0; i < words.size(); ++i)
        words[i] = static_cast<std::uint16_t>(i + 1);
    EXPECT_EQ(chroma.SetRectExtraWord(250, 120, 20, 16, words.data()), S_OK);
    for (std::uint32_t y = 0; y < 16; ++y)
        for (std::uint32_t x = 0; x < 20; ++x) {
            const SWordCoef* const word = chroma.FindExtraWord(250 + x, 120 + y);
            const bool isMissing = x >= 6 && y < 8;
            ASSERT_EQ(word == nullptr, isMissing);
            if (word != nullptr) {
                ASSERT_EQ(word->w[0], y * 20 + x + 1);
            }
        }
    EXPECT_EQ(chroma.FindExtraWord(249, 120)->w[0], 0);
    EXPECT_EQ(chroma.SetPixelExtraWord(256, 120, 5), E_FAIL);
    EXPECT_EQ(chroma.SetPixelExtraWord(255, 120, 5), S_OK);
}

TEST(SetRectFromBytes, RefusesADivisorOfZeroAndScalesExactly) {
    CCNewBrightCorrectCoef bright;
    ASSERT_EQ(bright.Create(1, 1), S_OK);
    const std::array<std::uint8_t, 3> values{100, 50, 1};
    EXPECT_EQ(bright.SetRectFromBytes(0, 0, 1, 1, values.data(), 0), E_COEF_INVALIDARG);
    EXPECT_EQ(bright.SetRectFromBytes(0, 0, 1, 1, values.data(), 100), S_OK);
    EXPECT_EQ(bright.GetPixel3Word(0, 0).w, (std::array<std::uint16_t, 3>{65535, 32767, 655}));
    EXPECT_EQ(bright.SetRectFromBytes(0, 0, 1, 1, values.data(), 50), S_OK); // 2.0 wraps
    EXPECT_EQ(bright.GetPixel3Word(0, 0).w[0], 65534);
}

TEST(UncutCopies, ExtraWordsNeedTheirStore) {
    CCNewChromaCorrectCoef chroma;
    ASSERT_EQ(chroma.Create(4, 4), S_OK);
    const std::uint16_t word = 1;
    chroma.SetExtraStoreOwner(nullptr);
    EXPECT_EQ(chroma.SetRectExtraWord(0, 0, 1, 1, &word), E_COEF_NOBUFFER);
}

// Either store may miss a block that the other has.
TEST(GetRect10Word, GivesDefaultsForTheStoreThatMissesThePixel) {
    CCNewChromaCorrectCoef chroma;
    test::CreateWithPattern(chroma, 700, 2); // blocks 0, 1 and 2
    const auto keep = [](CCaliBuf& store, std::initializer_list<std::uint32_t> blocks) {
        store.Clear();
        for (const std::uint32_t index : blocks) {
            ASSERT_EQ(store.AllocateBlock(index, index * 256, 0), S_OK);
            ASSERT_EQ(store.FillBlockDefault(index), S_OK);
        }
    };
    keep(*chroma.Store(), {0, 2});
    keep(*chroma.ExtraStore(), {0, 1});
    test::FillWithPattern(chroma);
    std::vector<std::uint16_t> words(700 * 2 * 10, 77);
    ASSERT_EQ(chroma.GetRect10Word(0, 0, 700, 2, words.data()), S_OK);
    for (std::uint32_t y = 0; y < 2; ++y)
        for (std::uint32_t x = 0; x < 700; ++x)
            for (std::size_t k = 0; k < 10; ++k) {
                const bool isThere = k == 9 ? x < 512 : x < 256 || x >= 512;
                const std::uint16_t byDefault = k == 0 || k == 4 || k == 8 ? 65535 : 0;
                ASSERT_EQ(words[(y * 700 + x) * 10 + k],
                          isThere ? test::PatternWord(x, y, k) : byDefault)
                    << x << ", " << y << " word " << k;
            }
    // Without the extra-word store every extra word is its default.
    chroma.SetExtraStoreOwner(nullptr);
    ASSERT_EQ(chroma.GetRect10Word(0, 0, 1, 1, words.data()), S_OK);
    EXPECT_EQ(words[8], test::PatternWord(0, 0, 8));
    EXPECT_EQ(words[9], 0);
}

TEST(GetRect10Word, GivesBothStores) {
    CCNewChromaCorrectCoef chroma;
    test::CreateWithPattern(chroma, 300, 2);
    std::vector<std::uint16_t> words(300 * 2 * 10);
    ASSERT_EQ(chroma.GetRect10Word(0, 0, 300, 2, words.data()), S_OK);
    for (std::uint32_t y = 0; y < 2; ++y)
        for (std::uint32_t x = 0; x < 300; ++x)
            for (std::size_t k = 0; k < 10; ++k)
                ASSERT_EQ(words[(y * 300 + x) * 10 + k], test::PatternWord(x, y, k));
}

} // namespace
} // namespace trevolt
