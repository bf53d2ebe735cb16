#include "trevolt/CaliOperationData.h"

#include <algorithm>
#include <cmath>
#include <mutex>
#include <utility>
#include <vector>

#include "trevolt/FixedPoint.h"

namespace trevolt {
namespace {

constexpr std::uint32_t kLength = CCaliOperationData::kRowLength;
constexpr double kTopLevel = kFullScale;
constexpr float kOneSixtyThird = 0.015873017F;
constexpr float kOneTwoHundredFiftyFifth = 0.003921569F;

/// What the step value is divided by in each pair of step rows.
constexpr std::array kStepDivisors{1.0F, 14.0F, 40.0F, 65535.0F, 63.0F, 15.0F, 240.0F, 255.0F};
static_assert(kStepDivisors.size() == CCaliOperationData::kStepPairCount);

/// A row's rule: how an input level becomes a candidate before rounding.
struct RowRule {
    enum Form { kAdd, kMultiply, kAddFloat } form;
    double value;
};

constexpr RowRule Add(double value) { return {RowRule::kAdd, value}; }
constexpr RowRule Multiply(double value) { return {RowRule::kMultiply, value}; }
constexpr RowRule AddFloat(float value) { return {RowRule::kAddFloat, value}; }

/// Rows 0 to 40.
constexpr std::array<RowRule, CCaliOperationData::kFirstStepRow> kFixedRules{
    Add(0.0),
    // 1 to 3
    Add(0.02 * kTopLevel),
    Add(0.01 * kTopLevel),
    Add(0.005 * kTopLevel),
    // 4 to 6
    Multiply(1.05),
    Multiply(1.02),
    Multiply(1.01),
    // 7, 8
    AddFloat(kFullScaleFloat* kOneSixtyThird),
    AddFloat(kFullScaleFloat* kOneTwoHundredFiftyFifth),
    // 9 to 11
    Add(-(0.02 * kTopLevel)),
    Add(-(0.01 * kTopLevel)),
    Add(-(0.005 * kTopLevel)),
    // 12 to 14
    Multiply(0.95),
    Multiply(0.98),
    Multiply(0.99),
    // 15, 16
    AddFloat(-(kFullScaleFloat* kOneSixtyThird)),
    AddFloat(-(kFullScaleFloat* kOneTwoHundredFiftyFifth)),
    // 17 to 22
    Add(kTopLevel / 28),
    Add(kTopLevel / 70),
    Add(kTopLevel / 140),
    Add(kTopLevel / 280),
    Add(kTopLevel / 700),
    Add(kTopLevel / 1400),
    // 23 to 28
    Add(-(kTopLevel / 28)),
    Add(-(kTopLevel / 70)),
    Add(-(kTopLevel / 140)),
    Add(-(kTopLevel / 280)),
    Add(-(kTopLevel / 700)),
    Add(-(kTopLevel / 1400)),
    // 29, 30
    Add(0.025 * kTopLevel),
    Add(-(0.025 * kTopLevel)),
    // 31, 32
    Add(1),
    Add(-1),
    // 33, 34
    Add(kTopLevel*(1.0 / 63.0)),
    Add(-(kTopLevel*(1.0 / 63.0))),
    // 35, 36
    Add(kTopLevel / 15),
    Add(-(kTopLevel / 15)),
    // 37, 38
    Add(kTopLevel / 240),
    Add(-(kTopLevel / 240)),
    // 39, 40
    Add(kTopLevel*(1.0 / 255.0)),
    Add(-(kTopLevel*(1.0 / 255.0))),
};

double Unrounded(const RowRule& rule, std::uint32_t level) {
    switch (rule.form) {
    case RowRule::kMultiply:
        return static_cast<double>(level) * rule.value;
    case RowRule::kAddFloat:
        return static_cast<double>(static_cast<float>(level) + static_cast<float>(rule.value));
    case RowRule::kAdd:
        break;
    }
    return static_cast<double>(level) + rule.value;
}

void FillRow(const RowRule& rule, std::uint32_t* row) {
    for (std::uint32_t level = 0; level < kLength; ++level)
        row[level] =
            static_cast<std::uint32_t>(TruncateToInt64(std::round(Unrounded(rule, level))));
}

using FixedRows = std::array<std::uint32_t, std::size_t{kFixedRules.size()} * kLength>;

const FixedRows& SharedRows() {
    static const std::unique_ptr<const FixedRows> rows = [] {
        auto computed = std::make_unique<FixedRows>();
        for (std::size_t row = 0; row < kFixedRules.size(); ++row)
            FillRow(kFixedRules[row], computed->data() + row * kLength);
        return computed;
    }();
    return *rows;
}

/// Where the pairs of gone tables wait for the next table.
class CSparePairs {
  public:
    static CSparePairs& Process() {
        // Never destroyed, so that a table of static duration may go after everything else.
        static CSparePairs& spares = *new CSparePairs;
        return spares;
    }

    std::unique_ptr<CCaliOperationData::RowPair> Take() {
        const std::lock_guard lock(m_mutex);
        if (m_pairs.empty()) {
            m_pairs.reserve(++m_made); // so that Leave never allocates
            return std::make_unique<CCaliOperationData::RowPair>();
        }
        auto pair = std::move(m_pairs.back());
        m_pairs.pop_back();
        return pair;
    }

    void Leave(std::unique_ptr<CCaliOperationData::RowPair> pair) {
        const std::lock_guard lock(m_mutex);
        m_pairs.push_back(std::move(pair));
    }

    std::size_t Count() {
        const std::lock_guard lock(m_mutex);
        return m_pairs.size();
    }

  private:
    std::mutex m_mutex;
    std::vector<std::unique_ptr<CCaliOperationData::RowPair>> m_pairs;
    std::size_t m_made = 0;
};

} // namespace

CCaliOperationData::~CCaliOperationData() {
    for (auto& pair : m_ownPairs)
        if (pair)
            CSparePairs::Process().Leave(std::move(pair));
}

std::span<const std::uint32_t, CCaliOperationData::kRowLength>
CCaliOperationData::Row(std::uint32_t row) const {
    if (!IsStepRow(row))
        return std::span<const std::uint32_t, kRowLength>(
            SharedRows().data() + std::size_t{row} * kRowLength, kRowLength);
    const auto& own = m_ownPairs[(row - kFirstStepRow) / 2];
    if (!own)
        return Row(0);
    return std::span<const std::uint32_t, kRowLength>(
        own->data() + std::size_t{(row - kFirstStepRow) % 2} * kRowLength, kRowLength);
}

std::uint16_t CCaliOperationData::ClampedEntry(std::uint32_t entry) {
    return static_cast<std::uint16_t>(
        std::clamp<std::int32_t>(static_cast<std::int32_t>(entry), 0, kFullScale));
}

void CCaliOperationData::SetStep(std::uint32_t row, float step) {
    m_step = step;
    const std::uint32_t index = (row - kFirstStepRow) / 2;
    auto& pair = m_ownPairs[index];
    if (!pair)
        pair = CSparePairs::Process().Take();
    const float offset = step / kStepDivisors[index] * kFullScaleFloat;
    FillRow(AddFloat(offset), pair->data());
    FillRow(AddFloat(-offset), pair->data() + kRowLength);
}

std::size_t CCaliOperationData::SparePairCount() { return CSparePairs::Process().Count(); }

} // namespace trevolt
