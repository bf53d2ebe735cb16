// Names of the files that belong to the program and of what stands in its settings file.
#pragma once

namespace trevolt {

inline constexpr const wchar_t* kSettingsFile = L"Trevo.ini";
inline constexpr const wchar_t* kSettingsSection = L"coefInfo";
inline constexpr const wchar_t* kKeySourceFolder = L"OriCoefPath";
inline constexpr const wchar_t* kKeyTargetFolder = L"TargetCoefPath";
inline constexpr const wchar_t* kKeyCabinetWidth = L"BoxWidth";
inline constexpr const wchar_t* kKeyCabinetHeight = L"BoxHeight";
inline constexpr const wchar_t* kKeyScreenWidth = L"ScreenWidth";
inline constexpr const wchar_t* kKeyScreenHeight = L"ScreenHeight";

/// Side files of a calibration: their names are taken, and no run opens them.
inline constexpr const wchar_t* kFirstBoxTrisFile = L"FirstBoxTris.csv";
inline constexpr const wchar_t* kBoxTrisRatioFile = L"BoxTrisRatio.csv";
inline constexpr const wchar_t* kFcclRespondFile = L"FcclRespond.csv";

/// What a folder field says until a folder is set. Fetched once, before any language is chosen.
inline constexpr const wchar_t* kKeyPlaceholder = L"Trevolt_Select_Path_Please";

} // namespace trevolt
