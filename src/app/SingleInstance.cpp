#include "SingleInstance.h"

#include "core/Trace.h"

#include <QCryptographicHash>
#include <QLocalServer>
#include <QLocalSocket>
#include <QFileInfo>
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
  FLock = std::make_unique<TFileLock>(QFileInfo(key).absoluteFilePath() + QStringLiteral(".lock"));
  FPrimary = FLock->IsHeld();
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

TSingleInstance::~TSingleInstance() = default;

bool TSingleInstance::AskPrimaryToRaise() const
{
  QLocalSocket socket;
  socket.connectToServer(FServerName);
  if (!socket.waitForConnected(CAnswerTimeoutMs))
    return false;
  socket.write(CRaiseMessage);
  return socket.waitForBytesWritten(CAnswerTimeoutMs);
}
