#pragma once

#include <QDateTime>
#include <QString>

// A run-log line: the current date and time followed by `text` (which starts
// with " - ").
QString LogLine(const QString &text);
