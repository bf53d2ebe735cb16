#include <memory>
#include <new>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "app/rotation/Cropping.h"
#include "cli/Commands.h"
#include "cli/CompositionPrinter.h"
#include "cli/LayoutOption.h"
#include "cli/OptionGroup.h"
#include "cli/OptionValues.h"
#include "cli/SharedOptions.h"
#include "platform/FileSystem.h"
#include "platform/Process.h"
#include "trevolt/Utf8.h"

namespace trevolt {
namespace {

constexpr const char* kCropNotes = R"(Examples:
  trevolt-cli crop wall.9fcoef piece.9fcoef --rect 160,0,320,90
      writes a rectangle of 160 x 90 pixels
  trevolt-cli crop wall.9fcoef cabinets --layout wall.csv --cabinet 160x90
      writes every cabinet of a table, each turned back

Exit states:
  0    all files are written
  1    the source is damaged, or some file could not be written
  2    wrong usage, or a rectangle outside the map; nothing was written
  130  interrupted; what is told as written is whole)";

struct SCropOptions {
    std::string source;
    std::string target;
    std::optional<SPixelRect> rect;
    std::uint32_t turn = 0;
    SLayoutOptions layout;
    std::optional<PixelSize> cabinet;
    bool lenient = false;
    bool overwrite = false;
    bool noSync = false;
    bool json = false;
};

void AddCropPlaces(CLI::App& command, SCropOptions& options) {
    COptionGroup places(command, kPlaces);
    places.AddPlace("SOURCE", "FILE", options.source, "Coefficient file of any kind").Required();
    places
        .AddPlace("TARGET", "FILE", options.target,
                  "File of the rectangle, whose extension tells its kind; with --layout the "
                  "folder of the cabinets, made when missing")
        .Required();
}

void AddPiece(CLI::App& command, SCropOptions& options) {
    COptionGroup group(command, "Piece");
    const COption rect =
        group.AddValue("--rect", "LEFT,TOP,RIGHT,BOTTOM", options.rect, ParseRect,
                       "Rectangle to cut out, in pixels; right and bottom are exclusive");
    group
        .AddValue("--turn", "90|180|270", options.turn, ParseAngle,
                  std::string("Clockwise turn of what is cut out in degrees") + kAngleForms)
        .Needs(rect);
    const COption layout =
        AddLayout(group,
                  "CSV file with a file, its x, its y and its angle a row, as compose takes it: "
                  "every file is cut out and turned back",
                  options.layout);
    layout.Excludes(rect);
    group
        .AddValue("--cabinet", "WIDTHxHEIGHT", options.cabinet, ParseSize,
                  "Size of every cabinet of the table before its turn")
        .Default("that of the file that the table names")
        .Needs(layout);
    group.AddFlag("--lenient", options.lenient,
                  "Also take what could be read of a source that is damaged");
}

void AddCropOptions(CLI::App& command, SCropOptions& options) {
    AddCropPlaces(command, options);
    AddPiece(command, options);
    AddOutputFlags(command, options.overwrite, options.noSync);
    AddJsonFlag(command, options.json);
}

SCropRequest RectRequest(const SCropOptions& options, const std::wstring& target) {
    SCropRequest request;
    request.targetFolder = FolderPart(target);
    request.pieces.push_back(
        {target.substr(request.targetFolder.size()), *options.rect, options.turn});
    return request;
}

/// What stands in the way, or nothing.
std::vector<std::string> TakeLayout(const SCropOptions& options, const std::wstring& target,
                                    SCropRequest& request) {
    SLayoutFiles layout = FilesOfLayout(options.layout);
    if (!layout.problems.empty())
        return std::move(layout.problems);
    SScreenPieces screen = PiecesOfScreen(layout.files, options.cabinet);
    if (!screen.problems.empty())
        screen.problems.emplace_back(
            "not every file of the table tells its size: give --cabinet WIDTHxHEIGHT, or --from "
            "the folder of the files");
    request.targetFolder = target;
    request.makesFolders = true;
    request.pieces = std::move(screen.pieces);
    if (!options.cabinet) // those that were asked for their sizes
        for (const SPlacedFile& file : layout.files)
            request.kept.push_back(file.path);
    return std::move(screen.problems);
}

int Crop(const SCropOptions& options) {
    if (!options.rect && !options.layout.table)
        throw CUsageError(
            "crop needs a rectangle: give --rect LEFT,TOP,RIGHT,BOTTOM, or --layout TABLE");
    const std::wstring target = ParseFor("TARGET", "a file", options.target, ParsePath);
    const std::wstring input = ParseFor("SOURCE", "a file", options.source, ParsePath);
    SCropRequest request;
    SCropping result;
    if (options.rect)
        request = RectRequest(options, target);
    else
        result.errors = TakeLayout(options, target, request);
    request.input = input;
    request.lenient = options.lenient;
    request.replaces = options.overwrite;
    request.sync = !options.noSync;
    result.end = ECompositionEnd::Refused;
    result.input = WideToShownUtf8(input);
    if (result.errors.empty())
        result = CropFile(request, CatchInterrupts());
    options.json ? TellCroppingAsJson(request, result) : TellCropping(request, result);
    if (result.isMemoryRefused) // told as every command tells it
        throw std::bad_alloc();
    return ExitStatus(result.end);
}

} // namespace

void AddCropCommand(CLI::App& program, int& exitStatus) {
    const auto options = std::make_shared<SCropOptions>();
    CLI::App& command =
        AddCommand(program, "crop", "Cut a rectangle, or all cabinets, out of a file", kCropNotes,
                   exitStatus, [options] { return Crop(*options); });
    AddCropOptions(command, *options);
}

} // namespace trevolt
