#pragma once

#include <QLoggingCategory>
#include <QString>

// The trace channel: every handler, settings operation and service query writes
// "Entering X" / "Exiting X" lines, named values and error lines to a logging
// category. The channel keeps the lines of the current run, writes them to the
// trace log file once it is attached, and echoes them to stderr when asked.
// Nothing here may ever stop the program: a file that cannot be written only
// loses the trace.

Q_DECLARE_LOGGING_CATEGORY(lcCore)
Q_DECLARE_LOGGING_CATEGORY(lcSettings)
Q_DECLARE_LOGGING_CATEGORY(lcApp)
Q_DECLARE_LOGGING_CATEGORY(lcRest)

namespace Trace {

// Routes every message of the program's categories to the channel. Called once
// at start-up; `echoToStderr` is the --verbose switch.
void Install(bool echoToStderr);

// Forgets the lines kept so far and detaches any file ("clear" of the viewer).
void Clear();

// Writes the lines kept so far to `path` (replacing the file) and appends every
// later line to it.
void AttachFile(const QString &path);

// Path of the attached trace file, empty when none.
QString FilePath();

// Flushes and closes the trace file.
void Shutdown();

} // namespace Trace

// Sends "Entering <name>" now and "Exiting <name>" when the scope ends, however
// it ends.
class TraceScope
{
public:
  TraceScope(const QLoggingCategory &category, const char *qualifiedName);
  ~TraceScope();
  TraceScope(const TraceScope &) = delete;
  TraceScope &operator=(const TraceScope &) = delete;

private:
  const QLoggingCategory &FCategory;
  const char *FName;
};

// `name = "value"`, the form used for paths and texts.
void TraceValue(const QLoggingCategory &category, const char *name, const QString &value);
void TraceValue(const QLoggingCategory &category, const char *name, qint64 value);
// An error line: "ERROR " followed by the message, in the trace and on stderr.
void TraceError(const QLoggingCategory &category, const QString &message);
// The same line kept in the trace only (stderr with --verbose): the program's own
// words for a failure that the caller reports to the person in plain words.
void TraceFailure(const QLoggingCategory &category, const QString &message);
