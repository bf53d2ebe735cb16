// What composing and cropping print: lines for people or objects for programs.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "app/rotation/Composition.h"
#include "app/rotation/Cropping.h"

namespace trevolt {

/// The program's exit status after one of them.
int ExitStatus(ECompositionEnd end);

/// Prints what was done on standard output and what went wrong on standard error.
void TellComposition(const SCompositionRequest& request, const SComposition& result);
void TellCropping(const SCropRequest& request, const SCropping& result);

/// Prints one JSON object a line on standard output (docs/compose.md).
void TellCroppingAsJson(const SCropRequest& request, const SCropping& result);

/// The same of a composition.
class CCompositionObjects {
  public:
    /// Made before the screen stands, which is told also where no memory is left. Files of a table have
    /// their names as it has them, others those in their folders.
    CCompositionObjects(const SCompositionRequest& request, bool isOfTable);

    /// Of a result whose files, if any, are those of the request.
    void Tell(const SComposition& result) const;

  private:
    struct SFile {
        std::string name;
        std::string path;
        std::uint32_t code;
    };

    std::vector<SFile> m_files;
    std::string m_output;
};

} // namespace trevolt
