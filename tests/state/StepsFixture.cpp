#include "StepsFixture.h"

#include "core/Trace.h"
#include "tickets/SelectionSettings.h"

#include <QJsonArray>

namespace {

QJsonObject SubName(int id, const QString &name) { return {{"id", id}, {"name", name}}; }

QJsonObject Operator(int id, const QString &email, const QString &status, int team)
{
  return {{"id", id}, {"notificationEmail", email}, {"status", status}, {"teams", QJsonArray{SubName(team, {})}}};
}

QJsonObject Object(int id, const QString &reference, const QString &type, const QString &subType = QString())
{
  return {{"id", id}, {"module", "TICKETING"}, {"reference", reference}, {"type", type}, {"subType", subType}};
}

QJsonObject StepsData(int extraAcmeTickets)
{
  const QString english = QStringLiteral("10 exchanges have been added automatically by the supervisor, no exchanges "
                                         "will be added to this ticket during the next executions of the control.");
  const QString french = QString::fromUtf8("10 échanges ont été ajoutés automatiquement par le superviseur, aucun "
                                           "échange ne sera ajouté lors des prochaines exécutions du contrôle pour "
                                           "ce ticket.");
  auto organization = [](int id, const QString &name, bool ticketing) {
    return QJsonObject{{"id", id}, {"name", name}, {"monitoringAndInfrastructureModuleEnabled", false},
                       {"passwordModuleEnabled", false}, {"ticketingModuleEnabled", ticketing}};
  };
  auto team = [](int id, const QString &name, const QJsonArray &organizations) {
    return QJsonObject{{"id", id}, {"name", name}, {"members", QJsonArray{}}, {"remarks", QString()},
                       {"organizations", organizations}};
  };
  QJsonArray tickets{DemoTicket(11, 1, {}, 2, 30), DemoTicket(12, 1, "Bob", 1, 0.1, english),
                     DemoTicket(13, 1, "Bob", 1, 0.1, french), DemoTicket(21, 2, "Ann", 1, 0.1)};
  for (int i = 0; i < extraAcmeTickets; ++i)
    tickets.append(DemoTicket(1000 + i, 1, i % 5 ? "Ann" : "", 1 + i % 20, i % 30,
                              i % 97 == 0 ? english : i % 89 == 0 ? french : QString()));
  return {
      {"credentials",
       QJsonObject{{"clientId", "client"}, {"clientSecret", "secret"}, {"username", "lead"}, {"password", "pw"}}},
      {"organizations",
       QJsonArray{organization(1, "Acme", true), organization(2, "Beta & Co", true), organization(3, "Gamma", false)}},
      {"teams", QJsonArray{team(10, "Desk", {SubName(1, "Acme"), SubName(2, "Beta & Co")}),
                           team(20, "Network", {SubName(2, "Beta & Co")})}},
      {"operators", QJsonArray{Operator(1, "Ann@example.org", "ACTIVE", 10),
                               Operator(2, "bob@example.org", "ACTIVE", 10),
                               Operator(3, "carl@example.org", "INACTIVE", 20)}},
      {"objects", QJsonArray{Object(1, "New", "TICKET_STATUS"), Object(2, "Waiting", "TICKET_STATUS"),
                             Object(3, "new", "TICKET_STATUS"),
                             Object(4, "Critical [P1]", "TICKET_PRIORITY", "INCIDENT")}},
      {"tickets", tickets},
  };
}

} // namespace

QString Stamp(double daysAgo)
{
  return QDateTime::currentDateTime().addSecs(static_cast<qint64>(-daysAgo * 86400)).toString(Qt::ISODateWithMs);
}

QJsonObject DemoTicket(int id, int organization, const QString &user, double ageDays, double updatedDaysAgo,
                       const QString &exchange)
{
  const int userId = user == "Ann" ? 1 : user == "Bob" ? 2 : 0;
  return {{"id", id}, {"type", "INCIDENT"}, {"title", QStringLiteral("Ticket %1").arg(id)},
          {"organization", SubName(organization, organization == 1 ? "Acme" : "Beta & Co")},
          {"assignedTeam", SubName(10, "Desk")}, {"assignedUser", SubName(userId, user)},
          {"creationDate", Stamp(ageDays)}, {"lastUpdate", Stamp(updatedDaysAgo)},
          {"priority", QJsonObject{{"id", 1}, {"reference", "P1"}}},
          {"status", QJsonObject{{"id", 1}, {"reference", "New"}, {"category", "OPEN"}}},
          {"exchanges", QJsonArray{exchange}}};
}

QStringList TicketIds(const tyRestTickets &tickets)
{
  QStringList ids;
  for (const tyRestTicket &ticket : tickets)
    ids << QString::number(ticket.id) + (ticket.tenExchangesAdded ? "*" : "");
  return ids;
}

StepsFixture::StepsFixture(int extraAcmeTickets) : FService(StepsData(extraAcmeTickets))
{
  FService.Listen();
  WriteTextFile(FConfig.File("ca.pem"), FService.CertificatePem());

  Trace::Install(false);
  FRest = std::make_unique<TdmRest>(FManager);
  Restart();
  FState->EditServiceSettings([this](tyQuorvexITSM &ici) {
    ici.SaaS = false;
    ici.Instance = FService.Instance();
    ici.API.ClientID = QStringLiteral("client");
    ici.API.ClientSecret = QStringLiteral("secret");
    ici.API.Username = QStringLiteral("lead");
    ici.API.Password = QStringLiteral("pw");
    return true;
  });
  FState->EditMailSettings([](tySMTPserver &smtp, tyDelivery &) {
    smtp.DefaultTo = QStringLiteral("leads@vellmor.example");
    return true;
  });
}

StepsFixture::~StepsFixture()
{
  FState->FormDestroy();
}

void StepsFixture::Restart()
{
  if (FState)
    FState->FormDestroy();
  FState = std::make_unique<TMainState>(QStringLiteral("quorvex-followup"), *FRest);
  FState->FormCreate();
}

void StepsFixture::SelectAll()
{
  SaveConfigOrgaAndTeams(FState->SettingsFile(), {{1, "Acme", false, false, true}, {2, "Beta & Co", false, false, true}},
                         {tyRestTeam{10, {}, QStringLiteral("Desk"), {}, {}}});
  FState->ReadConfigOrgaAndTeams();
}

QString StepsFixture::IniText() const { return ReadTextFile(FState->SettingsFile()); }

void StepsFixture::ChangeTicket(int id, const std::function<void(QJsonObject &)> &change)
{
  QJsonObject data = FService.Data();
  QJsonArray tickets;
  for (const QJsonValue value : data["tickets"].toArray()) {
    QJsonObject ticket = value.toObject();
    if (ticket["id"].toInt() == id)
      change(ticket);
    if (!ticket.isEmpty())
      tickets.append(ticket);
  }
  data["tickets"] = tickets;
  FService.SetData(data);
}

void StepsFixture::AddTicket(const QJsonObject &ticket)
{
  QJsonObject data = FService.Data();
  data["tickets"] = data["tickets"].toArray() + ticket;
  FService.SetData(data);
}
