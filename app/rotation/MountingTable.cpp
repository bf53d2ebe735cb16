#include "app/rotation/MountingTable.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <map>
#include <system_error>
#include <utility>

#include <fmt/format.h>

#include "app/rotation/CsvTable.h"
#include "app/rotation/NameOrder.h"
#include "app/rotation/Obstacles.h"
#include "platform/TrimmedText.h"
#include "trevolt/ChromaCorrectCoef.h"
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
constexpr std::string_view kOthers = "*";

struct SColumnName {
    std::string_view name;
    EMountingColumn column;
};

/// The first name of a column is the one that is told.
constexpr std::array kColumnNames{
    SColumnName{"file", EMountingColumn::File}, SColumnName{"name", EMountingColumn::File},
    SColumnName{"x", EMountingColumn::X}, SColumnName{"y", EMountingColumn::Y},
    SColumnName{"angle", EMountingColumn::Angle}};

std::string LowerCase(std::string_view text) {
    std::string lower(text);
    for (char& c : lower)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    return lower;
}

bool Holds(const MountingColumns& columns, EMountingColumn column) {
    return std::find(columns.begin(), columns.end(), column) != columns.end();
}

/// The columns that a heading names; nothing of a row that is none.
std::optional<MountingColumns> HeadingOf(const SCsvRow& row) {
    MountingColumns columns;
    for (const std::string& field : row.fields) {
        const std::string name = LowerCase(Trimmed<char>(field));
        const auto* const known =
            std::find_if(kColumnNames.begin(), kColumnNames.end(),
                         [&](const SColumnName& entry) { return entry.name == name; });
        if (known == kColumnNames.end() || Holds(columns, known->column))
            return std::nullopt;
        columns.push_back(known->column);
    }
    if (columns.size() < 2 || !Holds(columns, EMountingColumn::File))
        return std::nullopt;
    return columns;
}

std::string_view NameOf(EMountingColumn column) {
    return std::find_if(kColumnNames.begin(), kColumnNames.end(),
                        [&](const SColumnName& entry) { return entry.column == column; })
        ->name;
}

/// Takes rows one by one, each file once.
class CMountingRows {
  public:
    CMountingRows(const SMountingForm& form, SMountingTable& table)
        : m_form(form), m_table(table), m_problems(table.problems) {}

    void TakeAll(const std::vector<SCsvRow>& rows) {
        auto row = rows.begin();
        if (row != rows.end())
            m_heading = HeadingOf(*row);
        if (m_heading && !TakeHeading(*row++))
            return;
        m_isFirst = !m_heading;
        for (; row != rows.end(); ++row) {
            Tell(*row, Take(*row));
            m_isFirst = false;
        }
    }

  private:
    void Tell(const SCsvRow& row, const std::string& problem) {
        if (!problem.empty())
            m_problems.Add(fmt::format("line {}: {}", row.line, problem));
    }

    /// False where it lacks a column, so that no row can be taken.
    bool TakeHeading(const SCsvRow& row) {
        const auto lacking =
            std::find_if(m_form.needed.begin(), m_form.needed.end(),
                         [&](EMountingColumn column) { return !Holds(*m_heading, column); });
        if (lacking == m_form.needed.end())
            return true;
        Tell(row, fmt::format("the heading has no {}: {}", NameOf(*lacking), m_form.rowAdvice));
        return false;
    }

    /// Null, with the problem told, where the row has another number of fields.
    const MountingColumns* ColumnsOf(const SCsvRow& row, std::string& problem) const {
        const std::size_t count = row.fields.size();
        const char* const plural = count == 1 ? "" : "s";
        if (m_heading && m_heading->size() == count)
            return &*m_heading;
        if (m_heading) {
            problem = fmt::format("has {} field{}, and the heading has {}: give as many", count,
                                  plural, m_heading->size());
            return nullptr;
        }
        const auto found =
            std::find_if(m_form.plain.begin(), m_form.plain.end(),
                         [&](const MountingColumns& columns) { return columns.size() == count; });
        if (found != m_form.plain.end())
            return &*found;
        problem = fmt::format("has {} field{}: {}", count, plural, m_form.rowAdvice);
        return nullptr;
    }

    /// What is wrong with a row; empty when it is taken.
    std::string Take(const SCsvRow& row) {
        std::string problem;
        const MountingColumns* const columns = ColumnsOf(row, problem);
        SMountingRow taken;
        for (std::size_t i = 0; columns != nullptr && i < columns->size() && problem.empty(); ++i)
            problem = TakeField((*columns)[i], row.fields[i], taken);
        if (problem.empty())
            problem = TakeOnce(row, std::move(taken));
        return problem;
    }

    std::string TakeField(EMountingColumn column, const std::string& field,
                          SMountingRow& row) const {
        switch (column) {
        case EMountingColumn::File:
            return TakeName(field, row.name);
        case EMountingColumn::X:
            return TakeCoordinate(field, row.place.x);
        case EMountingColumn::Y:
            return TakeCoordinate(field, row.place.y);
        case EMountingColumn::Angle:
            break;
        }
        const auto code = AngleCode(Trimmed<char>(field));
        row.code = code.value_or(0);
        return code ? std::string() : Refusal(field, "angle", "0, 90, 180, 270, -90 or -180");
    }

    /// What a field should be. The first row may be meant as a heading.
    std::string Refusal(const std::string& field, const char* what,
                        const std::string& wanted) const {
        const std::string found = Trimmed<char>(field).empty()
                                      ? fmt::format("has no {}", what)
                                      : fmt::format("{} is no {}", field, what);
        return fmt::format("{}: give {}{}{}", found, wanted, m_isFirst ? ", or the heading " : "",
                           m_isFirst ? m_form.heading : "");
    }

    std::string TakeName(const std::string& field, std::wstring& name) const {
        auto wide = Utf8ToWide(field);
        if (!wide)
            return "the file's name is not valid UTF-8: save the table as UTF-8";
        if (field.empty())
            return fmt::format("has no file: give its name{}",
                               m_form.takesOthers ? ", or * for all that have no row" : "");
        if (field == kOthers && !m_form.takesOthers)
            return "* has no place: give every file a row of its own";
        name = *std::move(wide);
        return {};
    }

    std::string TakeCoordinate(const std::string& field, std::int64_t& coordinate) const {
        if (!m_form.hasPlaces)
            return {};
        const auto number = Coordinate(Trimmed<char>(field));
        coordinate = number.value_or(0);
        return number ? std::string()
                      : Refusal(field, "coordinate",
                                fmt::format("whole pixels from -{0} to {0}", kLargestMapSide));
    }

    std::string TakeOnce(const SCsvRow& row, SMountingRow taken) {
        const auto [earlier, isNew] = m_lines.emplace(taken.name, row.line);
        if (!isNew)
            return fmt::format("{} stands in line {} already: keep one of the two",
                               WideToShownUtf8(taken.name), earlier->second);
        taken.line = row.line;
        m_table.rows.push_back(std::move(taken));
        return {};
    }

    const SMountingForm& m_form;
    SMountingTable& m_table;
    CObstacles m_problems;
    std::optional<MountingColumns> m_heading;
    bool m_isFirst = false; ///< the row that is taken, of a table without a heading
    std::map<std::wstring, std::size_t, SNameOrder> m_lines; ///< in which each file stands
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

std::optional<std::int32_t> Coordinate(std::string_view text) {
    std::int32_t number = 0;
    const char* const textEnd = text.data() + text.size();
    const auto [end, error] = std::from_chars(text.data(), textEnd, number);
    if (error != std::errc{} || end != textEnd || number < -kLargestMapSide ||
        number > kLargestMapSide)
        return std::nullopt;
    return number;
}

SMountingTable ReadMountingTable(const std::wstring& path, const SMountingForm& form) {
    const SCsvTable csv = ReadCsv(path);
    SMountingTable table;
    table.problems = csv.problems;
    CMountingRows(form, table).TakeAll(csv.rows);
    if (table.rows.empty() && table.problems.empty())
        table.problems.push_back(fmt::format("holds no row: {}", form.tableAdvice));
    return table;
}

} // namespace trevolt
