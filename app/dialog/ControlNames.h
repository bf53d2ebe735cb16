// How controls are called where they are not seen: by a screen reader.
#pragma once

#include <string>

namespace trevolt {

/// `text` as it is read aloud: without the mark of its access key ("Sta&rt", or "(&R)" at the end).
std::wstring WithoutAccessKey(const std::wstring& text);

/// The name of a button that other buttons share their text with, from its text and the label of what
/// it belongs to.
std::wstring ButtonName(const std::wstring& button, const std::wstring& label);

} // namespace trevolt
