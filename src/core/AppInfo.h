#pragma once

#include <QString>

// The application's title: the caption of its message boxes and its name in the
// desktop's menus. The main window keeps its own caption.
inline const QString CApplicationTitle = QStringLiteral("Quorvex ITSM ticket tracking");
