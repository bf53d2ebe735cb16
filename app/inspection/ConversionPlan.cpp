#include "app/inspection/ConversionPlan.h"

#include <map>
#include <set>
#include <string_view>
#include <utility>

#include <fmt/format.h>

#include "app/inspection/NpyFile.h"
#include "app/rotation/CoefFile.h"
#include "app/rotation/CoefFileSearch.h"
#include "app/rotation/NameOrder.h"
#include "app/rotation/Obstacles.h"
#include "common/TextConversion.h"
#include "platform/FileSystem.h"
#include "trevolt/Utf8.h"

namespace trevolt {
namespace {

constexpr std::wstring_view kNpyExtension = L".npy";

bool IsConvertedToKind(std::wstring_view name) { return IsNpyName(name) || IsCoefFileName(name); }
bool IsConvertedToArray(std::wstring_view name) { return !IsNpyName(name) && IsCoefFileName(name); }

/// What a file's name tells; nothing when it tells no kind, or another one when the file is read than
/// when it is written.
std::optional<SFormName> FormOfName(std::wstring_view name) {
    if (IsNpyName(name))
        return SFormName{};
    const SFileKind* const kind = FindOwnKind(name);
    return kind == nullptr ? std::nullopt : std::optional(SFormName{kind});
}

std::size_t PlaceOf(std::wstring_view extension, const std::wstring& name) {
    return ToLowerAscii(name).rfind(extension);
}

/// An array of a name that holds an extension, wherever, would be taken for a coefficient file by a later
/// run: of a name with several none stays.
std::wstring NameAsArray(std::wstring name) {
    while (const SFileKind* const kind = FindLoadKind(name))
        name.erase(PlaceOf(kind->extension, name), kind->extension.size());
    return name.append(kNpyExtension);
}

/// `name`, which tells what it is of, with another extension in place of its own. What follows stays, as
/// it does in a turn; only an array's stands at the end.
std::wstring NameAs(std::wstring name, const SFormName& form) {
    if (form.kind == nullptr)
        return NameAsArray(std::move(name));
    const std::wstring_view own = IsNpyName(name) ? kNpyExtension : FindLoadKind(name)->extension;
    return name.replace(PlaceOf(own, name), own.size(), form.kind->extension);
}

class CConversionPlanner {
  public:
    explicit CConversionPlanner(const SConversionRequest& request) : m_request(request) {}

    SConversionPlan Run() {
        if (m_request.to)
            CheckTargetFolder();
        else
            CheckSingle();
        if (m_plan.obstacles.empty())
            FindSources();
        if (m_plan.obstacles.empty())
            NameOutputs();
        if (m_plan.obstacles.empty() && m_request.to) {
            CheckOutputsDiffer();
            CheckNoSourceIsReplaced();
        }
        return std::move(m_plan);
    }

  private:
    void CheckTargetFolder() {
        const std::string shown = WideToShownUtf8(m_request.output);
        if (PathExists(m_request.output) && !IsFolder(m_request.output))
            m_plan.obstacles.push_back(
                fmt::format("the target {} is not a folder: choose another", shown));
        if (m_request.ownElements && m_request.to->kind != nullptr)
            RefuseOwnElements();
    }

    /// Of one file, whose output has its own name.
    void CheckSingle() {
        const std::string shown = WideToShownUtf8(m_request.output);
        m_form = FormOfName(NameOfOutput());
        if (m_request.sources.size() != 1 || IsFolder(m_request.sources.front()) ||
            IsFolder(m_request.output))
            m_plan.obstacles.emplace_back("one file becomes another; for several, for a folder of "
                                          "them and into a folder, give "
                                          "the kind of the outputs with --to");
        else if (!m_form)
            m_plan.obstacles.push_back(fmt::format("the name {} does not tell which kind of file "
                                                   "it is to be: end it in .npy or in the "
                                                   "extension of one kind",
                                                   shown));
        else if (m_form->kind == nullptr &&
                 IsCoefFileName(NameOfOutput())) // a later run would take it
            m_plan.obstacles.push_back(fmt::format(
                "the output {} has the name of a coefficient file: choose another name", shown));
        else if (m_request.ownElements && m_form->kind != nullptr)
            RefuseOwnElements();
    }

    void RefuseOwnElements() {
        m_plan.obstacles.emplace_back(
            "own elements are for .npy files alone: a kind has its own always");
    }

    std::wstring NameOfOutput() const {
        return m_request.output.substr(FolderPart(m_request.output).size());
    }

    void FindSources() {
        const bool isToArray = m_request.to && m_request.to->kind == nullptr;
        SCoefFiles found = FindCoefFiles({m_request.sources, m_request.recursive,
                                          m_request.to ? m_request.output : std::wstring(),
                                          isToArray ? IsConvertedToArray : IsConvertedToKind});
        m_plan.unnamable = std::move(found.unnamable);
        m_plan.obstacles = std::move(found.obstacles);
        m_plan.isListingBroken = found.isListingBroken;
        for (const SCoefFileName& file : found.files)
            m_plan.files.push_back({file.Path(), file.name, {}, {}});
        if (m_plan.files.empty() && m_plan.unnamable.empty() && m_plan.obstacles.empty())
            m_plan.obstacles.emplace_back("there is no file to convert in the sources");
    }

    void NameOutputs() {
        if (!m_request.to) {
            SPlannedConversion& file = m_plan.files.front();
            file.outputName = m_request.output;
            file.target = {m_form->kind, m_request.ownElements};
            return;
        }
        CObstacles obstacles(m_plan.obstacles);
        for (SPlannedConversion& file : m_plan.files) {
            const std::size_t folderLength = file.name.rfind(kFolderSlash) + 1; // npos + 1 is 0
            const std::wstring name = NameAs(file.name.substr(folderLength), *m_request.to);
            file.outputName = file.name.substr(0, folderLength) + name;
            file.target = {m_request.to->kind, m_request.ownElements};
            const auto told = FormOfName(name);
            if (!told || told->kind != m_request.to->kind)
                obstacles.Add(fmt::format("{} would become {}, which tells another kind: rename it",
                                          WideToShownUtf8(file.path),
                                          WideToShownUtf8(file.outputName)));
        }
    }

    void CheckOutputsDiffer() {
        CObstacles obstacles(m_plan.obstacles);
        std::map<std::wstring_view, const SPlannedConversion*, SNameOrder> named;
        for (const SPlannedConversion& file : m_plan.files) {
            const auto [place, isNew] = named.try_emplace(file.outputName, &file);
            if (!isNew)
                obstacles.Add(
                    fmt::format("{} and {} would both become {}: give each a target of its own",
                                WideToShownUtf8(place->second->path), WideToShownUtf8(file.path),
                                WideToShownUtf8(file.outputName)));
        }
    }

    void CheckNoSourceIsReplaced() {
        CObstacles obstacles(m_plan.obstacles);
        std::set<EntryIdentity> sources;
        for (const SPlannedConversion& file : m_plan.files)
            for (const EIdentified identified : {EIdentified::Link, EIdentified::WhereItLeads})
                if (const auto entry = IdentityOf(file.path, identified))
                    sources.insert(*entry);
        for (const SPlannedConversion& file : m_plan.files)
            if (const auto entry = IdentityOf(WithSeparator(m_request.output) + file.outputName);
                entry && sources.contains(*entry))
                obstacles.Add(
                    fmt::format("the output {} of {} is one of the sources: choose another target",
                                WideToShownUtf8(file.outputName), WideToShownUtf8(file.path)));
    }

    const SConversionRequest& m_request;
    std::optional<SFormName> m_form; ///< of the output of one file
    SConversionPlan m_plan;
};

} // namespace

std::optional<SFormName> FindFormName(std::wstring_view word) {
    const std::wstring lowered = ToLowerAscii(word.starts_with(L'.') ? word.substr(1) : word);
    if (lowered == kNpyExtension.substr(1))
        return SFormName{};
    for (const SFileKind& kind : FileKinds())
        if (lowered == kind.extension.substr(1))
            return SFormName{&kind};
    return std::nullopt;
}

SConversionPlan PlanConversion(const SConversionRequest& request) {
    return CConversionPlanner(request).Run();
}

} // namespace trevolt
