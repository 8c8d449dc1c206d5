#pragma once

#include "IniFile.h"

#include <cstdint>

// Lists in the settings file are a count key and numbered entries. A count beyond
// this bound can only come from a damaged file; it is cut so that reading stays
// quick.
inline constexpr std::int32_t CMaxListEntries = 100000;

// The count stored under `key`, 0 when missing or not a number, cut to
// [0, CMaxListEntries] (a cut is traced).
std::int32_t ReadListCount(const TIniFile &ini, const QString &section, const QString &key);
