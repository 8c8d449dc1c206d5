#include "Trace.h"

#include <QDateTime>
#include <QFile>
#include <QMutex>
#include <QStringList>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <unistd.h>

Q_LOGGING_CATEGORY(lcCore, "quorvex.core")
Q_LOGGING_CATEGORY(lcSettings, "quorvex.settings")
Q_LOGGING_CATEGORY(lcApp, "quorvex.app")
Q_LOGGING_CATEGORY(lcRest, "quorvex.rest")

namespace {

struct TTraceChannel
{
  QMutex Lock;
  bool EchoToStderr = false;
  QStringList Pending; // lines kept until a file is attached
  QFile File;       // the new trace, beside the attached name until Shutdown
  QString Target;   // the attached name, which the new trace replaces once whole
  bool FileFailed = false;
  QtMessageHandler Previous = nullptr;
};

TTraceChannel &Channel()
{
  static TTraceChannel channel;
  return channel;
}

// Closes and deletes a file whose last writes may have failed (QFile::remove
// gives up when the close reports that failure).
void Remove(QFile &file)
{
  file.close();
  QFile::remove(file.fileName());
}

// Called with the lock held.
void WriteLine(TTraceChannel &channel, const QString &line)
{
  if (channel.File.isOpen()) {
    const QByteArray bytes = (line + u'\n').toUtf8();
    if (channel.File.write(bytes) != bytes.size() || !channel.File.flush()) {
      // The previous trace stays whole; the broken new one goes.
      std::fprintf(stderr, "Trace log \"%s\" cannot be written: %s; the previous one is kept\n",
                   qPrintable(channel.Target), qPrintable(channel.File.errorString()));
      Remove(channel.File);
      channel.FileFailed = true;
    }
  } else if (!channel.FileFailed) {
    channel.Pending.append(line);
  }
}

void Handler(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
  TTraceChannel &channel = Channel();
  const bool ours = context.category && qstrncmp(context.category, "quorvex.", 8) == 0;
  if (!ours) {
    // Qt's own messages keep their usual route.
    if (channel.Previous)
      channel.Previous(type, context, message);
    return;
  }
  const QString line = QDateTime::currentDateTime().toString(QStringLiteral("HH:mm:ss.zzz ")) + message;
  QMutexLocker locker(&channel.Lock);
  WriteLine(channel, line);
  // Warnings and worse reach stderr; debug and info lines only when asked.
  if (channel.EchoToStderr || (type != QtDebugMsg && type != QtInfoMsg)) {
    std::fputs(qPrintable(line), stderr);
    std::fputc('\n', stderr);
  }
}

} // namespace

namespace Trace {

void Install(bool echoToStderr)
{
  TTraceChannel &channel = Channel();
  {
    QMutexLocker locker(&channel.Lock);
    channel.EchoToStderr = echoToStderr;
  }
  QtMessageHandler previous = qInstallMessageHandler(Handler);
  if (previous != Handler)
    channel.Previous = previous;
}

// Called with the lock held: the new trace is given up, the attached one kept.
void Discard(TTraceChannel &channel)
{
  if (channel.File.isOpen())
    Remove(channel.File);
}

void Clear()
{
  TTraceChannel &channel = Channel();
  QMutexLocker locker(&channel.Lock);
  channel.Pending.clear();
  Discard(channel);
  channel.FileFailed = false;
}

void AttachFile(const QString &path)
{
  TTraceChannel &channel = Channel();
  QMutexLocker locker(&channel.Lock);
  Discard(channel);
  channel.Target = path;
  channel.File.setFileName(path + QStringLiteral(".new"));
  if (!channel.File.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Text,
                         QFileDevice::ReadOwner | QFileDevice::WriteOwner)) {
    // The trace is a help, never a condition: say it once and go on without it.
    std::fprintf(stderr, "Trace log \"%s\" cannot be written: %s\n", qPrintable(path),
                 qPrintable(channel.File.errorString()));
    channel.FileFailed = true;
    channel.Pending.clear();
    return;
  }
  channel.FileFailed = false;
  const QStringList pending = std::exchange(channel.Pending, {});
  for (const QString &line : pending)
    WriteLine(channel, line);
}

QString FilePath()
{
  TTraceChannel &channel = Channel();
  QMutexLocker locker(&channel.Lock);
  return channel.File.isOpen() ? channel.File.fileName() : QString();
}

void Shutdown()
{
  TTraceChannel &channel = Channel();
  QMutexLocker locker(&channel.Lock);
  if (!channel.File.isOpen())
    return;
  const bool synced = channel.File.flush() && ::fsync(channel.File.handle()) == 0;
  channel.File.close();
  if (!synced || channel.File.error() != QFileDevice::NoError) {
    std::fprintf(stderr, "Trace log \"%s\" cannot be written: %s; the previous one is kept\n",
                 qPrintable(channel.Target), synced ? qPrintable(channel.File.errorString()) : std::strerror(errno));
    QFile::remove(channel.File.fileName());
    return;
  }
  if (std::rename(QFile::encodeName(channel.File.fileName()).constData(),
                  QFile::encodeName(channel.Target).constData()) != 0)
    std::fprintf(stderr, "Trace log \"%s\" cannot be written: %s\n", qPrintable(channel.Target),
                 std::strerror(errno));
}

} // namespace Trace

TraceScope::TraceScope(const QLoggingCategory &category, const char *qualifiedName)
    : FCategory(category), FName(qualifiedName)
{
  qCDebug(FCategory).noquote() << "Entering" << FName;
}

TraceScope::~TraceScope()
{
  qCDebug(FCategory).noquote() << "Exiting" << FName;
}

void TraceValue(const QLoggingCategory &category, const char *name, const QString &value)
{
  qCDebug(category).noquote().nospace() << name << " = \"" << value << '"';
}

void TraceValue(const QLoggingCategory &category, const char *name, qint64 value)
{
  qCDebug(category).noquote().nospace() << name << " = " << value;
}

void TraceError(const QLoggingCategory &category, const QString &message)
{
  qCWarning(category).noquote() << "ERROR" << message;
}

void TraceFailure(const QLoggingCategory &category, const QString &message)
{
  qCInfo(category).noquote() << "ERROR" << message;
}
