#include "SingleInstance.h"

#include "core/AtomicFile.h"
#include "core/Errors.h"
#include "core/Trace.h"

#include <QCryptographicHash>
#include <QLocalServer>
#include <QLocalSocket>
#include <QFileInfo>
#include <QFile>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {
constexpr int CAnswerTimeoutMs = 2000;
const QByteArray CRaiseMessage = QByteArrayLiteral("raise\n");
} // namespace

TSingleInstance::TSingleInstance(const QString &key, QObject *parent) : QObject(parent)
{
  const QByteArray digest = QCryptographicHash::hash(key.toUtf8(), QCryptographicHash::Sha256).toHex().left(16);
  FServerName = QStringLiteral("quorvex-followup-%1-%2").arg(getuid()).arg(QString::fromLatin1(digest));

  // The lock lies beside the settings file, so that every start on these
  // settings meets it, from a desktop session or from cron alike (their
  // environments differ: cron has no XDG_RUNTIME_DIR, for one).
  const QFileInfo settings(key);
  const QString lockPath = settings.absoluteFilePath() + QStringLiteral(".lock");
  QString failure;
  try {
    MakePrivateFolder(settings.absolutePath());
    FLockDescriptor = ::open(QFile::encodeName(lockPath).constData(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (FLockDescriptor < 0)
      failure = QString::fromLocal8Bit(std::strerror(errno));
  } catch (const EQuorvexError &error) {
    failure = error.Message();
  }
  if (FLockDescriptor >= 0) {
    FPrimary = ::flock(FLockDescriptor, LOCK_EX | LOCK_NB) == 0;
    if (!FPrimary && errno != EWOULDBLOCK) {
      failure = QString::fromLocal8Bit(std::strerror(errno));
      FPrimary = true;
    }
  } else {
    // No lock can be made there (a read-only folder, say): that says nothing of
    // another instance, so this one goes on unguarded; the settings will tell
    // the user what is wrong with the folder.
    FPrimary = true;
  }
  if (!failure.isEmpty())
    TraceValue(lcApp(), "Single-instance lock cannot be taken, running unguarded", lockPath + QStringLiteral(": ") + failure);
  if (!FPrimary)
    return;

  FServer = new QLocalServer(this);
  FServer->setSocketOptions(QLocalServer::UserAccessOption);
  QLocalServer::removeServer(FServerName); // a socket left by a crash; we hold the lock
  if (!FServer->listen(FServerName))
    TraceError(lcApp(), QStringLiteral("The single-instance socket %1 cannot listen: %2")
                          .arg(FServerName, FServer->errorString()));
  connect(FServer, &QLocalServer::newConnection, this, [this] {
    while (QLocalSocket *socket = FServer->nextPendingConnection()) {
      connect(socket, &QLocalSocket::readyRead, this, [this, socket] {
        if (socket->readAll().contains(CRaiseMessage.trimmed()))
          emit RaiseRequested();
        socket->disconnectFromServer();
      });
      connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
    }
  });
}

TSingleInstance::~TSingleInstance()
{
  // Closing releases the lock; the file stays, as removing it could race with a
  // start that has just opened it.
  if (FLockDescriptor >= 0)
    ::close(FLockDescriptor);
}

bool TSingleInstance::AskPrimaryToRaise() const
{
  QLocalSocket socket;
  socket.connectToServer(FServerName);
  if (!socket.waitForConnected(CAnswerTimeoutMs))
    return false;
  socket.write(CRaiseMessage);
  return socket.waitForBytesWritten(CAnswerTimeoutMs);
}
