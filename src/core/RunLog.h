#pragma once

#include <QDateTime>
#include <QString>

// Date and time as the run log writes them: the locale's short date, a blank and
// its long time; at exactly midnight the time is left out.
QString LogDateTime(const QDateTime &moment);

// A run-log line: the current date and time followed by `text` (which starts
// with " - ").
QString LogLine(const QString &text);
