#pragma once

#include <QList>
#include <QPair>
#include <QString>

// Name and version of each library the program runs on, as the libraries report
// them at run time (SimpleIni, a header library, by the version built against).
QList<QPair<QString, QString>> LibraryVersions();
