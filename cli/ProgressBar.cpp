#include "cli/ProgressBar.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>
#include <vector>

#include <fmt/format.h>

namespace trevolt {
namespace {

constexpr std::size_t kShortestBar = 10;
constexpr std::size_t kLongestBar = 40;
constexpr std::chrono::seconds kFirstEstimate{1};

double Seconds(std::chrono::milliseconds time) {
    return std::chrono::duration<double>(time).count();
}

std::string Scaled(double number, std::string_view unit) {
    struct SScale {
        double factor;
        std::string_view prefix;
    };
    constexpr std::array kScales{SScale{1e9, "G"}, SScale{1e6, "M"}, SScale{1e3, "k"}};
    for (const SScale& scale : kScales)
        if (number >= scale.factor)
            return fmt::format("{:.1f} {}{}", number / scale.factor, scale.prefix, unit);
    return fmt::format("{:.1f} {}", number, unit);
}

std::string Rate(const SProgress& progress) {
    const double seconds = Seconds(progress.elapsed);
    if (progress.pixels == 0)
        return Scaled(static_cast<double>(progress.done) / seconds, "files/s");
    return Scaled(static_cast<double>(progress.pixels) / seconds, "pixel/s");
}

std::string TimeLeft(const SProgress& progress) {
    const auto done = static_cast<double>(progress.done);
    const auto left = static_cast<double>(progress.count - progress.done);
    const auto seconds =
        static_cast<std::uint64_t>(std::llround(Seconds(progress.elapsed) / done * left));
    if (seconds < 60)
        return fmt::format("{} s left", seconds);
    if (seconds < 3600)
        return fmt::format("{} min {:02} s left", seconds / 60, seconds % 60);
    return fmt::format("{} h {:02} min left", seconds / 3600, seconds / 60 % 60);
}

std::string Bar(const SProgress& progress, std::size_t length) {
    const std::size_t filled = length * progress.done / progress.count;
    return "[" + std::string(filled, '#') + std::string(length - filled, '-') + "]  ";
}

} // namespace

std::string ProgressText(const SProgress& progress, std::size_t columns) {
    if (progress.count == 0)
        return {};
    const std::string share = fmt::format("{:3} %  ", 100 * progress.done / progress.count);
    const std::string files = fmt::format("{} of {} files", progress.done, progress.count);
    std::string rate;
    std::string left;
    if (progress.elapsed >= kFirstEstimate && progress.done > 0) {
        rate = "  " + Rate(progress);
        left = "  " + TimeLeft(progress);
    }
    const std::string whole = share + files + rate + left;
    constexpr std::size_t kFrame = 4; // brackets and blanks
    if (whole.size() + kFrame + kShortestBar <= columns)
        return Bar(progress, std::min(kLongestBar, columns - whole.size() - kFrame)) + whole;
    for (const std::string& text :
         {whole, fmt::format("{}{}{}", share, files, left), share + files, files})
        if (text.size() <= columns)
            return text;
    return files.substr(0, columns);
}

} // namespace trevolt
