// What went wrong while a file was read or written, in plain words: from the status of the call and
// from the transfer report that was held during it. The report is asked first where it knows the
// cause, since a status may name another one or none.
#pragma once

#include <string>
#include <vector>

#include "trevolt/TransferReport.h"

namespace trevolt {

/// What a load lacks, one entry each; none when the file is whole in the map.
std::vector<std::string> DescribeReadProblems(Status status, const CTransferReport& report);

/// What the extra words of a file lack, for who keeps them; none when they are whole, when there are
/// none, and where memory or the system stood in the way of reading them.
std::vector<std::string> DescribeExtraWordProblems(const CTransferReport& report);

/// What is unusual about a file that was read, and what was done to its values, as far as neither is a
/// problem; one entry each.
std::vector<std::string> DescribeReadNotes(const CTransferReport& report);

/// Why an output is not whole; empty when it is.
std::string DescribeWriteProblem(Status status, const CTransferReport& report);

/// Why an output of this name was not written: something stands there that is not to be replaced.
std::string DescribeExistingOutput(const std::string& name);

/// Why a whole output lacks its final name, by the `errno` value of the refused renaming.
std::string DescribeRenameProblem(int error);

/// Why an output's bytes may not be on the disk; `error` is the `errno` value.
std::string DescribeSyncProblem(int error);

/// Why the names of outputs that were written may not be on the disk; `error` is the `errno` value.
std::string DescribeFolderSyncProblem(int error);

} // namespace trevolt
