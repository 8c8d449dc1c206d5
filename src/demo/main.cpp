// quorvex-demo-service: a stand-in for the Quorvex ITSM service on 127.0.0.1, for
// the tests and for trying the follow-up tool without an account.

#include "DemoData.h"
#include "TDemoService.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QSaveFile>
#include <cstdio>
#include <exception>

namespace {

QJsonObject ReadData(const QString &path)
{
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly))
    throw std::runtime_error(QStringLiteral("Cannot read the data file \"%1\": %2").arg(path, file.errorString()).toStdString());
  QJsonParseError error;
  const QJsonDocument document = QJsonDocument::fromJson(file.readAll(), &error);
  if (!document.isObject())
    throw std::runtime_error(QStringLiteral("The data file \"%1\" is not a JSON object: %2")
                                 .arg(path, error.errorString())
                                 .toStdString());
  return document.object();
}

void WriteFile(const QString &path, const QByteArray &content)
{
  QSaveFile file(path);
  if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size() || !file.commit())
    throw std::runtime_error(QStringLiteral("Cannot write \"%1\": %2").arg(path, file.errorString()).toStdString());
}

void Say(const QString &line)
{
  std::fputs(qPrintable(line + u'\n'), stdout);
  std::fflush(stdout);
}

} // namespace

int main(int argc, char *argv[])
{
  QCoreApplication application(argc, argv);
  QCoreApplication::setApplicationName(QStringLiteral("quorvex-demo-service"));
  QCommandLineParser parser;
  parser.setApplicationDescription(QStringLiteral(
      "Serves the Quorvex ITSM endpoints used by the follow-up tool over HTTPS on 127.0.0.1, from a JSON data "
      "set (a generated sample when --data is not given). Prints the instance to configure and the certificate "
      "to trust (QUORVEX_EXTRA_CA_CERTS). Faults can also be set while running by POSTing them as JSON to "
      "/demo/faults."));
  parser.addHelpOption();
  const QCommandLineOption port(QStringLiteral("port"), QStringLiteral("Port to listen on (default: any free one)."),
                                QStringLiteral("port"), QStringLiteral("0"));
  const QCommandLineOption data(QStringLiteral("data"), QStringLiteral("JSON data file to serve."), QStringLiteral("file"));
  const QCommandLineOption caFile(QStringLiteral("ca-file"),
                                  QStringLiteral("Where to write the certificate that clients must trust "
                                                 "(default: quorvex-demo-ca.pem in the temporary folder)."),
                                  QStringLiteral("file"));
  const QCommandLineOption writeSample(QStringLiteral("write-sample"),
                                       QStringLiteral("Write the sample data set to the file and exit."),
                                       QStringLiteral("file"));
  const QCommandLineOption refuseToken(QStringLiteral("refuse-token"), QStringLiteral("Answer every token request with 401."));
  const QCommandLineOption delay(QStringLiteral("delay-ms"), QStringLiteral("Wait this long before every answer."),
                                 QStringLiteral("ms"), QStringLiteral("0"));
  const QCommandLineOption surplus(QStringLiteral("surplus"),
                                   QStringLiteral("Add this many items to each ticket page beyond its total."),
                                   QStringLiteral("count"), QStringLiteral("0"));
  const QCommandLineOption tooManyOnce(QStringLiteral("too-many-once"),
                                       QStringLiteral("Answer the first ticket-list request with 429 (Retry-After 1 s)."));
  const QCommandLineOption day(QStringLiteral("day"),
                               QStringLiteral("Serve the sample as it stands after this many days of the desk's "
                                              "work: tickets taken, updated, closed and new (default 0)."),
                               QStringLiteral("days"), QStringLiteral("0"));
  parser.addOptions({port, data, caFile, writeSample, refuseToken, delay, surplus, tooManyOnce, day});
  parser.process(application);

  try {
    if (parser.isSet(writeSample)) {
      WriteFile(parser.value(writeSample),
                QJsonDocument(MakeSampleData(QDateTime::currentDateTime())).toJson(QJsonDocument::Indented));
      return 0;
    }
    const QDateTime now = QDateTime::currentDateTime();
    const QJsonObject content = WorkOnTickets(parser.isSet(data) ? ReadData(parser.value(data)) : MakeSampleData(now),
                                              parser.value(day).toInt(), now);
    TDemoService service(content);
    TDemoFaults faults;
    faults.RefuseToken = parser.isSet(refuseToken);
    faults.DelayMs = parser.value(delay).toInt();
    faults.Surplus = parser.value(surplus).toInt();
    faults.TooManyOnce = parser.isSet(tooManyOnce);
    service.SetFaults(faults);

    const QString certificatePath = parser.isSet(caFile)
                                        ? parser.value(caFile)
                                        : QDir::temp().filePath(QStringLiteral("quorvex-demo-ca.pem"));
    WriteFile(certificatePath, service.CertificatePem());
    service.Listen(static_cast<quint16>(parser.value(port).toUInt()));

    const QJsonObject credentials = content.value(QStringLiteral("credentials")).toObject();
    Say(QStringLiteral("URL: https://%1").arg(service.Instance()));
    Say(QStringLiteral("Instance: %1").arg(service.Instance()));
    Say(QStringLiteral("CA certificate: %1").arg(QDir(certificatePath).absolutePath()));
    Say(QStringLiteral("Client ID: %1").arg(credentials.value(QStringLiteral("clientId")).toString()));
    Say(QStringLiteral("Username: %1").arg(credentials.value(QStringLiteral("username")).toString()));
    return application.exec();
  } catch (const std::exception &error) {
    std::fprintf(stderr, "quorvex-demo-service: %s\n", error.what());
    return 1;
  }
}
