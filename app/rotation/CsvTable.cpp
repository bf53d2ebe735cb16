#include "app/rotation/CsvTable.h"

#include <array>
#include <cerrno>
#include <utility>

#include <fmt/format.h>

#include "app/rotation/Obstacles.h"
#include "platform/FileStream.h"
#include "platform/SystemError.h"
#include "platform/TrimmedText.h"

namespace trevolt {
namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr const char* kGiveReadable = ": give a file that can be read";
/// What stands between fields that a program has saved its own way.
struct SForeignSeparator {
    char separator;
    const char* problem;
};
constexpr std::array kForeignSeparators{
    SForeignSeparator{';', "fields are separated by commas, and this row has semicolons: save the "
                           "table with commas between"},
    SForeignSeparator{'\t', "fields are separated by commas, and this row has tabs: save the table "
                            "with commas between"}};

/// Empty where no such separator is in the text.
std::string ForeignSeparatorIn(std::string_view text) {
    for (const SForeignSeparator& foreign : kForeignSeparators)
        if (text.find(foreign.separator) != std::string_view::npos)
            return foreign.problem;
    return {};
}

/// Takes a text row by row.
class CCsvSplitter {
  public:
    CCsvSplitter(std::string_view text, SCsvTable& table)
        : m_text(text), m_table(table), m_problems(table.problems) {}

    void Split() {
        while (m_place < m_text.size())
            TakeRow();
    }

  private:
    bool IsAtEnd() const { return m_place >= m_text.size(); }

    /// Of a line that ends at the place; the length of its end.
    std::size_t LineEnd() const {
        if (IsAtEnd())
            return 0;
        if (m_text[m_place] == '\n')
            return 1;
        return m_text.substr(m_place, 2) == "\r\n" ? 2 : 0;
    }

    void TakeRow() {
        SCsvRow row;
        row.line = m_line;
        const bool isQuoted = m_text[m_place] == '"';
        std::string problem;
        do
            row.fields.push_back(TakeField(problem));
        while (TakeComma());
        m_place += LineEnd();
        ++m_line;
        if (!isQuoted && row.fields.size() == 1)
            if (std::string foreign = ForeignSeparatorIn(row.fields[0]); !foreign.empty())
                problem = std::move(foreign);
        if (!problem.empty())
            m_problems.Add(fmt::format("line {}: {}", row.line, problem));
        else if (row.fields.size() > 1 || !Trimmed<char>(row.fields[0]).empty())
            m_table.rows.push_back(std::move(row));
    }

    bool TakeComma() {
        if (IsAtEnd() || m_text[m_place] != ',')
            return false;
        ++m_place;
        return true;
    }

    std::string TakeField(std::string& problem) {
        if (IsAtEnd() || m_text[m_place] != '"')
            return TakePlain();
        std::string field = TakeQuoted(problem);
        const std::string rest = TakePlain();
        if (!rest.empty() && problem.empty())
            problem = ForeignSeparatorIn(rest.substr(0, 1));
        if (!rest.empty() && problem.empty())
            problem = "text follows a closing quote: put two quotes for one";
        return field;
    }

    std::string TakePlain() {
        const std::size_t begin = m_place;
        while (!IsAtEnd() && m_text[m_place] != ',' && LineEnd() == 0)
            ++m_place;
        return std::string(m_text.substr(begin, m_place - begin));
    }

    std::string TakeQuoted(std::string& problem) {
        std::string field;
        for (++m_place; !IsAtEnd(); ++m_place) {
            const char c = m_text[m_place];
            if (c == '"' && m_text.substr(m_place, 2) != "\"\"") {
                ++m_place;
                return field;
            }
            m_place += c == '"' ? 1 : 0;
            m_line += c == '\n' ? 1 : 0;
            field += c;
        }
        problem = "a quote is not closed: put one behind the field, or two for one in it";
        return field;
    }

    std::string_view m_text;
    std::size_t m_place = 0;
    std::size_t m_line = 1;
    SCsvTable& m_table;
    CObstacles m_problems;
};

/// Why the system refused the file; not that it has no places to seek, as a pipe.
int RefusalOf(const CInputFile& file) {
    return file.SystemError() == ESPIPE ? 0 : file.SystemError();
}

} // namespace

SCsvTable SplitCsv(std::string_view text) {
    if (text.substr(0, kByteOrderMark.size()) == kByteOrderMark)
        text.remove_prefix(kByteOrderMark.size());
    if (text.find('\0') != std::string_view::npos) // no text, or one of two bytes a character
        return {{}, {"holds zero bytes, as no table does: save it as text, in UTF-8"}};
    SCsvTable table;
    CCsvSplitter(text, table).Split();
    return table;
}

SCsvTable ReadCsv(const std::wstring& path) {
    SCsvTable table;
    errno = 0;
    CInputFile file;
    if (!file.Open(path.c_str())) {
        table.problems.push_back(WithSystemReason("cannot be opened", errno) + kGiveReadable);
        return table;
    }
    const bool hasSize = file.tellg() >= 0; // it is no pipe
    const auto text = ReadToEnd(file, kLargestCsvBytes);
    if (text)
        return SplitCsv(*text);
    if (const int error = RefusalOf(file); error != 0 || file.bad())
        table.problems.push_back(WithSystemReason("cannot be read", error) + kGiveReadable);
    else if (hasSize && file.eof())
        table.problems.emplace_back("cannot be read whole: it ends before the size that the system "
                                    "tells of it: give a copy");
    else
        table.problems.push_back(
            fmt::format("cannot be read whole: give a file of {} bytes at most", kLargestCsvBytes));
    return table;
}

} // namespace trevolt
