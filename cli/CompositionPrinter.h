// What composing and cropping print: lines for people or objects for programs.
#pragma once

#include <string>

#include "app/rotation/Composition.h"
#include "app/rotation/Cropping.h"

namespace trevolt {

/// The program's exit status after one of them.
int ExitStatus(ECompositionEnd end);

/// Prints what was done on standard output and what went wrong on standard error.
void TellComposition(const SCompositionRequest& request, const SComposition& result);
void TellCropping(const SCropRequest& request, const SCropping& result);

/// Prints one JSON object a line on standard output (docs/compose.md). Files of a table have their names
/// as it has them, others those in their folders.
void TellCompositionAsJson(const SCompositionRequest& request, const SComposition& result,
                           bool isOfTable);
void TellCroppingAsJson(const SCropRequest& request, const SCropping& result);

} // namespace trevolt
