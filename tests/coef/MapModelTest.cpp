// Operations through a coefficient map beside a naive model: random rectangles, sizes and files,
// stores of several blocks with some of them missing, and the words that a chroma conversion writes
// behind a rectangle.
#include <algorithm>
#include <cstring>
#include <functional>
#include <map>

#include <gtest/gtest.h>

#include "coef/MapTransfer.h"
#include "formats/BinaryCoefKind.h"
#include "tests/coef/CoefObjects.h"
#include "tests/coef/RandomStores.h"
#include "tests/support/TestFiles.h"
#include "trevolt/BinaryCoefFile.h"
#include "trevolt/PlacedCoefFile.h"
#include "trevolt/RegionCoefFile.h"
#include "trevolt/TextCoefFile.h"
#include "trevolt/TurnedCoefFile.h"

namespace trevolt {
namespace {

using test::Below;
using test::Random;
using test::ReadFile;
using test::SRect;

constexpr std::uint32_t kBlockColumns = 256;
constexpr std::uint32_t kBlockRows = 128;

/// Quick numbers by chance, for millions of words.
class CNumbers {
  public:
    explicit CNumbers(Random& random) : m_state(static_cast<std::uint32_t>(random())) {}

    std::uint16_t Word() {
        m_state = m_state * 1664525U + 1013904223U;
        return static_cast<std::uint16_t>(m_state >> 16);
    }
    /// From −0.5 to below 1.5.
    float Float() { return static_cast<float>(Word()) / 32768.0F - 0.5F; }

  private:
    std::uint32_t m_state;
};

/// Every word of an object's blocks, those past the store's size included.
template <class Object>
class CBlocks {
  public:
    static constexpr std::size_t kWords = test::kWordsOf<Object>;

    /// Gives the object a store of up to three by three blocks, one in four of them missing, and
    /// words by chance.
    CBlocks(Object& object, Random& random)
        : m_object(object), m_width(1 + Below(random, 600)), m_height(1 + Below(random, 300)) {
        EXPECT_EQ(object.Create(static_cast<std::uint16_t>(m_width),
                                static_cast<std::uint16_t>(m_height)),
                  S_OK);
        test::DropSomeBlocks(*object.Store(), random);
        for (const std::uint32_t index : object.Store()->UsedBlocks()) {
            auto& words = m_blocks[index];
            words.resize(std::size_t{kBlockColumns} * kBlockRows * kWords);
            CNumbers numbers(random);
            for (std::uint16_t& word : words)
                word = numbers.Word();
            std::memcpy(object.Store()->Block(index)->pData, words.data(), words.size() * 2);
        }
    }

    std::uint32_t Width() const { return m_width; }
    std::uint32_t Height() const { return m_height; }

    /// The pixels as a map, the default element for missing ones.
    void ToMap(CChromaCorrectCoef& map) const {
        map.Resize(static_cast<std::int32_t>(m_width), static_cast<std::int32_t>(m_height));
        for (std::uint32_t y = 0; y < m_height; ++y)
            for (std::uint32_t x = 0; x < m_width; ++x) {
                const auto block = m_blocks.find(BlockOf(x, y));
                if (block == m_blocks.end())
                    continue;
                SMatrixCoef element;
                for (std::size_t k = 0; k < kWords; ++k)
                    if (const auto value = test::MapValueOf<Object>(k))
                        element.m[*value] =
                            static_cast<float>(block->second[PlaceOf(x, y) + k]) / 65535.0F;
                map.SetElement(x, y, element);
            }
    }

    /// Converts map pixels from (mapX, mapY) on into the rectangle: by columns, twelve words where
    /// an element has nine, none past a block.
    Status Convert(const CChromaCorrectCoef& map, std::int32_t mapX, std::int32_t mapY,
                   const SRect& rect) {
        const auto cut = test::CutTo(rect, m_width, m_height);
        if (!cut)
            return E_FAIL;
        for (std::uint32_t i = 0; i < cut->w; ++i)
            for (std::uint32_t j = 0; j < cut->h; ++j) {
                const auto block = m_blocks.find(BlockOf(cut->x + i, cut->y + j));
                if (block == m_blocks.end())
                    continue;
                const auto& m =
                    map.ElementOrDefault(std::int64_t{mapX} + i, std::int64_t{mapY} + j).m;
                std::size_t at = PlaceOf(cut->x + i, cut->y + j);
                for (std::size_t k = 0; k < (kWords == 9 ? 12 : kWords); ++k, ++at)
                    if (const auto value = test::MapValueOf<Object>(k);
                        value && at < block->second.size())
                        block->second[at] = static_cast<std::uint16_t>(
                            static_cast<std::int32_t>(m[*value] * 65535.0F + 0.5F));
            }
        return S_OK;
    }

    /// As above for a rectangle by its edges, turned over or not.
    Status ConvertEdges(const CChromaCorrectCoef& map, const SPixelRect& rect) {
        if (rect.Width() <= 0 || rect.Height() <= 0)
            return E_FAIL;
        return Convert(map, rect.left, rect.top,
                       {static_cast<std::uint32_t>(rect.left), static_cast<std::uint32_t>(rect.top),
                        static_cast<std::uint32_t>(rect.Width()),
                        static_cast<std::uint32_t>(rect.Height())});
    }

    /// Whether the object has these blocks and no others, and the same words in them.
    ::testing::AssertionResult Agree() const {
        const CCaliBuf& store = *m_object.Store();
        if (store.UsedBlocks().size() != m_blocks.size())
            return ::testing::AssertionFailure() << "other blocks";
        for (const auto& [index, words] : m_blocks) {
            const auto* const held =
                reinterpret_cast<const std::uint16_t*>(store.Block(index)->pData);
            if (std::memcmp(words.data(), held, words.size() * sizeof words[0]) == 0)
                continue;
            const auto [mine, its] = std::mismatch(words.begin(), words.end(), held);
            const auto at = static_cast<std::size_t>(mine - words.begin());
            return ::testing::AssertionFailure()
                   << "block " << index << " place " << at / kWords % kBlockColumns << ", "
                   << at / kWords / kBlockColumns << " word " << at % kWords << ": " << *its
                   << " and not " << *mine;
        }
        return ::testing::AssertionSuccess();
    }

  private:
    static std::uint32_t BlockOf(std::uint32_t x, std::uint32_t y) {
        return y / kBlockRows * 512 + x / kBlockColumns;
    }
    static std::size_t PlaceOf(std::uint32_t x, std::uint32_t y) {
        return (std::size_t{y % kBlockRows} * kBlockColumns + x % kBlockColumns) * kWords;
    }

    Object& m_object;
    std::uint32_t m_width;
    std::uint32_t m_height;
    std::map<std::uint32_t, std::vector<std::uint16_t>> m_blocks;
};

/// A map with values by chance, the trailing ones too.
void MakeAnyMap(CChromaCorrectCoef& map, Random& random, std::uint32_t largestWidth,
                std::uint32_t largestHeight) {
    map.Resize(static_cast<std::int32_t>(1 + Below(random, largestWidth)),
               static_cast<std::int32_t>(1 + Below(random, largestHeight)));
    CNumbers numbers(random);
    for (std::int32_t y = 0; y < map.Height(); ++y)
        for (std::int32_t x = 0; x < map.Width(); ++x)
            for (float& value : map.FindElement(x, y)->m)
                value = numbers.Float();
}

/// What a trial works on: an object, its model, and a place by chance.
template <class Object>
struct SMapTrial {
    Object& object;
    CBlocks<Object>& model;
    Random& random;
    SRect rect;
    const test::CTemporaryFolder& folder;

    std::wstring Path(const wchar_t* name) const { return folder.File(name); }
};

template <class Object>
using MapOperation = std::function<void(SMapTrial<Object>&)>;

/// A binary kind as its writer and its readers have it.
struct SBinaryKind {
    Status (*write)(const CChromaCorrectCoef&, const wchar_t*, const CMassiveGrid*);
    Status (*read)(CChromaCorrectCoef&, const wchar_t*);
    Status (CColorCorrectCoef::*load)(const wchar_t*, std::uint32_t, std::uint32_t);
};
constexpr SBinaryKind kBinaryKinds[] = {
    {Write9fCoefFile, Read9fCoefFile, &CColorCorrectCoef::ImportTable53},
    {Write3fCoefFile, Read3fCoefFile, &CColorCorrectCoef::ImportTable54},
    {Write9bCoefFile, Read9bCoefFile, &CColorCorrectCoef::ImportTable55},
    {Write3bCoefFile, Read3bCoefFile, &CColorCorrectCoef::ImportTable56},
};

/// A file of the kind with a map by chance; `map` becomes what it reads as.
template <class Object>
std::wstring WriteAnyFile(SMapTrial<Object>& t, const SBinaryKind& kind, CChromaCorrectCoef& map) {
    const std::wstring path = t.Path(L"in");
    MakeAnyMap(map, t.random, 350, 60);
    EXPECT_EQ(kind.write(map, path.c_str(), nullptr), S_OK);
    map.FillDefaults();
    EXPECT_GE(kind.read(map, path.c_str()), 0);
    return path;
}

/// Where a file of the map's size goes at the trial's place: it counts no larger than the store.
template <class Object>
SRect PlaceOf(const SMapTrial<Object>& t, const CChromaCorrectCoef& map) {
    return {t.rect.x, t.rect.y, std::min<std::uint32_t>(map.Width(), t.model.Width()),
            std::min<std::uint32_t>(map.Height(), t.model.Height())};
}

/// Loads of a whole binary file to a place.
template <class Object>
void AddBinaryLoads(std::vector<MapOperation<Object>>& operations) {
    for (const SBinaryKind& kind : kBinaryKinds) {
        operations.push_back([&kind](SMapTrial<Object>& t) { // 53 to 56
            CChromaCorrectCoef map;
            const std::wstring path = WriteAnyFile(t, kind, map);
            ASSERT_EQ((t.object.*kind.load)(path.c_str(), t.rect.x, t.rect.y),
                      t.model.Convert(map, 0, 0, PlaceOf(t, map)));
        });
        operations.push_back([&kind](SMapTrial<Object>& t) { // 78
            CChromaCorrectCoef map;
            const std::wstring path = WriteAnyFile(t, kind, map);
            SPixelRect rect = t.rect.Edges();
            const Status expected = t.model.Convert(map, 0, 0, PlaceOf(t, map));
            ASSERT_EQ(t.object.LoadLegacyEx(path.c_str(), rect), expected);
            SPixelRect wanted = t.rect.Edges();
            if (expected == S_OK) {
                wanted.right =
                    std::min(wanted.left + map.Width(), static_cast<std::int32_t>(t.model.Width()));
                wanted.bottom = std::min(wanted.top + map.Height(),
                                         static_cast<std::int32_t>(t.model.Height()));
            }
            ASSERT_EQ(rect, wanted);
        });
        operations.push_back([&kind](SMapTrial<Object>& t) { // 79
            CChromaCorrectCoef map;
            const std::wstring path = WriteAnyFile(t, kind, map);
            t.rect.x = t.rect.y = 0;
            ASSERT_EQ(t.object.LoadLegacy(path.c_str()),
                      t.model.Convert(map, 0, 0, PlaceOf(t, map)));
        });
    }
    operations.push_back([](SMapTrial<Object>& t) { // the object's own float kind
        CChromaCorrectCoef map;
        const bool kIsBright = std::is_same_v<Object, CCNewBrightCorrectCoef>;
        const std::wstring path = WriteAnyFile(t, kBinaryKinds[kIsBright ? 1 : 0], map);
        ASSERT_EQ(t.object.LoadCoefRect(path.c_str(), t.rect.x, t.rect.y),
                  t.model.Convert(map, 0, 0, PlaceOf(t, map)));
    });
}

/// Files placed over what the store has, entry by entry.
template <class Object, class Kind>
void AddPlacedLoad(std::vector<MapOperation<Object>>& operations, const SBinaryKind& kind,
                   Status (CColorCorrectCoef::*import)(const wchar_t*, SPixelRect&, bool,
                                                       const bool*),
                   Status (*place)(CChromaCorrectCoef&, const wchar_t*, SPixelRect&, bool,
                                   const typename Kind::EntryMask&)) {
    operations.push_back([=, &kind](SMapTrial<Object>& t) {
        CChromaCorrectCoef map;
        const std::wstring path = WriteAnyFile(t, kind, map);
        typename Kind::EntryMask mask{};
        for (bool& entry : mask)
            entry = Below(t.random, 2) != 0;
        const bool clip = Below(t.random, 2) != 0;
        t.model.ToMap(map);
        SPixelRect wanted = t.rect.Edges();
        Status expected = place(map, path.c_str(), wanted, clip, mask);
        if (expected == S_OK)
            expected = t.model.ConvertEdges(map, wanted);
        SPixelRect rect = t.rect.Edges();
        ASSERT_EQ((t.object.*import)(path.c_str(), rect, clip, mask.data()), expected);
        ASSERT_EQ(rect, expected == S_OK ? wanted : t.rect.Edges());
    });
}

template <class Object>
void AddPlacedLoads(std::vector<MapOperation<Object>>& operations) {
    AddPlacedLoad<Object, S9fCoefKind>(operations, kBinaryKinds[0],
                                       &CColorCorrectCoef::ImportTable49, Place9fCoefFile);
    AddPlacedLoad<Object, S3fCoefKind>(operations, kBinaryKinds[1],
                                       &CColorCorrectCoef::ImportTable50, Place3fCoefFile);
    AddPlacedLoad<Object, S9bCoefKind>(operations, kBinaryKinds[2],
                                       &CColorCorrectCoef::ImportTable51, Place9bCoefFile);
    AddPlacedLoad<Object, S3bCoefKind>(operations, kBinaryKinds[3],
                                       &CColorCorrectCoef::ImportTable52, Place3bCoefFile);
    operations.push_back([](SMapTrial<Object>& t) { // 96 and 97
        constexpr bool kIsBright = std::is_same_v<Object, CCNewBrightCorrectCoef>;
        CChromaCorrectCoef map;
        const std::wstring path = WriteAnyFile(t, kBinaryKinds[kIsBright ? 1 : 0], map);
        t.model.ToMap(map);
        SPixelRect rect = t.rect.Edges();
        const auto x = rect.left;
        const auto y = rect.top;
        if constexpr (kIsBright) {
            ASSERT_EQ(Place3fCoefFile(map, path.c_str(), rect, false, {true, false, true}), S_OK);
            const bool mask[] = {true, false, true};
            ASSERT_EQ(t.object.LoadLegacy96(path.c_str(), x, y, mask),
                      t.model.ConvertEdges(map, rect));
        } else {
            const S9fCoefKind::EntryMask mask{true, false, false, true, false, true};
            ASSERT_EQ(Place9fCoefFile(map, path.c_str(), rect, false, mask), S_OK);
            ASSERT_EQ(t.object.LoadLegacy97(path.c_str(), x, y, mask.data()),
                      t.model.ConvertEdges(map, rect));
        }
    });
}

/// Diagonals and texts.
template <class Object>
void AddOtherLoads(std::vector<MapOperation<Object>>& operations) {
    const auto diagonal = [](SMapTrial<Object>& t, const SBinaryKind& kind, auto load, auto read) {
        CChromaCorrectCoef map;
        const std::wstring path = WriteAnyFile(t, kind, map);
        t.rect.x = t.rect.y = 0;
        const SRect place = PlaceOf(t, map);
        t.model.ToMap(map);
        ASSERT_EQ(read(map, path.c_str()), S_OK);
        ASSERT_EQ(load(path.c_str()), t.model.Convert(map, 0, 0, place));
    };
    operations.push_back([=](SMapTrial<Object>& t) { // 57
        diagonal(
            t, kBinaryKinds[0], [&](auto* path) { return t.object.ImportTable57(path, nullptr); },
            [](auto& map, auto* path) { return ReadDiagonal9fCoefFile(map, path, nullptr); });
    });
    operations.push_back([=](SMapTrial<Object>& t) { // 58
        diagonal(
            t, kBinaryKinds[2], [&](auto* path) { return t.object.ImportTable58(path); },
            [](auto& map, auto* path) { return ReadDiagonal9bCoefFile(map, path); });
    });
    for (const bool diagonalOnly : {false, true})
        operations.push_back([=](SMapTrial<Object>& t) { // 47 and 48
            const std::wstring path = t.Path(L"in.cccoef");
            CChromaCorrectCoef map;
            MakeAnyMap(map, t.random, 100, 40);
            ASSERT_EQ(WriteTextCoefFile(map, path.c_str(), nullptr), S_OK);
            std::uint32_t width = 0;
            std::uint32_t height = 0;
            ASSERT_EQ(ReadTextCoefFile(map, path.c_str(), 0, 0, width, height, diagonalOnly), S_OK);
            const auto load = diagonalOnly ? &CColorCorrectCoef::LoadFromTextB
                                           : &CColorCorrectCoef::LoadFromTextA;
            const SPixelRect edges = t.rect.Edges();
            const Status expected = t.model.Convert(map, 0, 0, PlaceOf(t, map));
            width = height = 0;
            ASSERT_EQ((t.object.*load)(path.c_str(), edges.left, edges.top, width, height),
                      expected);
            ASSERT_EQ(width, expected == S_OK ? map.Width() : 0U);
            ASSERT_EQ(height, expected == S_OK ? map.Height() : 0U);
        });
}

/// Saves: the file is what the map writer makes of the model's pixels.
template <class Object>
void AddSave(std::vector<MapOperation<Object>>& operations,
             std::function<Status(Object&, const wchar_t*, const SPixelRect&, std::uint32_t)> save,
             std::function<Status(const CChromaCorrectCoef&, const wchar_t*, const SPixelRect&,
                                  std::uint32_t)>
                 write) {
    operations.push_back([=](SMapTrial<Object>& t) {
        CChromaCorrectCoef map;
        t.model.ToMap(map);
        const std::wstring out = t.Path(L"out");
        const std::wstring expected = t.Path(L"expected");
        const std::uint32_t mode = 1 + Below(t.random, 3);
        const SPixelRect rect = t.rect.Edges();
        const Status status = write(map, expected.c_str(), rect, mode);
        ASSERT_EQ(save(t.object, out.c_str(), rect, mode), status);
        if (status == S_OK) {
            ASSERT_EQ(ReadFile(out), ReadFile(expected));
        }
    });
}

template <class Object>
void AddSaves(std::vector<MapOperation<Object>>& operations) {
    using Region = Status (CColorCorrectCoef::*)(const wchar_t*, const SPixelRect&);
    using WriteRegion = Status (*)(const CChromaCorrectCoef&, const wchar_t*, const SPixelRect&);
    const std::pair<Region, WriteRegion> regions[] = {
        {&CColorCorrectCoef::SaveCoefKind72, WriteRegion9fCoefFile},
        {&CColorCorrectCoef::SaveCoefKind73, WriteRegion3fCoefFile},
        {&CColorCorrectCoef::SaveCoefKind74, WriteRegion9bCoefFile},
        {&CColorCorrectCoef::SaveCoefKind75, WriteRegion3bCoefFile}};
    for (const auto& [save, write] : regions)
        AddSave<Object>(
            operations,
            [save = save](Object& o, auto* path, auto& rect, auto) {
                return (o.*save)(path, rect);
            },
            [write = write](auto& map, auto* path, auto& rect, auto) {
                return write(map, path, rect);
            });
    using Turned = Status (CColorCorrectCoef::*)(const wchar_t*, const SPixelRect&, std::uint32_t);
    using WriteTurned =
        Status (*)(const CChromaCorrectCoef&, const wchar_t*, const SPixelRect&, std::uint32_t);
    constexpr bool kIsBright = std::is_same_v<Object, CCNewBrightCorrectCoef>;
    const std::pair<Turned, WriteTurned> turned[] = {
        {&CColorCorrectCoef::SaveLegacy81, WriteTurned9fCoefFile},
        kIsBright ? std::pair<Turned, WriteTurned>{&CColorCorrectCoef::SaveLegacy83,
                                                   WriteTurned3bCoefFile}
                  : std::pair<Turned, WriteTurned>{&CColorCorrectCoef::SaveLegacy82,
                                                   WriteTurned9bCoefFile},
        {&CColorCorrectCoef::SaveLegacy84, WriteTurned3fCoefFile}};
    for (const auto& [save, write] : turned)
        AddSave<Object>(
            operations,
            [save = save](Object& o, auto* path, auto& rect, auto mode) {
                return (o.*save)(path, rect, mode);
            },
            write);
    AddSave<Object>(
        operations, [](Object& o, auto* path, auto&, auto) { return o.SaveLegacy85(path); },
        [](auto& map, auto* path, auto&, auto) { return Write3fCoefFile(map, path, nullptr); });
    AddSave<Object>(
        operations,
        [](Object& o, auto* path, auto&, auto) {
            return kIsBright ? o.SaveCoefKind77(path) : o.SaveCoefKind76(path);
        },
        [](auto& map, auto* path, auto&, auto) { return WriteTextCoefFile(map, path, nullptr); });
}

/// Runs every operation `roundsAStore` times on each of `stores` stores.
template <class Object>
void RunTrials(const std::vector<MapOperation<Object>>& operations, unsigned stores,
               unsigned roundsAStore) {
    const test::CTemporaryFolder folder;
    for (unsigned store = 0; store < stores; ++store) {
        Random random(store);
        Object object;
        CBlocks<Object> model(object, random);
        for (unsigned round = 0; round < roundsAStore; ++round)
            for (std::size_t i = 0; i < operations.size(); ++i) {
                const SRect rect = test::AnyRect(random, model.Width(), model.Height());
                SCOPED_TRACE(::testing::Message() << "store " << store << ", " << model.Width()
                                                  << " x " << model.Height() << ", round " << round
                                                  << ", operation " << i << " at " << rect.x << ' '
                                                  << rect.y << ' ' << rect.w << ' ' << rect.h);
                SMapTrial<Object> trial{object, model, random, rect, folder};
                operations[i](trial);
                if (::testing::Test::HasFatalFailure())
                    return;
                ASSERT_TRUE(model.Agree());
            }
    }
}

template <class Object>
class MapModel : public ::testing::Test {};
TYPED_TEST_SUITE(MapModel, test::MapKinds);

TYPED_TEST(MapModel, ViewsAndWords) {
    const std::vector<MapOperation<TypeParam>> operations{
        [](SMapTrial<TypeParam>& t) { // 67
            CChromaCorrectCoef map;
            MakeAnyMap(map, t.random, 250, 50);
            ASSERT_EQ(t.object.ImportFromView(&map, t.rect.Edges()),
                      t.model.Convert(map, 0, 0, t.rect));
        },
        [](SMapTrial<TypeParam>& t) { // 68
            const auto cut = test::CutTo(t.rect, t.model.Width(), t.model.Height());
            const SRect area = cut.value_or(SRect{});
            std::vector<std::uint16_t> words(std::size_t{area.w} * area.h * 9 + 1);
            CNumbers numbers(t.random);
            for (std::uint16_t& word : words)
                word = numbers.Word();
            CChromaCorrectCoef map;
            map.Resize(static_cast<std::int32_t>(area.w), static_cast<std::int32_t>(area.h));
            for (std::uint32_t y = 0; y < area.h; ++y)
                for (std::uint32_t x = 0; x < area.w; ++x)
                    for (std::size_t k = 0; k < 9; ++k)
                        map.FindElement(x, y)->m[k] =
                            static_cast<float>(words[(std::size_t{y} * area.w + x) * 9 + k]) /
                            65535.0F;
            ASSERT_EQ(
                t.object.ImportFromWords(t.rect.x, t.rect.y, t.rect.w, t.rect.h, words.data()),
                t.model.Convert(map, 0, 0, t.rect));
        },
    };
    RunTrials(operations, 12, 8);
}

TYPED_TEST(MapModel, LoadedFiles) {
    std::vector<MapOperation<TypeParam>> operations;
    AddBinaryLoads(operations);
    AddPlacedLoads(operations);
    AddOtherLoads(operations);
    RunTrials(operations, 3, 1);
}

TYPED_TEST(MapModel, SavedFiles) {
    std::vector<MapOperation<TypeParam>> operations;
    AddSaves(operations);
    RunTrials(operations, 3, 1);
}

// The pair that every kind has, and the map behind it.
template <class Object>
class MapModelOfAll : public ::testing::Test {};
TYPED_TEST_SUITE(MapModelOfAll, test::AllKinds);

TYPED_TEST(MapModelOfAll, LegacyPair) {
    std::vector<MapOperation<TypeParam>> operations{
        [](SMapTrial<TypeParam>& t) { // 80
            CChromaCorrectCoef map;
            const std::wstring path = WriteAnyFile(t, kBinaryKinds[0], map);
            t.model.ToMap(map);
            SPixelRect rect;
            ASSERT_EQ(Place9fCoefFile(map, path.c_str(), rect, false, S9fCoefKind::AllEntries()),
                      S_OK);
            ASSERT_EQ(t.object.LoadLegacy80(path.c_str()), t.model.ConvertEdges(map, rect));
        },
        [](SMapTrial<TypeParam>& t) { // what all the saves go through, over missing blocks
            CChromaCorrectCoef map;
            CChromaCorrectCoef expected;
            using Element = test::ElementOf<TypeParam>;
            ASSERT_EQ(StoreToMap<Element>(t.object.Store(), map), S_OK);
            t.model.ToMap(expected);
            ASSERT_EQ(map.Width(), expected.Width());
            ASSERT_EQ(map.Height(), expected.Height());
            for (std::int32_t y = 0; y < map.Height(); ++y)
                for (std::int32_t x = 0; x < map.Width(); ++x)
                    ASSERT_TRUE(std::equal(map.FindElement(x, y)->m.begin(),
                                           map.FindElement(x, y)->m.begin() + 9,
                                           expected.FindElement(x, y)->m.begin()))
                        << x << ", " << y;
        }};
    AddSave<TypeParam>(
        operations, [](auto& o, auto* path, auto&, auto) { return o.SaveLegacy86(path); },
        [](auto& map, auto* path, auto&, auto) { return Write9fCoefFile(map, path, nullptr); });
    RunTrials(operations, 4, 1);
}

} // namespace
} // namespace trevolt
