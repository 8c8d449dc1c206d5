#pragma once

#include <QString>
#include <QStringList>

struct TReportOutput;

// The files an interactive "Generate Mail" leaves beside the settings file:
// <base>.to and <base>.cc (one address a line, UTF-8, CR LF) and <base>.html
// (the report in UTF-16 little-endian with a byte-order mark). Returns the path
// of the .html file. Raises EWriteError naming the file that cannot be written.
QString SaveReportFiles(const QString &base, const TReportOutput &report);
