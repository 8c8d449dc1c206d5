#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QList>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

// A real SMTP server (aiosmtpd, see smtp_test_server.py) on 127.0.0.1 for the
// life of the object, with a fresh certificate (CertificateFile()) for its TLS modes.
class TSmtpTestServer
{
public:
  enum TMode { Plain, StartTls, ImplicitTls };
  struct TOptions
  {
    TMode Mode = Plain;
    int Port = 0; // 0: any free port
    QString User; // empty: no login asked
    QString Password;
    // Faults, as smtp_test_server.py takes them: "--refuse", "a@x.test", "b@x.test=450",
    // "--stall-after-data", "--delay", "2", "--max-recipients", "3", "--fail-data", "1", "--drop-at", "2".
    QStringList Faults;
  };

  explicit TSmtpTestServer(const TOptions &options);
  ~TSmtpTestServer();

  bool Started() const { return FPort > 0; }
  QString Failure() const { return FFailure; } // why it did not start
  int Port() const { return FPort; }
  QString CertificateFile() const { return FDir.filePath(QStringLiteral("cert.pem")); }

  // Summaries of the messages received so far, oldest first (see the script).
  QList<QJsonObject> Messages() const;

private:
  QTemporaryDir FDir;
  QProcess FProcess;
  int FPort = 0;
  QString FFailure;
};

// What a person sees in an XLSX workbook, read back with openpyxl (see
// read_workbook.py): an array of sheets {name, rows, freeze, filter, bold}.
QJsonArray ReadWorkbook(const QByteArray &xlsx);

// A loopback port on which nothing listens.
int UnusedPort();
