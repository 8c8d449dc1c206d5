#include "FollowUp.h"

#include <pwd.h>
#include <unistd.h>

#include "MailReport.h"

bool TSnooze::Holds(const tyRestTicket &ticket, QDate today) const
{
  if (!UntilChange)
    return today < Until;
  return !Known || (ticket.lastUpdate == LastUpdate && ticket.status._reference == Status &&
                    ticket.assignedUser.id == Assignee);
}

QString TSnooze::UntilText() const
{
  return UntilChange ? QStringLiteral("until it changes") : QStringLiteral("until ") + ReportDate(Until);
}

const TListedEntry *TFollowUpMemory::Find(TReportSection section, TRestId ticket) const
{
  const auto found = FPreviousIndex.constFind({static_cast<int>(section), ticket});
  return found == FPreviousIndex.cend() ? nullptr : &Previous.at(*found);
}

const TSnooze *TFollowUpMemory::SnoozeOf(TRestId ticket) const
{
  const auto found = FSnoozeIndex.constFind(ticket);
  return found == FSnoozeIndex.cend() ? nullptr : &Snoozes.at(*found);
}

void TFollowUpMemory::Index()
{
  FPreviousIndex.clear();
  for (qsizetype i = 0; i < Previous.size(); ++i)
    FPreviousIndex.insert({Previous[i].Section, Previous[i].Ticket}, i);
  FSnoozeIndex.clear();
  for (qsizetype i = 0; i < Snoozes.size(); ++i)
    FSnoozeIndex.insert(Snoozes[i].Ticket, i);
}

TListing ListingOf(const TFollowUpMemory &memory, TReportSection section, const tyRestTicket &ticket,
                   const QDateTime &now)
{
  TListing listing;
  listing.Since = now;
  if (const TListedEntry *before = memory.Find(section, ticket.id)) {
    listing.New = false;
    listing.Since = before->Since;
    listing.Reports = before->Reports + 1;
  }
  listing.Escalated = memory.EscalateAfter >= 2 && listing.Reports >= memory.EscalateAfter;
  return listing;
}

QString ListedText(const TListing &listing)
{
  if (listing.New)
    return QStringLiteral("new");
  return QStringLiteral("since %1, %2 reports").arg(ReportDate(listing.Since.date())).arg(listing.Reports);
}

QString ReportDate(const QDate &date) { return date.toString(QStringLiteral("dd.MM.yyyy")); }

QString SnoozingPerson()
{
  if (const passwd *account = getpwuid(getuid()))
    return QString::fromLocal8Bit(account->pw_name);
  return QString::number(getuid());
}
