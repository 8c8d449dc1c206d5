#pragma once

#include "rest/uTypes.h"

// The colours chosen for priorities and statuses. Each writer erases its sections
// whole before writing them again, so that a priority or status that no longer
// exists leaves no key behind:
//   Setting::PriorityCodes    priority reference = display text
//   Setting::PriorityColours  display text       = colour as a decimal integer
//   Setting::StatusColours    status reference   = colour as a decimal integer

void SavePriorities(const QString &iniPath, const tyRestObjects &priorities);
void SaveStatus(const QString &iniPath, const tyRestObjects &statuses);
