// quorvex-fuzz-seeds FOLDER: writes the seed corpus of every fuzz target into
// FOLDER/<target>, from the demo service's sample data and the program's own
// secret codec, so that the fuzzers start from realistic input.

#include "DemoData.h"
#include "core/SecretCodec.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <cstdio>

namespace {

QString Folder;

void Write(const QString &target, const QString &name, const QByteArray &content)
{
  const QString folder = Folder + u'/' + target;
  QFile file(folder + u'/' + name);
  if (!QDir().mkpath(folder) || !file.open(QIODevice::WriteOnly | QIODevice::Truncate) ||
      file.write(content) != content.size()) {
    std::fprintf(stderr, "quorvex-fuzz-seeds: cannot write %s: %s\n", qPrintable(file.fileName()),
                 qPrintable(file.errorString()));
    std::exit(1);
  }
}

QByteArray Compact(const QJsonValue &value)
{
  return value.isArray() ? QJsonDocument(value.toArray()).toJson(QJsonDocument::Compact)
                         : QJsonDocument(value.toObject()).toJson(QJsonDocument::Compact);
}

QJsonArray FirstItems(const QJsonArray &items, qsizetype first, qsizetype count)
{
  QJsonArray part;
  for (qsizetype i = first; i < items.size() && i < first + count; ++i) {
    QJsonObject item = items.at(i).toObject();
    item.remove(QStringLiteral("exchanges"));
    part.append(item);
  }
  return part;
}

QByteArray Page(const QJsonArray &content, qsizetype total)
{
  return Compact(QJsonObject{{QStringLiteral("content"), content},
                             {QStringLiteral("totalNumberOfElements"), total},
                             {QStringLiteral("totalNumberOfPages"), 1}});
}

} // namespace

int main(int argc, char *argv[])
{
  QCoreApplication application(argc, argv);
  if (argc != 2) {
    std::fputs("usage: quorvex-fuzz-seeds FOLDER\n", stderr);
    return 2;
  }
  Folder = QString::fromLocal8Bit(argv[1]);
  const QJsonObject data = MakeSampleData(QDateTime(QDate(2024, 3, 18), QTime(9, 0)));
  const QJsonArray tickets = data.value(QStringLiteral("tickets")).toArray();

  for (int i = 0; i < 4; ++i)
    Write("ticket_page", QStringLiteral("page%1.json").arg(i), Page(FirstItems(tickets, i * 3, 3), 3));
  Write("ticket_page", "empty.json", Page({}, 0));

  const QJsonArray teams = data.value(QStringLiteral("teams")).toArray();
  Write("reference_queries", "objects", '\0' + Compact(data.value(QStringLiteral("objects"))));
  Write("reference_queries", "organizations", '\1' + Compact(data.value(QStringLiteral("organizations"))));
  Write("reference_queries", "teams", '\2' + Compact(FirstItems(teams, 0, 2)));
  Write("reference_queries", "team", '\3' + Compact(teams.at(0)));
  Write("reference_queries", "operators",
        '\4' + Page(FirstItems(data.value(QStringLiteral("operators")).toArray(), 0, 4), 4));

  const QStringList secrets{QStringLiteral("demo secret&=1"), QString::fromUtf8("Pass word&=é"), QString()};
  for (qsizetype i = 0; i < secrets.size(); ++i)
    Write("decrypt", QStringLiteral("secret%1").arg(i), Encrypt(secrets[i]).toUtf8());

  for (int i = 0; i < 3; ++i)
    Write("rest_timestamp", QStringLiteral("stamp%1").arg(i),
          tickets.at(i).toObject().value(QStringLiteral("creationDate")).toString().toUtf8());

  const QByteArray ini = "[QuorvexITSM]\nSaaS=0\nInstance=127.0.0.1:8443\nClientID=followup-demo\nClientSecret=" +
                         Encrypt(secrets[0]).toUtf8() + "\nUsername=lead@vellmor.example\nPassword=" +
                         Encrypt(secrets[1]).toUtf8() +
                         "\nTokenRequest=45369,25\nTokenValidity=12\n"
                         "[SMTP]\nServer=127.0.0.1\nPort=2525\nUseSSL=0\nUserName=\nPassword=\n"
                         "DefaultTo=leads@vellmor.example; desk@vellmor.example\nFrom=noreply@vellmor.example\n"
                         "[Filters]\nNbMinutes=15\nNbDays=5\nNbIgnore=2\nStatus_0=Planned (without SLA)\nStatus_1=Waiting\n"
                         "[Organizations]\nNb=2\nid_1=101\nname_1=Northwind Logistics\nticketingModuleEnabled_1=1\n"
                         "id_2=102\nname_2=Brasserie Lef\xc3\xa8vre & Fils\nticketingModuleEnabled_2=1\n"
                         "[Teams]\nNb=1\nid_1=11\nname_1=Service Desk\n";
  Write("settings_reader", "settings.ini", ini);
  return 0;
}
