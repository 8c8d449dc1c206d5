// quorvex-bench-data FILE ORGANIZATIONS TICKETS DESCRIPTION_CHARS: writes a data
// set for the demo service with ORGANIZATIONS organizations of TICKETS open
// tickets each. The tickets are those of the demo sample, repeated under new
// numbers (so they keep its mix of statuses, ages, assignees and supervisor
// notices); DESCRIPTION_CHARS > 0 gives every one a description of that length.

#include "DemoData.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QSaveFile>
#include <cstdio>

namespace {

QString Description(int length, int number)
{
  QString text = QStringLiteral("<p>Reported by phone, ticket %1.</p><p>").arg(number);
  const QString filler = QStringLiteral("The user cannot print the monthly report & asks for help. ");
  while (text.size() < length - 4)
    text += filler;
  text.truncate(std::max(0, length - 4));
  return text + QStringLiteral("</p>");
}

} // namespace

int main(int argc, char *argv[])
{
  QCoreApplication application(argc, argv);
  if (argc != 5) {
    std::fputs("usage: quorvex-bench-data FILE ORGANIZATIONS TICKETS DESCRIPTION_CHARS\n", stderr);
    return 2;
  }
  const QString path = QString::fromLocal8Bit(argv[1]);
  const int organizationCount = std::atoi(argv[2]);
  const int ticketCount = std::atoi(argv[3]);
  const int descriptionLength = std::atoi(argv[4]);

  QJsonObject data = MakeSampleData(QDateTime::currentDateTime());
  const QJsonArray sample = data.value(QStringLiteral("tickets")).toArray();
  QJsonArray organizations;
  QJsonArray tickets;
  int number = 100001;
  for (int o = 0; o < organizationCount; ++o) {
    const QJsonObject organization{{QStringLiteral("id"), 201 + o},
                                   {QStringLiteral("name"), QStringLiteral("Bench organization %1").arg(o + 1)}};
    organizations.append(QJsonObject{{QStringLiteral("id"), 201 + o},
                                     {QStringLiteral("name"), organization.value(QStringLiteral("name"))},
                                     {QStringLiteral("monitoringAndInfrastructureModuleEnabled"), false},
                                     {QStringLiteral("passwordModuleEnabled"), false},
                                     {QStringLiteral("ticketingModuleEnabled"), true}});
    for (int t = 0; t < ticketCount; ++t, ++number) {
      QJsonObject ticket = sample.at(t % sample.size()).toObject();
      ticket.insert(QStringLiteral("id"), number);
      ticket.insert(QStringLiteral("organization"), organization);
      if (descriptionLength > 0)
        ticket.insert(QStringLiteral("description"), Description(descriptionLength, number));
      tickets.append(ticket);
    }
  }
  data.insert(QStringLiteral("organizations"), organizations);
  data.insert(QStringLiteral("tickets"), tickets);

  QSaveFile file(path);
  const QByteArray content = QJsonDocument(data).toJson(QJsonDocument::Compact);
  if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size() || !file.commit()) {
    std::fprintf(stderr, "quorvex-bench-data: cannot write %s: %s\n", qPrintable(path), qPrintable(file.errorString()));
    return 1;
  }
  return 0;
}
