#include <cerrno>
#include <cstdio>
#include <new>
#include <sstream>
#include <string>
#include <string_view>
#include <system_error>

#include <fmt/format.h>

#include "cli/CommandLine.h"
#include "cli/Commands.h"
#include "cli/OptionGroup.h"
#include "cli/Program.h"
#include "cli/ShownText.h"
#include "platform/ConsoleProgram.h"
#include "platform/SystemError.h"

namespace trevolt {
namespace {

std::string WithArticle(const std::string& name) {
    constexpr std::string_view kVowels = "AEIOU";
    return (kVowels.find(name.front()) == std::string_view::npos ? "a " : "an ") + name;
}

/// "a SOURCE and a TARGET": the places that a command needs.
std::string NeededPlaces(const CLI::App& command) {
    std::string places;
    for (const CLI::Option* place :
         command.get_options([](const CLI::Option* option) { return option->get_positional(); }))
        places += (places.empty() ? "" : " and ") + WithArticle(place->get_name(true));
    return places;
}

/// What is wrong, and what to do.
std::string Advice(const CLI::App& program, const CLI::ParseError& error) {
    std::string problem = error.what();
    const CLI::App& command = *program.get_subcommands().front();
    if (dynamic_cast<const CLI::RequiredError*>(&error) != nullptr)
        return fmt::format("{} needs {}: see trevolt-cli {} --help", command.get_name(),
                           NeededPlaces(command), command.get_name());
    if (dynamic_cast<const CLI::ExcludesError*>(&error) != nullptr)
        return problem + ": give one of them";
    if (dynamic_cast<const CLI::RequiresError*>(&error) != nullptr)
        return problem + ": give both";
    return problem;
}

int Run(const std::vector<std::string>& arguments) {
    int exitStatus = kExitAllDone;
    const auto program = MakeProgram(exitStatus);
    SCommandLine line = ArrangeWords(*program, arguments);
    if (!line.mistake.empty()) {
        Complain("{}", line.mistake);
        return kExitUsage;
    }
    try {
        program->parse(std::vector(line.words.rbegin(), line.words.rend())); // taken from the back
    } catch (const CLI::Success& wish) {
        std::ostringstream told; // printed as all else is, so that an error is seen
        const int status = program->exit(wish, told);
        fmt::print("{}", told.str());
        return status;
    } catch (const CLI::ParseError& error) {
        Complain("{}", Advice(*program, error));
        return kExitUsage;
    } catch (const CUsageError& error) {
        Complain("{}", error.what());
        return kExitUsage;
    }
    return exitStatus;
}

/// Printing throws when its place takes no more; what else throws so has a cause of its own.
void ReportSystemError(const std::system_error& error) {
    const std::string reason = SystemErrorText(error.code().value());
    const std::string cause =
        std::ferror(stdout) != 0 ? "the standard output cannot be written: " + reason : reason;
    std::fputs(("trevolt-cli: " + cause + "\n").c_str(), stderr); // which may be lost itself
}

} // namespace

int StatusWithoutMemory(std::string_view firstArgument) noexcept {
    return FailureStatus(firstArgument);
}

int ConsoleMain(const std::vector<std::string>& arguments) {
    const std::string_view command = arguments.empty() ? "" : std::string_view(arguments.front());
    try {
        const int status = Run(arguments);
        if (std::fflush(stdout) == 0)
            return status;
        throw std::system_error(errno, std::generic_category());
    } catch (const std::system_error& error) {
        ReportSystemError(error);
    } catch (const std::bad_alloc&) {
        std::fputs("trevolt-cli: not enough memory: close other programs", stderr);
        std::fputs(command == kRotateCommand ? ", or give rotate fewer --jobs\n" : "\n", stderr);
    }
    return FailureStatus(command);
}

} // namespace trevolt
