#include "app/rotation/AngleTable.h"

#include <algorithm>
#include <array>
#include <map>

#include <fmt/format.h>

#include "app/rotation/CsvTable.h"
#include "platform/TrimmedText.h"
#include "trevolt/Utf8.h"

namespace trevolt {
namespace {

struct SAngleText {
    std::string_view text;
    std::uint32_t code;
};

constexpr std::array kAngleTexts{SAngleText{"0", 0},   SAngleText{"90", 1},  SAngleText{"180", 2},
                                 SAngleText{"270", 3}, SAngleText{"-90", 3}, SAngleText{"-180", 2}};
constexpr std::string_view kDegree = "\u00B0";

std::string LowerCase(std::string_view text) {
    std::string lower(text);
    for (char& c : lower)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    return lower;
}

bool IsHeading(const SCsvRow& row) {
    return row.fields.size() == 2 && LowerCase(Trimmed<char>(row.fields[0])) == "file" &&
           LowerCase(Trimmed<char>(row.fields[1])) == "angle";
}

/// Takes rows one by one, each file once.
class CAngleRows {
  public:
    explicit CAngleRows(SAngleTable& table) : m_table(table) {}

    void Take(const SCsvRow& row) {
        if (std::string problem = TakeOrProblem(row); !problem.empty())
            m_table.problems.push_back(fmt::format("line {}: {}", row.line, problem));
    }

  private:
    std::string TakeOrProblem(const SCsvRow& row) {
        if (row.fields.size() != 2)
            return fmt::format("has {} field{}: give a file and its angle, with a comma between",
                               row.fields.size(), row.fields.size() == 1 ? "" : "s");
        const std::string& name = row.fields[0];
        auto wide = Utf8ToWide(name);
        if (!wide)
            return "the file's name is not valid UTF-8: save the table as UTF-8";
        if (name.empty())
            return "has no file: give its name, or * for all that have no row";
        const auto code = AngleCode(Trimmed<char>(row.fields[1]));
        if (!code)
            return fmt::format("{} is no angle: give 0, 90, 180, 270, -90 or -180", row.fields[1]);
        const auto [earlier, isNew] = m_lines.emplace(name, row.line);
        if (!isNew)
            return fmt::format("{} stands in line {} already", name, earlier->second);
        m_table.rows.push_back({*std::move(wide), *code});
        return {};
    }

    SAngleTable& m_table;
    std::map<std::string, std::size_t> m_lines;
};

} // namespace

std::optional<std::uint32_t> AngleCode(std::string_view text) {
    if (text.ends_with(kDegree))
        text.remove_suffix(kDegree.size());
    const auto* const found =
        std::find_if(kAngleTexts.begin(), kAngleTexts.end(),
                     [text](const SAngleText& known) { return known.text == text; });
    if (found == kAngleTexts.end())
        return std::nullopt;
    return found->code;
}

SAngleTable ReadAngleTable(const std::wstring& path) {
    const SCsvTable csv = ReadCsv(path);
    SAngleTable table;
    table.problems = csv.problems;
    CAngleRows rows(table);
    for (const SCsvRow& row : csv.rows)
        if (&row != &csv.rows.front() || !IsHeading(row))
            rows.Take(row);
    if (table.rows.empty() && table.problems.empty())
        table.problems.emplace_back("holds no row: give a file and its angle a line");
    return table;
}

} // namespace trevolt
