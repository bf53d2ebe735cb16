#include "app/rotation/Manifest.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fstream>
#include <vector>

#include <fmt/format.h>

#include "app/rotation/OutputFolder.h"
#include "common/WrittenFile.h"
#include "platform/FileStream.h"
#include "platform/FileSystem.h"
#include "platform/Sha256.h"
#include "platform/SystemError.h"
#include "trevolt/TransferProblems.h"
#include "trevolt/Utf8.h"

namespace trevolt {
namespace {

constexpr std::size_t kSummedBytes = std::size_t{256} << 10;
constexpr std::size_t kSumDigits = 64;
constexpr const char* kUnreadable = "cannot be read";

struct SEscape {
    char byte;
    char letter; ///< behind a backslash it stands for the byte
};
constexpr std::array kEscapes{SEscape{'\\', '\\'}, SEscape{'\n', 'n'}, SEscape{'\r', 'r'}};

std::string HexOf(const std::array<std::uint8_t, 32>& digest) {
    std::string hex;
    for (const std::uint8_t byte : digest)
        hex += fmt::format("{:02x}", byte);
    return hex;
}

std::string Escaped(std::string_view name) {
    std::string escaped;
    for (const char c : name) {
        const auto* const escape = std::find_if(kEscapes.begin(), kEscapes.end(),
                                                [c](const SEscape& e) { return e.byte == c; });
        if (escape == kEscapes.end())
            escaped += c;
        else
            (escaped += '\\') += escape->letter;
    }
    return escaped;
}

std::optional<std::string> Unescaped(std::string_view escaped) {
    std::string name;
    for (std::size_t i = 0; i < escaped.size(); ++i) {
        if (escaped[i] != '\\') {
            name += escaped[i];
            continue;
        }
        if (++i == escaped.size())
            return std::nullopt;
        const char letter = escaped[i];
        const auto* const escape =
            std::find_if(kEscapes.begin(), kEscapes.end(),
                         [letter](const SEscape& e) { return e.letter == letter; });
        if (escape == kEscapes.end())
            return std::nullopt;
        name += escape->byte;
    }
    return name;
}

/// The sum in lower case; nothing when it is none.
std::optional<std::string> SumOfDigits(std::string_view digits) {
    std::string sum;
    for (const char c : digits) {
        const char lower = c >= 'A' && c <= 'F' ? static_cast<char>(c - 'A' + 'a') : c;
        if ((lower < '0' || lower > '9') && (lower < 'a' || lower > 'f'))
            return std::nullopt;
        sum += lower;
    }
    return sum;
}

/// Of bytes that lack.
std::string WithReason(const std::string& problem, int error) {
    return error == 0 ? problem + ": the system did not give all of its bytes"
                      : WithSystemReason(problem, error);
}

/// What is to come; 0 where that is not told, of a pipe, say. Nothing when the stream cannot be read, or
/// not be brought back to where it stood.
std::optional<std::uint64_t> BytesToCome(std::istream& stream) {
    if (!stream.good())
        return std::nullopt;
    const std::streamoff here = stream.tellg();
    if (here < 0)
        return 0;
    if (const auto bytes = BytesToEnd(stream))
        return bytes;
    stream.clear();
    stream.seekg(here);
    return stream.good() ? std::optional<std::uint64_t>(0) : std::nullopt;
}

/// Takes a manifest line by line.
class CManifestLines {
  public:
    explicit CManifestLines(std::istream& stream)
        : m_stream(stream), m_bytes(BytesToCome(stream)) {}

    /// The next line without its end; false behind the last one, and where the stream cannot be read.
    bool Next() {
        m_line.clear();
        m_isTooLong = false;
        for (char c = 0; Take(c) && c != '\n';) {
            if (m_line.size() < kLongestManifestLine)
                m_line += c;
            else
                m_isTooLong = true;
        }
        if (m_stream.bad() || (m_stream.fail() && m_line.empty()))
            return false;
        ++m_number;
        if (m_line.ends_with('\r')) // as an editor on Windows leaves it
            m_line.pop_back();
        return true;
    }

    /// Whether as many bytes came as the system told of.
    bool AreAllThere() const { return !m_stream.bad() && m_bytes && m_taken >= *m_bytes; }

    std::uint64_t Number() const { return m_number; }
    bool IsBlank() const { return m_line.empty() || m_line.starts_with('#'); }
    std::optional<SManifestEntry> Entry() const {
        return m_isTooLong ? std::nullopt : ParseManifestLine(m_line);
    }

  private:
    bool Take(char& c) {
        if (!m_stream.get(c))
            return false;
        ++m_taken;
        return true;
    }

    std::istream& m_stream;
    std::optional<std::uint64_t> m_bytes; ///< nothing where the stream cannot be read
    std::uint64_t m_taken = 0;
    std::string m_line;
    bool m_isTooLong = false;
    std::uint64_t m_number = 0;
};

void NoteLack(SVerifiedFile& file, const SSum& lacking) {
    if (lacking.error == ENOENT || lacking.error == ENOTDIR) {
        file.answer = SVerifiedFile::EAnswer::Missing;
        return;
    }
    file.answer = SVerifiedFile::EAnswer::Unreadable;
    file.problem = DescribeLackOfSum(lacking, kUnreadable, "its SHA-256 sum");
}

SVerifiedFile Verify(const SManifestEntry& entry) {
    SVerifiedFile file;
    file.name = entry.shownName;
    const auto path = Utf8ToWide(entry.name);
    if (!path) {
        file.answer = SVerifiedFile::EAnswer::Unreadable;
        file.problem = "its name is not valid UTF-8";
        return file;
    }
    const SSum sum = Sha256OfFile(*path);
    if (!sum.IsThere())
        NoteLack(file, sum);
    else if (sum.digits != entry.sum)
        file.answer = SVerifiedFile::EAnswer::Differs;
    return file;
}

void Count(SVerification& total, SVerifiedFile::EAnswer answer) {
    switch (answer) {
    case SVerifiedFile::EAnswer::Right:
        ++total.right;
        break;
    case SVerifiedFile::EAnswer::Missing:
        ++total.missing;
        break;
    case SVerifiedFile::EAnswer::Differs:
    case SVerifiedFile::EAnswer::Unreadable:
        ++total.differing;
        break;
    }
}

std::string UnreadableManifest(const std::wstring& path) {
    return fmt::format("the manifest {} {}", WideToShownUtf8(path), kUnreadable);
}

/// Why `lines` are not the output's content, on the disk where that is wanted; empty when they are.
std::string WriteLines(const CTemporaryOutput& output, const std::string& lines, bool sync) {
    const CTransferReport report;
    COutputFile file;
    Status status = E_COEF_OPENFAILED;
    if (OpenWritten(file, output.Path().c_str(), std::ios::out | std::ios::trunc)) {
        file.write(lines.data(), static_cast<std::streamsize>(lines.size()));
        CloseWritten(file);
        status = S_OK;
    }
    std::string problem = DescribeWriteProblem(status, report);
    if (const int error = problem.empty() && sync ? output.Sync() : 0; error != 0)
        problem = DescribeSyncProblem(error);
    return problem;
}

SSum WithoutBytes(int error) { return {{}, SSum::ELack::Bytes, error}; }

/// Of a digest that failed.
SSum WithoutHashing(const CSha256& sha) {
    return {{}, sha.WasMemoryRefused() ? SSum::ELack::Memory : SSum::ELack::Hashing};
}

/// The sum by a digest that has just begun.
SSum SumOf(std::istream& stream, CSha256& sha) {
    errno = 0;
    const auto bytes = BytesToCome(stream);
    if (!bytes)
        return WithoutBytes(errno);
    std::vector<std::byte> piece(kSummedBytes);
    std::uint64_t left = *bytes;
    while (stream.good()) {
        stream.read(reinterpret_cast<char*>(piece.data()), kSummedBytes);
        if (stream.bad())
            return WithoutBytes(errno);
        left -= std::min(left, static_cast<std::uint64_t>(stream.gcount()));
        if (!sha.Add(piece.data(), static_cast<std::size_t>(stream.gcount())))
            return WithoutHashing(sha);
    }
    if (!stream.eof() || left != 0)
        return WithoutBytes(0);
    std::array<std::uint8_t, 32> digest{};
    return sha.Finish(digest) ? SSum{HexOf(digest)} : WithoutHashing(sha);
}

} // namespace

SSum Sha256Of(std::istream& stream) {
    CSha256 sha;
    return SumOf(stream, sha);
}

SSum Sha256OfFile(const std::wstring& path) {
    CSha256 sha; // before the file is open, which the system may need memory for
    std::fstream stream;
    if (!OpenFileStream(stream, path.c_str(), std::ios::in))
        return WithoutBytes(errno);
    return SumOf(stream, sha);
}

std::string DescribeLackOfSum(const SSum& lacking, const char* unread, const char* sum) {
    if (lacking.lack == SSum::ELack::Bytes)
        return WithReason(unread, lacking.error);
    return fmt::format("{} cannot be computed: {}", sum,
                       lacking.lack == SSum::ELack::Memory ? "not enough memory"
                                                           : "the system does not offer it");
}

std::optional<std::string> ManifestLine(std::string_view sum, const std::wstring& path) {
    std::wstring name = path;
    if constexpr (kPathSeparator != L'/')
        std::replace(name.begin(), name.end(), kPathSeparator, L'/');
    const auto plain = WideToUtf8(name);
    if (!plain)
        return std::nullopt;
    const std::string escaped = Escaped(*plain);
    return fmt::format("{}{}  {}\n", escaped == *plain ? "" : "\\", sum, escaped);
}

std::optional<SManifestEntry> ParseManifestLine(std::string_view line) {
    const bool isEscaped = line.starts_with('\\');
    const std::string_view plain = line.substr(isEscaped ? 1 : 0);
    if (plain.size() < kSumDigits + 3 || line.find('\0') != std::string_view::npos)
        return std::nullopt;
    const std::string_view mark = plain.substr(kSumDigits, 2);
    const auto sum = SumOfDigits(plain.substr(0, kSumDigits));
    if (!sum || (mark != "  " && mark != " *"))
        return std::nullopt;
    const std::string_view shown = plain.substr(kSumDigits + 2);
    const auto name = isEscaped ? Unescaped(shown) : std::string(shown);
    if (!name)
        return std::nullopt;
    return SManifestEntry{*sum, fmt::format("{}{}", isEscaped ? "\\" : "", shown), *name};
}

SVerification VerifyManifest(const std::wstring& path, CVerificationListener& listener,
                             const std::atomic<bool>& interrupted) {
    SVerification total;
    CInputFile stream;
    if (!stream.Open(path.c_str())) {
        total.end = EVerificationEnd::NothingToDo;
        total.error = WithSystemReason(UnreadableManifest(path), stream.SystemError()) +
                      ": give a file that can be read";
        return total;
    }
    CManifestLines lines(stream);
    while (!interrupted && lines.Next()) {
        if (lines.IsBlank())
            continue;
        const auto entry = lines.Entry();
        if (!entry) {
            ++total.badLines;
            listener.OnBadLine(lines.Number());
            continue;
        }
        const SVerifiedFile file = Verify(*entry);
        Count(total, file.answer);
        listener.OnFile(file);
    }
    if (interrupted) {
        total.end = EVerificationEnd::Interrupted;
        return total;
    }
    if (!lines.AreAllThere())
        total.error = WithReason(UnreadableManifest(path), stream.SystemError());
    else if (total.right + total.differing + total.missing + total.badLines == 0)
        total.error = fmt::format("the manifest {} holds no sum", WideToShownUtf8(path));
    if (!total.error.empty() || total.differing + total.missing + total.badLines != 0)
        total.end = EVerificationEnd::SomeWrong;
    return total;
}

std::string WriteManifest(const std::wstring& manifest, const std::string& lines, bool sync) {
    const std::wstring part = FolderPart(manifest);
    COutputFolder folder(part.empty() ? L"." : part, sync);
    folder.RemoveAbandoned();
    const auto output = folder.Begin(manifest.substr(part.size()));
    std::string problem = WriteLines(*output, lines, sync);
    if (problem.empty())
        if (const SKeptOutput kept = folder.Keep(*output, false); !kept.isKept)
            problem = WithSystemReason("cannot be given its name", kept.error);
    if (problem.empty())
        if (const int error = folder.SyncNames(); error != 0)
            problem = WithSystemReason(
                "is written, but its name may be lost: its folder cannot be synced", error);
    return problem.empty() ? problem
                           : fmt::format("the manifest {} {}", WideToShownUtf8(manifest), problem);
}

} // namespace trevolt
