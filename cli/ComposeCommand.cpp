#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "app/rotation/Composition.h"
#include "cli/Commands.h"
#include "cli/CompositionPrinter.h"
#include "cli/LayoutOption.h"
#include "cli/OptionGroup.h"
#include "cli/OptionValues.h"
#include "cli/SharedOptions.h"
#include "platform/Process.h"

namespace trevolt {
namespace {

constexpr const char* kComposeNotes = R"(Examples:
  trevolt-cli compose wall.9fcoef Cab_01.9fcoef@0,0 Cab_02.9fcoef@160,0,180
      puts two cabinets side by side, the second one mounted upside down
  trevolt-cli compose wall.9wcoef --layout wall.csv --size 1920x1080
      puts the files of a table into a screen of that size

Exit states:
  0    the screen is written
  1    a file is damaged, or the screen cannot be written
  2    wrong usage, or files that cannot lie so; nothing was written
  130  interrupted; nothing was written)";

struct SComposeOptions {
    std::string target;
    std::vector<std::string> files;
    SLayoutOptions layout;
    std::optional<PixelSize> size;
    bool allowOverlap = false;
    bool allowOutside = false;
    bool lenient = false;
    bool overwrite = false;
    bool noSync = false;
    bool json = false;
};

void AddComposeOptions(CLI::App& command, SComposeOptions& options) {
    COptionGroup places(command, kPlaces);
    places
        .AddPlace("TARGET", "FILE", options.target,
                  "File of the screen; its extension tells the kind, whatever those of the "
                  "cabinets are")
        .Required();
    const COption files = places.AddPlaces(
        "FILE@PLACE", "FILE", options.files,
        "A cabinet's file, and behind the last @ the left top of its place in the screen as X,Y, "
        "or X,Y,ANGLE where it is turned: 90, 180 or 270 clockwise");
    COptionGroup screen(command, "Screen");
    AddLayout(screen,
              "CSV file with a file, its x, its y and its angle a row, in place of FILE@PLACE; "
              "the angle may be left out",
              options.layout)
        .Excludes(files);
    screen
        .AddValue("--size,-s", "WIDTHxHEIGHT", options.size, ParseSize,
                  "Size of the screen in pixels")
        .Default("the smallest that holds every file");
    screen.AddFlag("--allow-overlap", options.allowOverlap,
                   "Let files overlap; of several the last one's pixels stay");
    screen.AddFlag("--allow-outside", options.allowOutside,
                   "Let files reach out of the screen; what is outside is cut");
    screen.AddFlag("--lenient", options.lenient,
                   "Also take what could be read of files that are damaged");
    AddOutputFlags(command, options.overwrite, options.noSync);
    AddJsonFlag(command, options.json);
}

SLayoutFiles FilesOf(const SComposeOptions& options) {
    if (options.layout.table)
        return FilesOfLayout(options.layout);
    SLayoutFiles layout;
    for (const std::string& text : options.files)
        layout.files.push_back(ParseFor("FILE@PLACE", "FILE@X,Y", text, ParsePlacedFile));
    if (layout.files.empty())
        throw CUsageError("compose needs files: give FILE@X,Y for each, or --layout TABLE");
    return layout;
}

int Compose(const SComposeOptions& options) {
    SLayoutFiles layout = FilesOf(options);
    const SCompositionRequest request{
        .files = std::move(layout.files),
        .size = options.size,
        .allowOverlap = options.allowOverlap,
        .allowOutside = options.allowOutside,
        .lenient = options.lenient,
        .output = {ParseFor("TARGET", "a file", options.target, ParsePath), options.overwrite,
                   !options.noSync}};
    const CCompositionObjects objects(request, options.layout.table.has_value());
    SComposition result;
    if (layout.problems.empty()) {
        result = ComposeScreen(request, CatchInterrupts());
    } else {
        result.end = ECompositionEnd::Refused;
        result.errors = std::move(layout.problems);
    }
    if (options.json)
        objects.Tell(result);
    else
        TellComposition(request, result);
    return ExitStatus(result.end);
}

} // namespace

void AddComposeCommand(CLI::App& program, int& exitStatus) {
    const auto options = std::make_shared<SComposeOptions>();
    CLI::App& command =
        AddCommand(program, "compose", "Put cabinets' files into a file of the whole screen",
                   kComposeNotes, exitStatus, [options] { return Compose(*options); });
    AddComposeOptions(command, *options);
}

} // namespace trevolt
