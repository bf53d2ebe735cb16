// Status codes: 32-bit values in the HRESULT manner, shared by every folder. Negative is failure,
// 0 is success, and a few readers return another non-negative value on success.
#pragma once

#include <cstdint>
#include <string>

// windows.h has macros of five of these names, of the same values. They are set aside while the
// constants are declared and are the includer's again behind that, so this header stands before or
// behind windows.h. Where the macros are known a plain S_OK is theirs and compares with a status as
// the constant does; trevolt::S_OK cannot be written there.
#pragma push_macro("S_OK")
#pragma push_macro("E_FAIL")
#pragma push_macro("E_POINTER")
#pragma push_macro("E_HANDLE")
#pragma push_macro("E_OUTOFMEMORY")
#undef S_OK
#undef E_FAIL
#undef E_POINTER
#undef E_HANDLE
#undef E_OUTOFMEMORY

namespace trevolt {

/// Any 32-bit value: a few readers answer another non-negative one than 0 on success. The compiler
/// notices a status that nobody looks at; what is dropped on purpose goes to `DropStatus`.
enum [[nodiscard]] Status : std::int32_t{};

constexpr Status MakeStatus(std::uint32_t bits) { return static_cast<Status>(bits); }
constexpr bool Failed(Status status) { return status < 0; }
/// Takes a status that is dropped on purpose; the caller says why.
constexpr void DropStatus(Status /*unused*/) {}

inline constexpr Status S_OK = MakeStatus(0);
/// General failure: damaged content, sizes that do not match, memory refused to a store or a map, an
/// operation that a kind does not offer.
inline constexpr Status E_FAIL = MakeStatus(0x80004005);
/// A coefficient object has no store, or its writer no path.
inline constexpr Status E_POINTER = MakeStatus(0x80004003);
/// A file could not be opened (some operations: outputs, and inputs that are opened again).
inline constexpr Status E_HANDLE = MakeStatus(0x80070006);
/// A file's body needs more memory than the budget or the system gives.
inline constexpr Status E_OUTOFMEMORY = MakeStatus(0x8007000E);
/// Null path, empty map or store, bad rectangle.
inline constexpr Status E_COEF_INVALIDARG = MakeStatus(0xE0830000);
/// Null buffer argument or missing block.
inline constexpr Status E_COEF_NOBUFFER = MakeStatus(0xE0830001);
/// A chunk transfer that a kind does not offer.
inline constexpr Status E_COEF_NOTIMPL = MakeStatus(0xE0830002);
/// The size limit of a calibration buffer is reached.
inline constexpr Status E_COEF_SIZELIMIT = MakeStatus(0xE0830004);
/// Wrong magic or format identifier, version above 1, wrong file-kind value.
inline constexpr Status E_COEF_BADFORMAT = MakeStatus(0xE0830010);
/// A file could not be opened.
inline constexpr Status E_COEF_OPENFAILED = MakeStatus(0xE0830011);
/// Empty first line or unknown tag line of a text coefficient file.
inline constexpr Status E_COEF_BADTEXT = MakeStatus(0xE0830013);

/// The constant's name, "S_OK" for every non-negative status, "unknown status" for others.
const char* StatusName(Status status);

/// What the status means to somebody who has a file in hand: a short phrase without a full stop.
const char* StatusMeaning(Status status);

/// Name, hexadecimal value and meaning, for example
/// "E_COEF_BADFORMAT (0xE0830010): not a file of this kind, or of a newer version".
std::string DescribeStatus(Status status);

} // namespace trevolt

#pragma pop_macro("E_OUTOFMEMORY")
#pragma pop_macro("E_HANDLE")
#pragma pop_macro("E_POINTER")
#pragma pop_macro("E_FAIL")
#pragma pop_macro("S_OK")
