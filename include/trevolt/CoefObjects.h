// Coefficient objects by kind, and what the kinds offer beyond the interface's slots.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "trevolt/CaliOperationData.h"
#include "trevolt/ColorCorrectCoef.h"
#include "trevolt/StatusCodes.h"
#include "trevolt/WordElements.h"

namespace trevolt {

/// An object of the kind, its store without a size until `Create`; the caller owns it. Null for a
/// value that is no kind. Throws std::bad_alloc without memory for its tables.
std::unique_ptr<CColorCorrectCoef> CreateCoefObject(EWordKind kind);

/// As slot 117 for an image that is not trusted: nothing past its `length` bytes is read. Statuses of
/// slot 117; E_FAIL also for an image shorter than its header and directory.
Status LoadBoundedStoreImage(CColorCorrectCoef& object, const std::byte* image, std::size_t length);

/// Bytes that slot 122 writes at most; 0 without a store.
std::uint64_t MaxStoreImageBytes(const CColorCorrectCoef& object);

/// Hands a virtual-green object the table that its channel writes with an index from 1 to 56 go
/// through; null takes it back. The table stays the caller's and must outlive its use. False, and
/// nothing changed, for an object of another kind.
bool SetTransferTable(CColorCorrectCoef& object, CCaliOperationData* table);

/// Slot 125, which the chroma kind alone has: writes the whole of both stores as a word file with
/// extra words, whatever the path's extension. E_FAIL for an object of another kind, E_POINTER for a
/// null path or without a matrix store, E_COEF_OPENFAILED; else S_OK, whatever became of the chunks.
Status SaveWholeStoreC(CColorCorrectCoef& object, const wchar_t* path);

/// Slot 126, which the chroma kind alone has: sets the mode that the object carries for others. False
/// for an object of another kind.
bool SetChromaMode(CColorCorrectCoef& object, std::uint32_t mode);

} // namespace trevolt
