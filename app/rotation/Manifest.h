// Manifests: the SHA-256 sums of files, one a line, as sha256sum writes and checks them
// (docs/manifest.md).
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <istream>
#include <optional>
#include <string>
#include <string_view>

#include "platform/Process.h"

namespace trevolt {

/// A SHA-256 sum, or why there is none.
struct SSum {
    enum class ELack : std::uint8_t {
        Nothing,
        Bytes,   ///< they cannot be read to their end
        Memory,  ///< the system's hashing got none
        Hashing, ///< the system has no SHA-256
    };

    std::string digits; ///< 64, in lower case; empty where something is lacking
    ELack lack = ELack::Nothing;
    int error = 0; ///< of bytes that lack: the `errno` value of the reason, 0 where none is told

    bool IsThere() const { return lack == ELack::Nothing; }
};

/// The sum of the bytes from where `stream` stands. Throws std::bad_alloc.
SSum Sha256Of(std::istream& stream);

/// The sum of a file, whose bytes lack also when it does not open. Throws std::bad_alloc.
SSum Sha256OfFile(const std::wstring& path);

/// Why there is no sum, in plain words: `unread` and the reason where bytes lack, else that `sum`, as
/// "its SHA-256 sum", cannot be computed.
std::string DescribeLackOfSum(const SSum& lacking, const char* unread, const char* sum);

/// A file's line and its end. Backslashes, line feeds and carriage returns of the name are escaped,
/// and the line then begins with a backslash. On Windows separators become slashes. Nothing when
/// `path` has no UTF-8 form.
std::optional<std::string> ManifestLine(std::string_view sum, const std::wstring& path);

/// Writes a manifest of these lines, in place of nothing: whole, and with `sync` on the disk, or not
/// at all. Why it does not stand, in plain words; empty when it does.
std::string WriteManifest(const std::wstring& manifest, const std::string& lines, bool sync);

struct SManifestEntry {
    std::string sum;       ///< 64 lower-case hex digits
    std::string shownName; ///< as it stands in the line, with the backslash that begins it
    std::string name;      ///< the file's own
};

/// What a line without its end says; nothing when it is none of a manifest's.
std::optional<SManifestEntry> ParseManifestLine(std::string_view line);

struct SVerifiedFile {
    enum class EAnswer { Right, Differs, Missing, Unreadable };

    std::string name; ///< as it stands in the manifest
    EAnswer answer = EAnswer::Right;
    std::string problem; ///< of an unreadable one, in plain words
};

/// Hears of a verification on the thread that started it.
class CVerificationListener {
  public:
    virtual ~CVerificationListener() = default;
    virtual void OnFile(const SVerifiedFile& file) = 0;
    /// Line `number`, counted from 1, is none of a manifest's and was passed over.
    virtual void OnBadLine(std::uint64_t number) = 0;
};

enum class EVerificationEnd { AllRight, SomeWrong, NothingToDo, Interrupted };

struct SVerification {
    EVerificationEnd end = EVerificationEnd::AllRight;
    std::string error; ///< what is wrong with the manifest as a whole, in plain words
    std::size_t right = 0;
    std::size_t differing = 0; ///< or unreadable
    std::size_t missing = 0;
    std::size_t badLines = 0;
};

/// The longest line of a manifest that is taken, in bytes: any system's longest path fits, escaped.
inline constexpr std::size_t kLongestManifestLine = std::size_t{256} << 10;

/// Compares every file of a manifest with its sum, in the manifest's order. Names are relative to
/// the current folder, as sha256sum takes them. NothingToDo when the manifest does not open;
/// SomeWrong also when it holds no sum, a line that is none, or cannot be read to its end. Gives up
/// between files once `interrupted`.
SVerification VerifyManifest(const std::wstring& path, CVerificationListener& listener,
                             const std::atomic<bool>& interrupted = kNeverInterrupted);

} // namespace trevolt
