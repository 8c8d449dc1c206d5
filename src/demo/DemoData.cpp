#include "DemoData.h"

#include <QJsonArray>
#include <QStringList>
#include <random>

namespace {

const QString CNoticeEnglish = QStringLiteral(
    "10 exchanges have been added automatically by the supervisor, no exchanges will be added to this ticket "
    "during the next executions of the control");
const QString CNoticeFrench = QStringLiteral(
    "10 échanges ont été ajoutés automatiquement par le superviseur, aucun échange ne sera ajouté lors des "
    "prochaines exécutions du contrôle pour ce ticket");

QJsonObject SubName(int id, const QString &name)
{
  return {{QStringLiteral("id"), id}, {QStringLiteral("name"), name}};
}

QJsonObject SubDescription(int id, const QString &description)
{
  return {{QStringLiteral("id"), id}, {QStringLiteral("description"), description}};
}

QString Stamp(const QDateTime &moment)
{
  return moment.toUTC().toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss.zzzZ"));
}

// A fixed sequence of pseudo-random numbers, the same on every platform.
class TDice
{
public:
  int Roll(int sides) { return static_cast<int>(FEngine() % static_cast<unsigned>(sides)); }
  template <typename T>
  const T &Pick(const QList<T> &values) { return values.at(Roll(static_cast<int>(values.size()))); }

private:
  std::mt19937 FEngine{20240315u};
};

struct TOrganization
{
  int Id;
  QString Name;
  bool Ticketing;
};

const QList<TOrganization> COrganizations{
    {101, QStringLiteral("Northwind Logistics"), true},
    {102, QStringLiteral("Brasserie Lefèvre & Fils"), true},
    {103, QStringLiteral("Harbour Clinic"), false},
};

struct TTeam
{
  int Id;
  QString Name;
  QList<int> Organizations;
};

const QList<TTeam> CTeams{
    {11, QStringLiteral("Service Desk"), {101, 102}},
    {12, QStringLiteral("Network & Security"), {101, 102, 103}},
    {13, QStringLiteral("SAP Basis"), {101}},
    {14, QStringLiteral("Workplace"), {102}},
    {15, QStringLiteral("Databases"), {101, 102}},
};

const QStringList CFirstNames{"Alice", "Bruno", "Chloé", "David", "Emma", "François", "Grace", "Hugo",
                              "Inès", "Jonas", "Karim", "Léa", "Marc", "Nadia", "Olivier", "Pauline",
                              "Quentin", "Rosa", "Samuel", "Théo"};
const QStringList CLastNames{"Martin", "Bernard", "Dubois", "Moreau", "Laurent", "Simon", "Michel", "Garcia",
                             "Lefebvre", "Roux", "Fournier", "Girard", "Bonnet", "Dupont", "Lambert", "Fontaine"};

QJsonArray Objects()
{
  struct TObject
  {
    int Id;
    QString Reference;
    QString Type;
  };
  const QList<TObject> objects{
      {201, QStringLiteral("New"), QStringLiteral("TICKET_STATUS")},
      {202, QStringLiteral("Acknowledged"), QStringLiteral("TICKET_STATUS")},
      {203, QStringLiteral("In progress"), QStringLiteral("TICKET_STATUS")},
      {204, QStringLiteral("Waiting"), QStringLiteral("TICKET_STATUS")},
      {205, QStringLiteral("To validate"), QStringLiteral("TICKET_STATUS")},
      {206, QStringLiteral("Planned (without SLA)"), QStringLiteral("TICKET_STATUS")},
      {301, QStringLiteral("Critical P1"), QStringLiteral("TICKET_PRIORITY")},
      {302, QStringLiteral("High P2"), QStringLiteral("TICKET_PRIORITY")},
      {303, QStringLiteral("Medium P3"), QStringLiteral("TICKET_PRIORITY")},
      {304, QStringLiteral("Low P4"), QStringLiteral("TICKET_PRIORITY")},
  };
  QJsonArray array;
  for (const TObject &object : objects)
    array.append(QJsonObject{{QStringLiteral("id"), object.Id},
                             {QStringLiteral("module"), QStringLiteral("TICKETING")},
                             {QStringLiteral("organization"), SubName(0, QString())},
                             {QStringLiteral("reference"), object.Reference},
                             {QStringLiteral("subType"), object.Type == QLatin1String("TICKET_PRIORITY")
                                                             ? QStringLiteral("INCIDENT")
                                                             : QString()},
                             {QStringLiteral("type"), object.Type}});
  return array;
}

struct TOperator
{
  int Id;
  QString Name;
  QList<int> Teams;
};

QList<TOperator> OperatorList(TDice &dice)
{
  QList<TOperator> operators;
  for (int i = 0; i < 40; ++i) {
    const QString name = CFirstNames.at(i % CFirstNames.size()) + u' ' + CLastNames.at((i * 7) % CLastNames.size());
    QList<int> teams{CTeams.at(i % CTeams.size()).Id};
    if (dice.Roll(4) == 0)
      teams.append(CTeams.at((i + 2) % CTeams.size()).Id);
    operators.append({1000 + i, name, teams});
  }
  return operators;
}

QJsonArray OperatorsJson(const QList<TOperator> &operators, const QDateTime &now)
{
  QJsonArray array;
  for (int i = 0; i < operators.size(); ++i) {
    const TOperator &op = operators.at(i);
    const QStringList names = op.Name.split(u' ');
    const QString login = (names.first().left(1) + names.last()).toLower();
    QJsonArray teams;
    for (const int team : op.Teams)
      for (const TTeam &known : CTeams)
        if (known.Id == team)
          teams.append(SubName(team, known.Name));
    QJsonObject item{
        {QStringLiteral("authenticationMode"), QStringLiteral("LOCAL")},
        {QStringLiteral("authenticationService"), SubDescription(1, QStringLiteral("Local accounts"))},
        {QStringLiteral("creationTimestamp"), Stamp(now.addDays(-400 - i))},
        {QStringLiteral("creationUser"), QStringLiteral("admin")},
        {QStringLiteral("dateFormat"), QStringLiteral("dd/MM/yyyy")},
        {QStringLiteral("department"), SubName(50 + i % 3, QStringLiteral("IT operations"))},
        {QStringLiteral("email"), login + QStringLiteral("@vellmor.example")},
        {QStringLiteral("externalReference"), QStringLiteral("EMP%1").arg(op.Id)},
        {QStringLiteral("firstName"), names.first()},
        {QStringLiteral("id"), op.Id},
        {QStringLiteral("language"), i % 3 == 0 ? QStringLiteral("en") : QStringLiteral("fr")},
        {QStringLiteral("lastConnectionTimestamp"), Stamp(now.addSecs(-3600L * (i + 1)))},
        {QStringLiteral("lastName"), names.last()},
        {QStringLiteral("lastUpdateTimestamp"), Stamp(now.addDays(-i))},
        {QStringLiteral("lastUpdateUser"), QStringLiteral("admin")},
        {QStringLiteral("login"), login},
        {QStringLiteral("manager"), SubName(1000, operators.first().Name)},
        {QStringLiteral("notificationEmail"), login + QStringLiteral("@vellmor.example")},
        {QStringLiteral("phoneNumber"), QStringLiteral("+33 1 40 00 %1").arg(10 + i)},
        {QStringLiteral("position"), i < 5 ? QStringLiteral("Team lead") : QStringLiteral("Support engineer")},
        {QStringLiteral("profile"), SubDescription(2, QStringLiteral("Operator"))},
        {QStringLiteral("serviceDeskProfile"), SubDescription(3, QStringLiteral("Level 2"))},
        {QStringLiteral("site"), SubName(60, QStringLiteral("Paris"))},
        // One operator in eight has left: an inactive account.
        {QStringLiteral("status"), i % 8 == 7 ? QStringLiteral("INACTIVE") : QStringLiteral("ACTIVE")},
        {QStringLiteral("teams"), teams},
        {QStringLiteral("timeZone"), QStringLiteral("Europe/Paris")},
        {QStringLiteral("twoFactorAuthActive"), i % 2 == 0},
    };
    if (i % 5 != 0)
      item.insert(QStringLiteral("hourFormat"), 24); // left out by some accounts
    array.append(item);
  }
  return array;
}

QJsonArray TicketsJson(TDice &dice, const QList<TOperator> &operators, const QDateTime &now)
{
  const QStringList types{"INCIDENT", "REQUEST", "PROBLEM", "CHANGE"};
  const QList<QPair<int, QString>> statuses{{201, "New"},     {202, "Acknowledged"}, {203, "In progress"},
                                            {204, "Waiting"}, {205, "To validate"},  {206, "Planned (without SLA)"}};
  const QList<QPair<int, QString>> priorities{
      {301, "Critical P1"}, {302, "High P2"}, {303, "Medium P3"}, {304, "Low P4"}};
  const QStringList subjects{"Printer on floor 2 jams", "VPN drops every hour", "New laptop for a newcomer",
                             "SAP transaction VA01 slow", "Mailbox quota exceeded", "Database backup failed",
                             "Wi-Fi unreachable in meeting room", "Access to the shared drive \"Finance\"",
                             "Upgrade of the firewall firmware", "Password reset <urgent>",
                             "Écran noir au démarrage", "Licence Office à renouveler"};
  QJsonArray array;
  int number = 24001;
  for (const TOrganization &organization : COrganizations) {
    if (!organization.Ticketing)
      continue;
    const int count = organization.Id == 101 ? 180 : 140;
    for (int i = 0; i < count; ++i, ++number) {
      const TTeam &team = CTeams.at(dice.Roll(static_cast<int>(CTeams.size())));
      const auto &status = statuses.at(dice.Roll(static_cast<int>(statuses.size())));
      const QDateTime created = now.addSecs(-60L * (5 + dice.Roll(60 * 24 * 45)));
      // Most tickets moved lately; one in six has been left alone for weeks.
      const QDateTime updated = dice.Roll(6) == 0 ? created.addSecs(60L * dice.Roll(60 * 4))
                                                  : std::max(created, now.addSecs(-60L * dice.Roll(60 * 24 * 3)));
      const QString type = types.at(dice.Roll(static_cast<int>(types.size())));
      QJsonObject ticket{
          {QStringLiteral("id"), number},
          {QStringLiteral("type"), type},
          {QStringLiteral("organization"), SubName(organization.Id, organization.Name)},
          {QStringLiteral("assignedTeam"), SubName(team.Id, team.Name)},
          {QStringLiteral("title"), dice.Pick(subjects)},
          {QStringLiteral("description"), QStringLiteral("<p>Reported by phone.</p><p>Details: %1</p>").arg(number)},
          {QStringLiteral("creationDate"), Stamp(created)},
          {QStringLiteral("lastUpdate"), Stamp(updated)},
          {QStringLiteral("author"), SubName(5000 + i, QStringLiteral("Customer %1").arg(i))},
          {QStringLiteral("authorName"), QStringLiteral("Customer %1").arg(i)},
          {QStringLiteral("authorEmail"), QStringLiteral("customer%1@example.org").arg(i)},
          {QStringLiteral("createdBy"), SubName(1000, operators.first().Name)},
          {QStringLiteral("authorSite"), SubName(60, QStringLiteral("Paris"))},
          {QStringLiteral("authorEmailNotify"), true},
          {QStringLiteral("ticketOrigin"), dice.Roll(2) ? QStringLiteral("EMAIL") : QStringLiteral("PHONE")},
          {QStringLiteral("resolutionDelay"), dice.Roll(5000)},
          {QStringLiteral("slaResolutionDelay"), 2880},
          {QStringLiteral("slaCompletionStatus"), QStringLiteral("IN_PROGRESS")},
          {QStringLiteral("slaAcknowledgementStatus"), QStringLiteral("ACHIEVED")},
          {QStringLiteral("priority"), QJsonObject{{QStringLiteral("id"), priorities.at(i % 4).first},
                                                   {QStringLiteral("reference"), priorities.at(i % 4).second}}},
          {QStringLiteral("status"), QJsonObject{{QStringLiteral("id"), status.first},
                                                 {QStringLiteral("reference"), status.second},
                                                 {QStringLiteral("category"), QStringLiteral("OPEN")}}},
          {QStringLiteral("application"), SubName(70 + i % 4, QStringLiteral("Application %1").arg(i % 4))},
          {QStringLiteral("tasksPublic"), false},
          {QStringLiteral("access"), true},
          {QStringLiteral("writeAccess"), true},
          {QStringLiteral("flagApi"), false},
          {QStringLiteral("archived"), false},
          {QStringLiteral("sla"), SubDescription(80, QStringLiteral("Standard 48 h"))},
          {QStringLiteral("startDate"), Stamp(created)},
          {QStringLiteral("theoreticalAcknowledgeDate"), Stamp(created.addSecs(3600))},
          {QStringLiteral("theoreticalResolutionDate"), Stamp(created.addDays(2))},
          {QStringLiteral("template"), SubDescription(90, type.toLower() + QStringLiteral(" template"))},
      };
      // One ticket in seven waits for someone to take it.
      if (dice.Roll(7) != 0) {
        QList<TOperator> members;
        for (const TOperator &op : operators)
          if (op.Teams.contains(team.Id))
            members.append(op);
        const TOperator &assignee = dice.Pick(members);
        ticket.insert(QStringLiteral("assignedUser"), SubName(assignee.Id, assignee.Name));
        ticket.insert(QStringLiteral("actualAcknowledgeDate"), Stamp(created.addSecs(1200)));
      } else {
        ticket.insert(QStringLiteral("assignedUser"), QJsonValue::Null);
      }
      if (type == QLatin1String("INCIDENT"))
        ticket.insert(QStringLiteral("incident"), QJsonObject{{QStringLiteral("incidentImpact"), QStringLiteral("SERVICE")},
                                                              {QStringLiteral("incidentUrgency"), QStringLiteral("HIGH")}});
      if (type == QLatin1String("CHANGE"))
        ticket.insert(QStringLiteral("change"),
                      QJsonObject{{QStringLiteral("changelogType"), QStringLiteral("NORMAL")},
                                  {QStringLiteral("reason"), QStringLiteral("End of support of the current version")},
                                  {QStringLiteral("rollbackPlan"), QStringLiteral("Restore the snapshot")}});
      if (status.second == QLatin1String("Waiting"))
        ticket.insert(QStringLiteral("waitingDate"), Stamp(updated));
      QJsonArray exchanges{QStringLiteral("Ticket received.")};
      const int notice = dice.Roll(15);
      if (notice == 0)
        exchanges.append(CNoticeEnglish);
      else if (notice == 1)
        exchanges.append(CNoticeFrench);
      ticket.insert(QStringLiteral("exchanges"), exchanges);
      array.append(ticket);
    }
  }
  return array;
}

} // namespace

QJsonObject MakeSampleData(const QDateTime &now)
{
  TDice dice;
  QJsonArray organizations;
  for (const TOrganization &organization : COrganizations)
    organizations.append(QJsonObject{{QStringLiteral("id"), organization.Id},
                                     {QStringLiteral("name"), organization.Name},
                                     {QStringLiteral("monitoringAndInfrastructureModuleEnabled"), organization.Id == 101},
                                     {QStringLiteral("passwordModuleEnabled"), organization.Id != 102},
                                     {QStringLiteral("ticketingModuleEnabled"), organization.Ticketing}});
  const QList<TOperator> operators = OperatorList(dice);
  QJsonArray teams;
  for (const TTeam &team : CTeams) {
    QJsonArray members;
    for (const TOperator &op : operators)
      if (op.Teams.contains(team.Id))
        members.append(SubName(op.Id, op.Name));
    QJsonArray teamOrganizations;
    for (const int id : team.Organizations)
      for (const TOrganization &organization : COrganizations)
        if (organization.Id == id)
          teamOrganizations.append(SubName(id, organization.Name));
    teams.append(QJsonObject{{QStringLiteral("id"), team.Id},
                             {QStringLiteral("name"), team.Name},
                             {QStringLiteral("remarks"), QStringLiteral("Team %1").arg(team.Name)},
                             {QStringLiteral("members"), members},
                             {QStringLiteral("organizations"), teamOrganizations}});
  }
  return {
      {QStringLiteral("credentials"), QJsonObject{{QStringLiteral("clientId"), QStringLiteral("followup-demo")},
                                                  {QStringLiteral("clientSecret"), QStringLiteral("demo secret&=1")},
                                                  {QStringLiteral("username"), QStringLiteral("lead@vellmor.example")},
                                                  {QStringLiteral("password"), QStringLiteral("Pass word&=é")}}},
      {QStringLiteral("organizations"), organizations},
      {QStringLiteral("teams"), teams},
      {QStringLiteral("operators"), OperatorsJson(operators, now)},
      {QStringLiteral("objects"), Objects()},
      {QStringLiteral("tickets"), TicketsJson(dice, operators, now)},
  };
}

QJsonObject WorkOnTickets(QJsonObject data, int days, const QDateTime &now)
{
  QJsonArray tickets = data.value(QStringLiteral("tickets")).toArray();
  const auto field = [](const QJsonValue &ticket, const char *name) { return ticket.toObject().value(QLatin1String(name)); };
  for (int day = 0; day < days; ++day) {
    int assigned = 0;
    int updated = 0;
    int closed = 0;
    bool closedNotice = false;
    for (qsizetype i = 0; i < tickets.size(); ++i) {
      QJsonObject ticket = tickets.at(i).toObject();
      const QDateTime lastUpdate = QDateTime::fromString(ticket.value(QStringLiteral("lastUpdate")).toString(), Qt::ISODateWithMs);
      const bool notice = ticket.value(QStringLiteral("exchanges")).toArray().size() > 1;
      if (field(ticket, "assignedUser").isNull() && assigned < 3 && ticket.value(QStringLiteral("id")).toInt() % 2) {
        ++assigned;
        ticket.insert(QStringLiteral("assignedUser"), SubName(1001, QStringLiteral("Bruno Bernard")));
        ticket.insert(QStringLiteral("lastUpdate"), Stamp(now));
      } else if (lastUpdate.daysTo(now) > 20 && updated < 3 && !notice) {
        ++updated;
        ticket.insert(QStringLiteral("lastUpdate"), Stamp(now.addSecs(-600)));
      } else if ((notice && !closedNotice) || (closed < 3 && i % 41 == 7)) {
        closedNotice = closedNotice || notice;
        closed += notice ? 0 : 1;
        tickets.removeAt(i--);
        continue;
      }
      tickets[i] = ticket;
    }
    for (int n = 0; n < 5; ++n) {
      QJsonObject ticket = tickets.at(n * 11).toObject();
      const int id = 24500 + day * 5 + n;
      ticket.insert(QStringLiteral("id"), id);
      ticket.insert(QStringLiteral("assignedUser"), QJsonValue::Null);
      ticket.insert(QStringLiteral("creationDate"), Stamp(now.addSecs(-3600L * (2 + n))));
      ticket.insert(QStringLiteral("lastUpdate"), Stamp(now.addSecs(-3600L * (2 + n))));
      ticket.insert(QStringLiteral("exchanges"), QJsonArray{QStringLiteral("Ticket received.")});
      tickets.append(ticket);
    }
  }
  data.insert(QStringLiteral("tickets"), tickets);
  return data;
}
