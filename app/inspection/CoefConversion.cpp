#include "app/inspection/CoefConversion.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <utility>

#include <fmt/format.h>

#include "app/inspection/NpyFile.h"
#include "app/rotation/CoefFile.h"
#include "trevolt/TransferProblems.h"
#include "trevolt/Utf8.h"

namespace trevolt {
namespace {

/// The kind whose files store such words or bytes; null for another form.
const SFileKind* FindKindOf(const SElementForm& form) {
    const auto found = std::ranges::find(FileKinds(), form, FormOfKind);
    return found == FileKinds().end() ? nullptr : &*found;
}

class CConversion {
  public:
    CConversion(const std::wstring& source, const SConversionTarget& target)
        : m_source(source), m_target(target) {}

    SConversion Run(const OutputWay& output) {
        Load();
        if (m_result.problems.empty())
            CheckTarget();
        if (m_result.problems.empty())
            Tell();
        if (!m_result.problems.empty())
            return std::move(m_result);
        std::string problem = output([&](const std::wstring& path) { return Write(path); });
        if (!problem.empty())
            m_result.problems.push_back(std::move(problem));
        return std::move(m_result);
    }

  private:
    void Load() {
        if (IsNpyName(m_source))
            LoadArray();
        else
            LoadKind();
    }

    void LoadArray() {
        SNpyLoad load = LoadNpyFile(m_source);
        if (!load.problem.empty())
            m_result.problems.push_back(load.problem);
        m_sourceForm = load.form;
        m_map = std::move(load.map);
        if (m_map != nullptr)
            m_result.size = {m_map->Width(), m_map->Height()};
    }

    void LoadKind() {
        SCoefLoad load = LoadCoefFile(m_source);
        m_result.size = load.size;
        m_result.problems = std::move(load.problems);
        m_result.notes = std::move(load.notes);
        for (const std::string& loss : load.losses)
            m_result.losses.push_back("the converted file lacks " + loss);
        m_map = std::move(load.map);
        if (!m_result.problems.empty())
            return;
        m_sourceForm = FormOfKind(*load.kind);
    }

    void CheckTarget() {
        m_result.form = m_target.kind != nullptr ? FormOfKind(*m_target.kind)
                        : m_target.ownElements   ? ArrayForm(m_sourceForm)
                                                 : kMapForm;
        const bool isIntegerArray =
            IsNpyName(m_source) && m_sourceForm.value != EStoredValue::Float;
        if (m_target.kind == nullptr || !isIntegerArray || m_result.form == m_sourceForm)
            return;
        m_result.problems.push_back(fmt::format(
            "its {} {} a pixel are those of {}: convert it to that kind first, or save values "
            "from 0 to 1 as numpy.float32",
            m_sourceForm.count, ArrayTypeName(m_sourceForm.value),
            WideToShownUtf8(FindKindOf(m_sourceForm)->extension)));
    }

    void Tell() {
        if (!HoldsAllOf(m_sourceForm, m_result.form))
            m_result.lost = CountLosses(*m_map, m_result.form);
        const std::string target =
            m_target.kind == nullptr ? ".npy" : WideToShownUtf8(m_target.kind->extension);
        for (std::string& loss : DescribeLosses(m_result.lost, m_result.form, target))
            m_result.losses.push_back(std::move(loss));
        if (const std::uint64_t count = m_result.lost.defaultPixels; count != 0)
            m_result.notes.push_back(fmt::format("{} the default and {} no line in the text",
                                                 count == 1 ? std::string("1 pixel is")
                                                            : fmt::format("{} pixels are", count),
                                                 count == 1 ? "has" : "have"));
        if (m_target.kind == nullptr)
            return;
        if (std::string note = DescribeDefaultsBeside(m_sourceForm, *m_target.kind); !note.empty())
            m_result.notes.push_back(std::move(note));
    }

    std::string Write(const std::wstring& path) const {
        if (m_target.kind == nullptr)
            return SaveNpyFile(*m_map, m_result.form, path);
        const CTransferReport report;
        const Status status = m_target.kind->save(*m_map, path.c_str());
        return DescribeWriteProblem(status, report);
    }

    const std::wstring& m_source;
    const SConversionTarget& m_target;
    std::unique_ptr<CChromaCorrectCoef> m_map;
    SElementForm m_sourceForm;
    SConversion m_result;
};

} // namespace

SConversion ConvertFile(const std::wstring& source, const SConversionTarget& target,
                        const OutputWay& output) {
    return CConversion(source, target).Run(output);
}

} // namespace trevolt
