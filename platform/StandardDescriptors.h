// What a program reads from and prints to, there before it opens anything else.
#pragma once

namespace trevolt {

/// Gives standard input, output and error a place that takes and holds nothing where whoever started
/// the program closed them, as daemons and schedulers do: else the first files that it opens would
/// take their places, and what it prints would be written into them. To be called before anything is
/// opened.
void OpenStandardDescriptors();

} // namespace trevolt
