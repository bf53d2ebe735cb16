// Which folder box something dropped on the window is meant for, which folder it stands for, and how a
// folder's path reads in a tooltip.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace trevolt {

/// Bits of the dialog's path-set flags: which of the two folders the user has set.
inline constexpr std::uint32_t kSourceSet = 1;
inline constexpr std::uint32_t kTargetSet = 2;

/// The folder box that takes what is dropped over the control `underMouse` (0 is none): that box
/// itself, else the first that is not set, and the source box when both are.
int DroppedFolderBox(int underMouse, std::uint32_t pathsSet);

/// The folder that a dropped path stands for: itself, or a file's folder. Empty when nothing stands
/// at the path, or when it is longer than the settings can hold.
std::wstring DroppedFolder(const std::wstring& path);

/// `path` in lines of at most `longestLine` characters, broken behind separators; a longer name stays
/// whole.
std::wstring PathInLines(const std::wstring& path, std::size_t longestLine);

} // namespace trevolt
