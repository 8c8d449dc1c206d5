#pragma once

#include "core/TDateTime.h"
#include "report/HtmlTexts.h"
#include "rest/uTypes.h"

#include <QStringList>
#include <functional>

class TColourStore;

// What the report is made from: the retrieved tickets and the choices of the
// user. Lists are Qt's shared lists, so filling this copies no ticket.
struct TReportInput
{
  tyRestTickets Tickets;
  TDateTime ExtractionTickets = 0; // moment of the retrieval that gave the tickets
  TDateTime RetrievalAttempt = 0;  // moment of the last attempt, shown when it was incomplete
  std::int32_t NbMinutes = 0;
  std::int32_t NbDays = 0;
  QStringList StatusToIgnore;
  tyRestOrganizations SelectedOrganizations;
  tyRestTeams SelectedTeams;
  tyRestTeamsOperators TeamsOperators;
  tyRestOperators Operators;
  tyHtmlTexts HtmlTexts;
  QString ServiceUrl; // address of the service's web interface
  // When set, a warning paragraph opens the report: the retrieval was not
  // complete, so the report is not an "all clear", and a section without
  // tickets says that it could not be checked.
  QString RetrievalWarning;
};

// The report and the people it concerns.
struct TReportOutput
{
  QStringList HtmlContent;
  QStringList SlRecipientTo; // keys while building, addresses at the end
  QStringList SlRecipientCc;
  tyRestOperators RecipientTo;
  tyRestOperators RecipientCC;
  std::int32_t NbUnassigned = 0;
  std::int32_t NbWithoutUpdate = 0;
  std::int32_t NbGt10Exch = 0;
};

// Builds the HTML report line by line. The sections read colours and priority
// codes through `colours`; `now` gives the current time for the ages.
class TMailReport
{
public:
  using TClock = std::function<TDateTime()>;

  TMailReport(const TReportInput &input, TColourStore &colours, TClock now = NowDateTime);

  // The whole report: header, title, the three sections, recipients, footer.
  TReportOutput Generate();

  // The parts, in the order Generate runs them.
  void Mail_01_AddHeader();
  void Mail_02_AddTitle();
  void Mail_03_AddUnassigned();
  void Mail_04_AddWithoutUpdate();
  void Mail_05_Gt10Exchanges();
  void CompleteRecipients();
  void Mail_06_AddFooter();

  QString GetHtmlTicketLink(const tyRestTicket &ticket) const;
  QString GetHtmlTdPriority(const tyRestTicket &ticket);
  QString GetHtmlTdStatus(const tyRestTicket &ticket);

  const TReportOutput &Output() const { return FOut; }

private:
  enum class TAge { None, Hours, Days };
  bool IsUnassignedLate(const tyRestTicket &ticket) const;
  bool IsWithoutUpdate(const tyRestTicket &ticket) const;
  void AddLines(const QStringList &lines, const QString &placeholder = QString(), const QString &value = QString());
  // The section's "everything is OK" block, unless the retrieval was incomplete.
  void AddAllClear(const QStringList &lines);
  void AddTable(const QList<const tyRestTicket *> &rows, bool withAssignedUser, TAge creationAge, TAge updateAge);
  QString DateCell(const QString &timestamp, TAge age) const;
  void TakeTeam(std::int32_t teamId);
  void TakeUser(std::int32_t userId);

  const TReportInput &FIn;
  TColourStore &FColours;
  TClock FNow;
  TDateTime FCurrentTime = 0; // the clock as read when the report began
  TReportOutput FOut;
};
