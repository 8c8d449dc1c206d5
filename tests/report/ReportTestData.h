#pragma once

// The tickets, operators and report settings the report tests start from.

#include "report/MailReport.h"

// Ticket `id` of Acme in the Desk team (10), unassigned, "INCIDENT - Critical P1", New.
inline tyRestTicket ReportTicket(TRestId id, const QString &type, const QString &created, const QString &updated)
{
  tyRestTicket ticket;
  ticket.id = id;
  ticket._type = type;
  ticket.title = QStringLiteral("Ticket %1").arg(id);
  ticket.organization.name = QStringLiteral("Acme");
  ticket.assignedTeam = {10, QStringLiteral("Desk")};
  ticket.creationDate = created;
  ticket.lastUpdate = updated;
  ticket.priority.reference = QStringLiteral("INCIDENT - Critical P1");
  ticket.status._reference = QStringLiteral("New");
  return ticket;
}

inline tyRestOperator ReportOperator(TRestId id, const QString &email, const QString &status = QStringLiteral("ACTIVE"))
{
  tyRestOperator op;
  op.id = id;
  op.notificationEmail = email;
  op.status = status;
  return op;
}

// Tickets extracted at `extraction`: unassigned late after 15 minutes, without
// update after 14 days, the Desk team followed.
inline TReportInput ReportInput(const QDateTime &extraction)
{
  TReportInput input;
  input.ExtractionTickets = extraction;
  input.NbMinutes = 15;
  input.NbDays = 14;
  input.SelectedTeams = {tyRestTeam{10, {}, QStringLiteral("Desk"), {}, {}}};
  input.ServiceUrl = QStringLiteral("https://acme.itsm.example");
  return input;
}
