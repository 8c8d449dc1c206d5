#include "SmtpTestServer.h"

#include "DemoCertificate.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QTcpServer>

TSmtpTestServer::TSmtpTestServer(const TOptions &options)
{
  const TDemoCertificate certificate = MakeDemoCertificate();
  const QString key = FDir.filePath(QStringLiteral("key.pem"));
  for (const auto &[path, pem] : {std::pair{CertificateFile(), certificate.CertificatePem}, std::pair{key, certificate.KeyPem}}) {
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(pem) != pem.size())
      FFailure = QStringLiteral("cannot write ") + path;
  }

  static const char *const modes[] = {"plain", "starttls", "smtps"};
  QStringList arguments{QStringLiteral(QUORVEX_SMTP_TEST_SERVER), QStringLiteral("--mode"),
                        QLatin1String(modes[options.Mode]), QStringLiteral("--port"), QString::number(options.Port),
                        QStringLiteral("--dir"), FDir.path()};
  if (!options.User.isEmpty())
    arguments << QStringLiteral("--user") << options.User << QStringLiteral("--password") << options.Password;
  arguments << options.Faults;
  FProcess.setProcessChannelMode(QProcess::ForwardedErrorChannel);
  FProcess.start(QStringLiteral(QUORVEX_SYSTEM_PYTHON), arguments);
  while (FPort == 0 && (FProcess.canReadLine() || FProcess.waitForReadyRead(10000)))
    if (const QByteArray line = FProcess.canReadLine() ? FProcess.readLine() : QByteArray(); line.startsWith("READY "))
      FPort = line.mid(6).trimmed().toInt();
  if (FPort == 0 && FFailure.isEmpty())
    FFailure = QStringLiteral("the SMTP test server did not start: ") + FProcess.errorString();
}

TSmtpTestServer::~TSmtpTestServer()
{
  FProcess.closeWriteChannel();
  if (!FProcess.waitForFinished(5000)) {
    FProcess.kill();
    FProcess.waitForFinished(2000);
  }
}

QList<QJsonObject> TSmtpTestServer::Messages() const
{
  QList<QJsonObject> messages;
  const QDir out(FDir.path());
  for (const QString &name : out.entryList({QStringLiteral("*.json")}, QDir::Files, QDir::Name)) {
    QFile file(out.filePath(name));
    if (file.open(QIODevice::ReadOnly))
      messages.append(QJsonDocument::fromJson(file.readAll()).object());
  }
  return messages;
}

QJsonArray ReadWorkbook(const QByteArray &xlsx)
{
  QTemporaryDir dir;
  QFile file(dir.filePath(QStringLiteral("book.xlsx")));
  if (!file.open(QIODevice::WriteOnly) || file.write(xlsx) != xlsx.size())
    return {};
  file.close();
  QProcess reader;
  reader.setProcessChannelMode(QProcess::ForwardedErrorChannel);
  reader.start(QStringLiteral(QUORVEX_SYSTEM_PYTHON), {QStringLiteral(QUORVEX_READ_WORKBOOK), file.fileName()});
  reader.waitForFinished(30000);
  return QJsonDocument::fromJson(reader.readAllStandardOutput()).array();
}

int UnusedPort()
{
  QTcpServer probe;
  probe.listen(QHostAddress::LocalHost, 0);
  return probe.serverPort();
}
