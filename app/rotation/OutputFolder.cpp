#include "app/rotation/OutputFolder.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

#include <fmt/xchar.h>

#include "coef/WordObjects.h"
#include "platform/Process.h"
#include "platform/SystemError.h"

namespace trevolt {
namespace {

constexpr std::wstring_view kTemporaryBegin = L".trevolt-";
/// No kind matches either; the writer of extra words decides by the second.
constexpr std::array<std::wstring_view, 2> kTemporaryEnds{L".tmp", L".9wPCoef"};
constexpr std::size_t kNumbers = 4; ///< realm, process, run and file, in this order
constexpr std::chrono::hours kAbandonedAge{24 * 7};

std::wstring_view TemporaryEnd(const std::wstring& name) {
    return kTemporaryEnds[NamesExtraWordFile(name) ? 1 : 0];
}

/// Keeps runs of one process apart, and of those that got its id after it.
std::uint32_t NewRunNumber() {
    return static_cast<std::uint32_t>(std::chrono::system_clock::now().time_since_epoch() /
                                      std::chrono::microseconds(1));
}

std::optional<std::uint32_t> DigitOf(wchar_t c) {
    if (c >= L'0' && c <= L'9')
        return static_cast<std::uint32_t>(c - L'0');
    if (c >= L'a' && c <= L'f')
        return static_cast<std::uint32_t>(c - L'a' + 10);
    return std::nullopt;
}

/// One to eight hexadecimal digits.
std::optional<std::uint32_t> NumberOf(std::wstring_view digits) {
    std::uint32_t number = 0;
    for (const wchar_t c : digits) {
        const auto digit = DigitOf(c);
        if (!digit)
            return std::nullopt;
        number = number << 4U | *digit;
    }
    return digits.empty() || digits.size() > 8 ? std::nullopt : std::optional(number);
}

/// Whose a file under work is.
struct SOwner {
    std::uint32_t realm = 0;
    std::uint32_t process = 0;
};

std::optional<SOwner> OwnerOf(std::wstring_view name) {
    const auto end = std::find_if(kTemporaryEnds.begin(), kTemporaryEnds.end(),
                                  [&](std::wstring_view text) { return name.ends_with(text); });
    if (!name.starts_with(kTemporaryBegin) || end == kTemporaryEnds.end())
        return std::nullopt;
    name.remove_suffix(end->size());
    name.remove_prefix(std::min(kTemporaryBegin.size(), name.size()));
    std::array<std::uint32_t, kNumbers> numbers{};
    for (std::size_t i = 0; i < kNumbers; ++i) {
        const std::size_t length = i + 1 < kNumbers ? name.find(L'-') : name.size();
        const auto number = NumberOf(name.substr(0, length));
        if (length == std::wstring_view::npos || !number)
            return std::nullopt;
        numbers[i] = *number;
        name.remove_prefix(std::min(length + 1, name.size()));
    }
    return SOwner{numbers[0], numbers[1]};
}

bool IsAbandoned(const std::wstring& path, const SOwner& owner) {
    if (owner.realm != 0 && owner.realm == ProcessRealm())
        return IsProcessGone(owner.process);
    const auto age = AgeOf(path);
    return age && *age >= kAbandonedAge;
}

/// Those that get a new one when a folder is made, the inmost first: the last stands already.
std::vector<std::wstring> FoldersThatGrow(const std::wstring& folder) {
    std::vector<std::wstring> grown;
    for (std::wstring missing = folder; !PathExists(missing);) {
        const std::wstring parent = WithoutSeparator(FolderPart(missing));
        grown.push_back(parent.empty() ? L"." : parent);
        if (parent.empty() || parent == missing)
            break;
        missing = parent;
    }
    return grown;
}

/// Why a folder cannot be made below the last of those that grow with it.
int RefusalOfMissing(const std::wstring& folder, const std::vector<std::wstring>& grown) {
    std::vector<std::wstring> missing{folder};
    missing.insert(missing.end(), grown.begin(), grown.end() - 1);
    if (IsLink(missing.back())) // which leads nowhere
        return KindOfEntry(missing.back()) || errno == 0 ? ENOENT : errno;
    for (const std::wstring& one : missing)
        if (const int error = RefusalOfName(one); error != 0)
            return error;
    return 0;
}

} // namespace

CTemporaryOutput::CTemporaryOutput(std::wstring path, std::wstring finalName)
    : m_path(std::move(path)), m_finalName(std::move(finalName)), m_native(ToNativePath(m_path)) {}

CTemporaryOutput::~CTemporaryOutput() {
    if (!m_kept && m_native)
        RemoveNativeFile(*m_native);
}

int CTemporaryOutput::Make() const noexcept {
    return m_native ? MakeNativeFile(*m_native) : ENOENT;
}

int CTemporaryOutput::Sync() const noexcept {
    return m_native ? SyncNativeFile(*m_native) : ENOENT;
}

std::string DescribeRefusedFolder(int error) {
    return WithSystemReason("cannot be made, written to or synced", error) + ": choose another";
}

int RefusalOfName(const std::wstring& path) {
    const std::vector<std::wstring> grown = FoldersThatGrow(path);
    if (grown.empty())
        return 0;
    const std::wstring inStanding =
        WithSeparator(grown.back()) + path.substr(FolderPart(path).size());
    for (const std::wstring& tried : {path, inStanding})
        if (!KindOfEntry(tried) && (errno == ENAMETOOLONG || errno == EINVAL))
            return errno;
    return 0;
}

COutputFolder::COutputFolder(const std::wstring& folder, bool sync)
    : m_folder(WithSeparator(folder)),
      m_prefix(fmt::format(L"{}{:x}-{:x}-{:x}-", kTemporaryBegin, ProcessRealm(), ProcessId(),
                           NewRunNumber())),
      m_sync(sync) {}

int COutputFolder::Make(const std::wstring& below) const {
    const std::wstring folder = WithoutSeparator(m_folder + below);
    std::vector<std::wstring> grown = FoldersThatGrow(folder);
    if (!CreateFolders(folder))
        return errno == 0 ? ENOENT : errno;
    grown.push_back(folder); // what cannot be synced is told before anything is written
    int error = 0;
    for (const std::wstring& parent : grown)
        if (const auto native = ToNativePath(parent); m_sync && native && error == 0)
            error = SyncNativeFolder(*native);
    return error == 0 ? Try(below) : error;
}

int COutputFolder::Try(const std::wstring& below) const { return Begin(below)->Make(); }

int COutputFolder::Refusal(const std::wstring& below) const {
    const std::wstring folder = WithoutSeparator(m_folder + below);
    const std::vector<std::wstring> grown = FoldersThatGrow(folder);
    const std::wstring& standing = grown.empty() ? folder : grown.back();
    if (!IsFolder(standing))
        return ENOTDIR;
    if (const int error = RefusalOfNewFiles(standing); error != 0)
        return error;
    if (const int error = m_sync ? RefusalOfSync(standing) : 0; error != 0)
        return error;
    return grown.empty() ? 0 : RefusalOfMissing(folder, grown);
}

void COutputFolder::RemoveAbandoned(const std::wstring& below) const {
    const std::wstring folder = m_folder + below;
    const FolderListing listing = ListEntries(folder + std::wstring(kTemporaryBegin));
    for (const FolderEntry& entry : listing.entries) {
        const auto owner = OwnerOf(entry.name);
        if (owner && entry.kind == EntryKind::File && IsAbandoned(folder + entry.name, *owner))
            RemoveFile(folder + entry.name);
    }
}

std::unique_ptr<CTemporaryOutput> COutputFolder::Begin(const std::wstring& name) const {
    static std::atomic<std::uint32_t> begun{0}; // of all runs: two may begin within one tick
    return std::make_unique<CTemporaryOutput>(fmt::format(L"{}{}{}{:x}{}", m_folder,
                                                          FolderPart(name), m_prefix, ++begun,
                                                          TemporaryEnd(name)),
                                              name);
}

std::optional<std::wstring> COutputFolder::FindKept(const std::wstring& path) const {
    const auto standing = IdentityOf(path);
    const auto earlier = standing ? m_kept.find(*standing) : m_kept.end();
    return earlier == m_kept.end() ? std::nullopt : std::optional(earlier->second);
}

SKeptOutput COutputFolder::Keep(CTemporaryOutput& output, bool replaces) {
    const std::wstring path = m_folder + output.m_finalName;
    if (replaces)
        if (const auto earlier = FindKept(path))
            return {false, true, 0, *earlier};
    // Whatever needs memory comes before the name is given: what has it is told.
    std::map<EntryIdentity, std::wstring> written;
    if (const auto own = IdentityOf(output.m_path))
        written.emplace(*own, output.m_finalName);
    if (const auto folder = m_sync ? ToNativePath(FolderPart(path)) : std::nullopt)
        m_unsynced.insert(*folder);
    if (replaces)
        output.m_kept =
            m_sync ? ReplaceDurably(output.m_path, path) : ReplaceWith(output.m_path, path);
    else
        output.m_kept = NameNew(output.m_path, path, m_sync);
    if (!output.m_kept) {
        const int error = errno;
        return {false, error == EEXIST, error, FindKept(path).value_or(L"")};
    }
    m_kept.merge(written);
    return {true, false, 0, {}};
}

int COutputFolder::SyncNames() noexcept {
    int error = 0;
    for (const NativePath& folder : m_unsynced)
        if (const int its = SyncNativeFolder(folder); error == 0)
            error = its;
    m_unsynced.clear();
    return error;
}

} // namespace trevolt
