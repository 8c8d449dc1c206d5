#pragma once

#include "rest/uTypes.h"

class TColourStore;

// The status and priority lists of the colour settings, built from the
// repository objects of the service.

// Texts sorted and made unique ignoring case, in the order of the current locale.
QStringList SortedUniqueIgnoringCase(const QStringList &texts);

// One status per distinct reference, sorted: id = position, _reference and Text =
// the status name, BgColor = its saved (or default) colour.
tyRestObjects BuildStatusList(const tyRestObjects &objects, TColourStore &colours);

// One priority per distinct "subType - reference", sorted: id = position,
// _reference = that long text, Text = its short code, BgColor = the colour of the
// code.
tyRestObjects BuildPriorityList(const tyRestObjects &objects, TColourStore &colours);
