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

// Writes the lines kept so far, and every later line, to a new file beside
// `path` (readable by its owner only), which replaces `path` at Shutdown once
// every byte of it reached the disk: a trace that cannot be written leaves the
// previous one whole.
void AttachFile(const QString &path);

// Path of the trace file being written, empty when none.
QString FilePath();

// Syncs the trace file and puts it in place of the attached path.
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
