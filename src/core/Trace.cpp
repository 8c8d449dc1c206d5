#include "Trace.h"

#include <QDateTime>
#include <QFile>
#include <QMutex>
#include <QStringList>
#include <cstdio>

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
  QFile File;
  bool FileFailed = false;
  QtMessageHandler Previous = nullptr;
};

TTraceChannel &Channel()
{
  static TTraceChannel channel;
  return channel;
}

// Called with the lock held.
void WriteLine(TTraceChannel &channel, const QString &line)
{
  if (channel.File.isOpen()) {
    const QByteArray bytes = (line + u'\n').toUtf8();
    if (channel.File.write(bytes) != bytes.size() || !channel.File.flush()) {
      channel.File.close();
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

void Clear()
{
  TTraceChannel &channel = Channel();
  QMutexLocker locker(&channel.Lock);
  channel.Pending.clear();
  channel.File.close();
  channel.FileFailed = false;
}

void AttachFile(const QString &path)
{
  TTraceChannel &channel = Channel();
  QMutexLocker locker(&channel.Lock);
  channel.File.close();
  channel.File.setFileName(path);
  if (!channel.File.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Text)) {
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
  channel.File.close();
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
