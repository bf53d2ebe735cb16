// The commands of trevolt-cli, one source each: they take their options, call the app's functions
// and print. A command's result is the program's exit status.
#pragma once

namespace CLI {
class App;
} // namespace CLI

namespace trevolt {

inline constexpr int kExitAllDone = 0;
inline constexpr int kExitSomeFailed = 1;
inline constexpr int kExitUsage = 2;
inline constexpr int kExitInterrupted = 130;

/// The command that works on several files at once.
inline constexpr const char* kRotateCommand = "rotate";

/// The command that tells a difference by 1, and trouble of any sort by 2.
inline constexpr const char* kDiffCommand = "diff";
inline constexpr int kExitDiffTrouble = 2;

inline constexpr const char* kOverwriteHelp =
    "Replace outputs that exist; without it they are errors";
inline constexpr const char* kNoSyncHelp =
    "Do not wait until the outputs are on the disk: quicker, but a power cut may cost them";

/// Each adds its command and leaves its exit status in `exitStatus` when it is the one called.
void AddRotateCommand(CLI::App& program, int& exitStatus);
void AddComposeCommand(CLI::App& program, int& exitStatus);
void AddCropCommand(CLI::App& program, int& exitStatus);
void AddConvertCommand(CLI::App& program, int& exitStatus);
void AddInfoCommand(CLI::App& program, int& exitStatus);
void AddDiffCommand(CLI::App& program, int& exitStatus);
void AddPreviewCommand(CLI::App& program, int& exitStatus);
void AddVerifyCommand(CLI::App& program, int& exitStatus);
void AddDemoCommand(CLI::App& program, int& exitStatus);

} // namespace trevolt
