// What a run prints: lines for people or objects for programs.
#pragma once

#include <memory>

#include "trevolt/RotationRun.h"

namespace trevolt {

class CRunPrinter : public CRotationListener {
  public:
    /// The run has ended; called once, also where nothing was turned.
    virtual void OnEnd(const SRotationOutcome& outcome) = 0;
};

struct SLineStyle {
    bool quiet = false;   ///< only what goes wrong
    bool verbose = false; ///< also what is passed over
};

/// Lines on standard output, what goes wrong on standard error, and on a terminal there how far the
/// run is. `request` must outlive it.
std::unique_ptr<CRunPrinter> MakeLinePrinter(const SRotationRequest& request, SLineStyle style);

/// One JSON object a line on standard output (docs/json.md). `request` must outlive it.
std::unique_ptr<CRunPrinter> MakeJsonPrinter(const SRotationRequest& request);

/// The program's exit status after a run.
int ExitStatus(ERotationEnd end);

} // namespace trevolt
