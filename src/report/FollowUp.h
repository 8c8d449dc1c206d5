#pragma once

#include "rest/uTypes.h"

#include <QDate>
#include <QDateTime>
#include <QHash>
#include <QList>
#include <QSet>
#include <QString>
#include <QStringList>
#include <cstdint>

enum class TReportSection;

// What the store remembers of a ticket that a sent report listed in a section.
struct TListedEntry
{
  TRestId Ticket = 0;
  int Section = 0; // a TReportSection
  QDateTime Since; // first listed in that section, on reports in a row
  std::int32_t Reports = 1; // sent reports in a row it has been on, that one included
  QString LastUpdate;       // the service's stamps and values as they were then
  QString Status;
  TRestId Assignee = 0;
  TRestId Team = 0;
  TRestId Organization = 0;
  QString OrganizationName;
  QString Type;
  QString Title;
};

// A ticket taken off the report: until a day (it comes back on that day), or
// until its last update, status or assignee differ from what they were when it
// was snoozed (Known is false until a report has seen it, and it then counts as
// unchanged).
struct TSnooze
{
  TRestId Ticket = 0;
  QDate Until;
  bool UntilChange = false;
  bool Known = false;
  QString LastUpdate;
  QString Status;
  TRestId Assignee = 0;
  QString By;
  QDateTime At;

  // Whether it still keeps `ticket` off the report on `today`.
  bool Holds(const tyRestTicket &ticket, QDate today) const;
  // "until 01.12.2026" or "until it changes".
  QString UntilText() const;
};

// What a report compares with: the last sent report, the snoozes, and the
// organizations whose tickets this retrieval could not give (none of their
// tickets is counted as left).
struct TFollowUpMemory
{
  QDateTime PreviousReport; // invalid: first report, nothing to compare with
  QList<TListedEntry> Previous;
  QList<TSnooze> Snoozes;
  std::int32_t EscalateAfter = 0; // below 2: no escalation
  QSet<TRestId> UncomparedOrganizations;
  QStringList UncomparedNames;

  bool FirstReport() const { return !PreviousReport.isValid(); }
  // The entry of `ticket` in `section` of the last report, or none.
  const TListedEntry *Find(TReportSection section, TRestId ticket) const;
  const TSnooze *SnoozeOf(TRestId ticket) const;
  // Makes the look-ups quick; called once filled.
  void Index();

private:
  QHash<QPair<int, TRestId>, qsizetype> FPreviousIndex;
  QHash<TRestId, qsizetype> FSnoozeIndex;
};

// How long a row has been on the report.
struct TListing
{
  bool New = true;
  QDateTime Since;
  std::int32_t Reports = 1;
  bool Escalated = false;
};

// The row of `ticket` in `section` of a report made at `now`.
TListing ListingOf(const TFollowUpMemory &memory, TReportSection section, const tyRestTicket &ticket,
                   const QDateTime &now);
// "new" or "since 18.11.2026, 5 reports".
QString ListedText(const TListing &listing);

// A ticket of the last sent report that this one does not list, and why.
struct TLeftTicket
{
  TListedEntry Was;
  QString Why; // "assigned", "updated", "no longer open", "status now exempt", ...
};

// Who snoozes: the account the program runs under.
QString SnoozingPerson();

// The date as the report writes it: "24.11.2026".
QString ReportDate(const QDate &date);
