#include "RestTestData.h"

#include <QJsonArray>

const char *const CTestClientId = "client-1";
const char *const CTestSecret = "s3cret";
const char *const CTestUser = "lead@example.org";
const char *const CTestPassword = "Pass word&=é";
const char *const CNoticeFrench = "10 échanges ont été ajoutés automatiquement par le superviseur, aucun échange ne "
                                  "sera ajouté lors des prochaines exécutions du contrôle pour ce ticket";

namespace {

QJsonObject Name(int id, const QString &name)
{
  return {{"id", id}, {"name", name}};
}

QJsonObject Ticket(int id, int organizationId)
{
  return {{"id", id}, {"organization", Name(organizationId, "Org")}, {"title", QString("Ticket %1").arg(id)},
          {"assignedUser", Name(100 + id % 3, QString("User %1").arg(id % 3))}};
}

} // namespace

QJsonObject RestTestData()
{
  QJsonArray tickets;
  tickets.append(Ticket(1, 1));
  QJsonObject second = Ticket(2, 1);
  second.insert("exchanges", QJsonArray{QString::fromUtf8(CNoticeFrench)});
  tickets.append(second);
  tickets.append(Ticket(3, 1));
  for (int id = 10000; id < 11203; ++id)
    tickets.append(Ticket(id, 7));

  return {
      {"credentials", QJsonObject{{"clientId", CTestClientId},
                                  {"clientSecret", CTestSecret},
                                  {"username", CTestUser},
                                  {"password", QString::fromUtf8(CTestPassword)}}},
      {"organizations",
       QJsonArray{QJsonObject{{"id", 1}, {"name", "One"}, {"monitoringAndInfrastructureModuleEnabled", true},
                              {"passwordModuleEnabled", false}, {"ticketingModuleEnabled", true}},
                  QJsonObject{{"id", 2}, {"name", "Two"}, {"monitoringAndInfrastructureModuleEnabled", false},
                              {"passwordModuleEnabled", true}, {"ticketingModuleEnabled", false}}}},
      {"teams", QJsonArray{QJsonObject{{"id", 11}, {"name", "Desk"}, {"organizations", QJsonArray{Name(1, "One")}}},
                           QJsonObject{{"id", 12}, {"name", "Network"},
                                       {"organizations", QJsonArray{Name(1, "One"), Name(2, "Two")}}},
                           QJsonObject{{"id", 13}, {"name", "Empty"}}}},
      {"operators", QJsonArray{QJsonObject{{"id", 100}, {"login", "u0"}, {"teams", QJsonArray{Name(11, "Desk")}}},
                               QJsonObject{{"id", 101}, {"login", "u1"}, {"status", "INACTIVE"}},
                               QJsonObject{{"id", 102}, {"login", "u2"}}}},
      {"objects", QJsonArray{QJsonObject{{"id", 5}, {"module", "TICKETING"}, {"type", "TICKET_STATUS"},
                                         {"reference", "NEW"}, {"subType", "S"}}}},
      {"tickets", tickets},
  };
}
