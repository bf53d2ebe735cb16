#include "app/dialog/FolderChoice.h"

#include <algorithm>

#include "app/dialog/DialogView.h"
#include "platform/FileSystem.h"
#include "platform/SettingsProfile.h"

namespace trevolt {

int DroppedFolderBox(int underMouse, std::uint32_t pathsSet) {
    if (underMouse == kIdSource || underMouse == kIdTarget)
        return underMouse;
    return pathsSet == kSourceSet ? kIdTarget : kIdSource;
}

std::wstring DroppedFolder(const std::wstring& path) {
    std::wstring folder;
    if (IsFolder(path))
        folder = path;
    else if (PathExists(path))
        folder = FolderPart(path);
    // What the settings cannot hold would be another folder at the next start.
    return WithSeparator(folder).size() > CSettingsProfile::kLongestValue ? std::wstring() : folder;
}

std::wstring PathInLines(const std::wstring& path, std::size_t longestLine) {
    std::wstring lines;
    std::size_t lineLength = 0;
    for (std::size_t at = 0; at < path.size();) {
        const std::size_t end = std::min(path.find(kPathSeparator, at), path.size() - 1) + 1;
        if (lineLength > 0 && lineLength + (end - at) > longestLine) {
            lines += L"\r\n";
            lineLength = 0;
        }
        lines.append(path, at, end - at);
        lineLength += end - at;
        at = end;
    }
    return lines;
}

} // namespace trevolt
