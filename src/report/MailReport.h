#pragma once

#include <QDateTime>
#include "report/FollowUp.h"
#include "report/HtmlTexts.h"
#include "report/ReportRows.h"
#include "report/ReportText.h"
#include "rest/uTypes.h"

#include <QStringList>
#include <array>
#include <functional>
#include <memory>

class TColourStore;

// The report's title, and the start of its subject (people filter their mail on it).
inline const QString CReportTitle = QStringLiteral("Quorvex ITSM tickets follow-up");

// The three sections of the report, in their order.
enum class TReportSection { Unassigned, WithoutUpdate, Gt10Exchanges };
inline constexpr std::size_t CReportSectionCount = 3;
inline constexpr TReportSection CReportSections[] = {TReportSection::Unassigned, TReportSection::WithoutUpdate,
                                                     TReportSection::Gt10Exchanges};
// "Unassigned", "Without update", "More than 10 exchanges".
QString SectionName(TReportSection section);

// What the report is made from: the retrieved tickets and the choices of the
// user. Lists are Qt's shared lists, so filling this copies no ticket.
struct TReportInput
{
  tyRestTickets Tickets;
  QDateTime ExtractionTickets; // moment of the retrieval that gave the tickets
  QDateTime RetrievalAttempt;  // moment of the last attempt, shown when it was incomplete
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
  // When set, a warning paragraph says that the people concerned could not be
  // computed (the operators could not be read), and why.
  QString RecipientsWarning;
  // Which of the rows that meet a section's rule the report keeps (a person's
  // digest); when empty, all of them.
  std::function<bool(TReportSection section, const tyRestTicket &ticket)> KeepsRow;
  // The computed recipients listed at the end ("DEBUG" block), for a report that
  // goes to the default receivers only.
  bool ListRecipients = true;
  // What the last sent report listed and the snoozes: with it the report opens
  // with a summary of what changed, says since when each row is listed, leaves
  // snoozed tickets out and ends with the tickets that left it. None: the report
  // remembers nothing.
  std::shared_ptr<const TFollowUpMemory> FollowUp;
};

// The report and the people it concerns.
struct TReportOutput
{
  QStringList HtmlContent;
  // The plain-text alternative: the same parts in the same order, one line per row.
  QString Text;
  QStringList SlRecipientTo; // keys while building, addresses at the end
  QStringList SlRecipientCc;
  tyRestOperators RecipientTo;
  tyRestOperators RecipientCC;
  std::int32_t NbUnassigned = 0;
  std::int32_t NbWithoutUpdate = 0;
  std::int32_t NbGt10Exch = 0;
  std::array<TReportRows, CReportSectionCount> Rows; // the rows of each section
  QDateTime CurrentTime; // the clock reading every age counts from
  QString ServiceUrl;    // where the tickets' links lead
  // "Quorvex ITSM tickets follow-up", with a memory followed by the date and the counts.
  QString Subject = CReportTitle;
  // With a memory: since when each row is listed (beside Rows), the tickets
  // that left the report, and the counts of the summary.
  bool Remembers = false;
  std::array<QList<TListing>, CReportSectionCount> Listings;
  QList<TLeftTicket> Left;
  std::array<std::int32_t, CReportSectionCount> NbNew{};
  std::int32_t NbSnoozed = 0;
  std::int32_t NbEscalated = 0;
};

// Builds the HTML report line by line, and its plain text beside it. Every value
// that comes from the service is written as text (escaped in the HTML); only the
// user's text blocks are HTML. The sections read colours and priority
// codes through `colours`; `now` gives the current time for the ages.
class TMailReport
{
public:
  using TClock = std::function<QDateTime()>;

  TMailReport(const TReportInput &input, TColourStore &colours, TClock now = QDateTime::currentDateTime);

  // The whole report: header, title, the three sections, recipients, footer.
  TReportOutput Generate();

  // The parts, in the order Generate runs them.
  void Mail_01_AddHeader();
  void Mail_02_AddTitle();
  // With a memory: what changed since the last sent report, then the escalated rows.
  void AddSummary();
  void Mail_03_AddUnassigned();
  void Mail_04_AddWithoutUpdate();
  void Mail_05_Gt10Exchanges();
  // With a memory: the tickets of the last sent report that this one does not list.
  void AddLeft();
  void CompleteRecipients();
  void Mail_06_AddFooter();

  const TReportOutput &Output() const { return FOut; }

private:
  bool IsUnassignedLate(const tyRestTicket &ticket) const;
  bool IsWithoutUpdate(const tyRestTicket &ticket) const;
  // One of the user's text blocks, in the HTML and in the text; `value` replaces
  // `placeholder` (any case) in it.
  void AddLines(const QStringList &lines, const QString &placeholder = QString(), const QString &value = QString());
  bool Meets(TReportSection section, const tyRestTicket &ticket) const;
  // The tickets of FIn that meet a section's rule and that the report keeps
  // (snoozed ones left out), chosen once per report.
  const TReportRows &SectionRows(TReportSection section);
  void AddTable(TReportSection section);
  // Chooses the rows of every section (and with a memory, their listings and
  // the tickets that left), so that the summary can count them.
  void SelectRows();
  QString WhyLeft(const TListedEntry &was) const;
  // The section's "everything is OK" block, unless the retrieval was incomplete.
  // A person's digest leaves out a section without rows of theirs.
  bool SaysNothingOfEmptySections() const;
  void AddAllClear(const QStringList &lines);
  void TakeTeam(TRestId teamId);
  void TakeUser(TRestId userId);

  const TReportInput &FIn;
  TColourStore &FColours;
  TClock FNow;
  QDateTime FCurrentTime; // the clock as read when the report began
  TReportOutput FOut;
  TReportText FText;
  QSet<TRestId> FSnoozedRows; // snoozed tickets that meet a section's rule
  std::array<bool, CReportSectionCount> FSelected{};
};
