#include "app/inspection/NaturalOrder.h"

#include <algorithm>
#include <cstddef>

namespace trevolt {
namespace {

bool IsDigit(wchar_t c) { return c >= L'0' && c <= L'9'; }

/// Takes the run of digits that a text begins with, without leading zeros.
std::wstring_view TakeNumber(std::wstring_view& text) {
    const auto end = std::find_if_not(text.begin(), text.end(), IsDigit);
    std::wstring_view digits = text.substr(0, static_cast<std::size_t>(end - text.begin()));
    text.remove_prefix(digits.size());
    digits.remove_prefix(std::min(digits.find_first_not_of(L'0'), digits.size()));
    return digits;
}

} // namespace

bool IsBeforeNaturally(std::wstring_view a, std::wstring_view b) {
    const std::wstring_view wholeA = a;
    const std::wstring_view wholeB = b;
    while (!a.empty() && !b.empty()) {
        if (IsDigit(a.front()) && IsDigit(b.front())) {
            const std::wstring_view numberA = TakeNumber(a);
            const std::wstring_view numberB = TakeNumber(b);
            if (numberA.size() != numberB.size())
                return numberA.size() < numberB.size();
            if (numberA != numberB)
                return numberA < numberB;
            continue;
        }
        if (a.front() != b.front())
            return a.front() < b.front();
        a.remove_prefix(1);
        b.remove_prefix(1);
    }
    if (a.empty() && b.empty())
        return wholeA < wholeB; // "1" and "01" are two names
    return a.empty();
}

} // namespace trevolt
