#include "FollowUpHistory.h"

#include "FollowUpStore.h"
#include "core/Trace.h"

#include <QSqlError>
#include <QSqlQuery>

namespace {

QString Stamp(const QDateTime &at) { return at.toUTC().toString(Qt::ISODateWithMs); }
QDateTime FromStamp(const QString &text) { return QDateTime::fromString(text, Qt::ISODateWithMs).toLocalTime(); }
// SQLite takes a null QString as NULL, which the text columns refuse.
QString NotNull(const QString &text) { return text.isNull() ? QStringLiteral("") : text; }
QVariant Id(TRestId id) { return QVariant::fromValue<qint64>(id); }

// A transaction that rolls back unless committed.
class TTransaction
{
public:
  explicit TTransaction(QSqlDatabase database) : FDatabase(std::move(database)), FOpen(FDatabase.transaction()) {}
  ~TTransaction()
  {
    if (FOpen)
      FDatabase.rollback();
  }
  bool Commit() { return std::exchange(FOpen, false) && FDatabase.commit(); }

private:
  QSqlDatabase FDatabase;
  bool FOpen;
};

} // namespace

void TFollowUpHistory::Failed(const QString &what, const QString &error)
{
  const QString warning = QStringLiteral("The follow-up history in %1: %2 failed: %3").arg(FStore.Path(), what, error);
  TraceError(lcApp(), warning);
  if (!FWarnings.contains(warning))
    FWarnings.append(warning);
}

TFollowUpMemory TFollowUpHistory::Memory()
{
  TFollowUpMemory memory;
  memory.Snoozes = Snoozes();
  QSqlQuery last(FStore.Database());
  if (!last.exec(QStringLiteral("SELECT id, at FROM reports ORDER BY id DESC LIMIT 1"))) {
    Failed(QStringLiteral("reading the last report"), last.lastError().text());
    memory.Index();
    return memory;
  }
  if (last.next()) {
    const qint64 key = last.value(0).toLongLong();
    const QDateTime at = FromStamp(last.value(1).toString());
    QSqlQuery listed(FStore.Database());
    listed.setForwardOnly(true);
    listed.prepare(QStringLiteral("SELECT section, ticket, since, reports, last_update, status, assignee, team, "
                                  "organization, organization_name, type, title FROM listed WHERE report = ?"));
    listed.addBindValue(key);
    if (!listed.exec()) {
      Failed(QStringLiteral("reading the last report's tickets"), listed.lastError().text());
    } else {
      memory.PreviousReport = at;
      while (listed.next())
        memory.Previous.append({listed.value(1).toLongLong(), listed.value(0).toInt(),
                                FromStamp(listed.value(2).toString()), listed.value(3).toInt(),
                                listed.value(4).toString(), listed.value(5).toString(), listed.value(6).toLongLong(),
                                listed.value(7).toLongLong(), listed.value(8).toLongLong(),
                                listed.value(9).toString(), listed.value(10).toString(), listed.value(11).toString()});
    }
  }
  memory.Index();
  return memory;
}

qint64 TFollowUpHistory::Record(const TReportOutput &report, const TRecordedRun &run, const tyRestTickets &tickets,
                                 const TFollowUpMemory &memory)
{
  QSqlDatabase database = FStore.Database();
  TTransaction transaction(database);
  QSqlQuery insert(database);
  insert.prepare(QStringLiteral("INSERT INTO reports(at, mode, complete, unassigned, without_update, ten_exchanges, "
                                "new, left_report, mails_sent, mails_not_sent) VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"));
  for (const QVariant &value :
       {QVariant(Stamp(run.At)), QVariant(run.Mode), QVariant(run.Complete ? 1 : 0), QVariant(run.Counts[0]),
        QVariant(run.Counts[1]), QVariant(run.Counts[2]), QVariant(run.New), QVariant(run.Left),
        QVariant(run.MailsSent), QVariant(run.MailsNotSent)})
    insert.addBindValue(value);
  if (!insert.exec()) {
    Failed(QStringLiteral("recording the report"), insert.lastError().text());
    return -1;
  }
  const qint64 key = insert.lastInsertId().toLongLong();

  QSqlQuery row(database);
  row.prepare(QStringLiteral("INSERT OR IGNORE INTO listed(report, section, ticket, since, reports, last_update, "
                             "status, assignee, team, organization, organization_name, type, title) "
                             "VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"));
  for (const TReportSection section : CReportSections) {
    const auto index = static_cast<std::size_t>(section);
    const TReportRows &rows = report.Rows.at(index);
    for (qsizetype i = 0; i < rows.size(); ++i) {
      const tyRestTicket &ticket = rows[i];
      const TListing &listing = report.Listings.at(index).at(i);
      for (const QVariant &value :
           {QVariant(key), QVariant(static_cast<int>(section)), Id(ticket.id), QVariant(Stamp(listing.Since)),
            QVariant(listing.Reports), QVariant(NotNull(ticket.lastUpdate)), QVariant(NotNull(ticket.status._reference)),
            Id(ticket.assignedUser.id), Id(ticket.assignedTeam.id), Id(ticket.organization.id),
            QVariant(NotNull(ticket.organization.name)), QVariant(NotNull(ticket._type)), QVariant(NotNull(ticket.title))})
        row.addBindValue(value);
      if (!row.exec()) {
        Failed(QStringLiteral("recording the report's tickets"), row.lastError().text());
        return -1;
      }
    }
  }

  for (const TListedEntry &entry : memory.Previous) {
    if (!memory.UncomparedOrganizations.contains(entry.Organization))
      continue;
    for (const QVariant &value :
         {QVariant(key), QVariant(entry.Section), Id(entry.Ticket), QVariant(Stamp(entry.Since)),
          QVariant(entry.Reports), QVariant(NotNull(entry.LastUpdate)), QVariant(NotNull(entry.Status)),
          Id(entry.Assignee), Id(entry.Team), Id(entry.Organization), QVariant(NotNull(entry.OrganizationName)),
          QVariant(NotNull(entry.Type)), QVariant(NotNull(entry.Title))})
      row.addBindValue(value);
    if (!row.exec()) {
      Failed(QStringLiteral("keeping the tickets not compared"), row.lastError().text());
      return -1;
    }
  }

  // Snoozes that ended, and the state of those snoozed without their ticket at hand.
  const QDate today = run.At.date();
  for (const TSnooze &snooze : Snoozes()) {
    const auto ticket = std::find_if(tickets.cbegin(), tickets.cend(),
                                     [&snooze](const tyRestTicket &t) { return t.id == snooze.Ticket; });
    QSqlQuery change(database);
    if (!snooze.UntilChange && !snooze.Holds({}, today)) {
      change.prepare(QStringLiteral("DELETE FROM snoozes WHERE ticket = ?"));
      change.addBindValue(Id(snooze.Ticket));
    } else if (ticket == tickets.cend() || !snooze.UntilChange) {
      continue;
    } else if (!snooze.Known) {
      change.prepare(QStringLiteral("UPDATE snoozes SET known = 1, last_update = ?, status = ?, assignee = ? "
                                    "WHERE ticket = ?"));
      for (const QVariant &value : {QVariant(NotNull(ticket->lastUpdate)), QVariant(NotNull(ticket->status._reference)),
                                    Id(ticket->assignedUser.id), Id(snooze.Ticket)})
        change.addBindValue(value);
    } else if (!snooze.Holds(*ticket, today)) {
      change.prepare(QStringLiteral("DELETE FROM snoozes WHERE ticket = ?"));
      change.addBindValue(Id(snooze.Ticket));
    } else {
      continue;
    }
    if (!change.exec())
      Failed(QStringLiteral("ending a snooze"), change.lastError().text());
  }

  // Reports and journaled runs older than CKeptDays go.
  const QString oldest = Stamp(run.At.addDays(-CKeptDays));
  for (const QString &statement :
       {QStringLiteral("DELETE FROM reports WHERE at < ?"),
        QStringLiteral("DELETE FROM deliveries WHERE mail IN (SELECT mails.id FROM mails JOIN runs ON runs.id = "
                       "mails.run WHERE runs.started < ?)"),
        QStringLiteral("DELETE FROM mails WHERE run IN (SELECT id FROM runs WHERE started < ?)"),
        QStringLiteral("DELETE FROM runs WHERE started < ?")}) {
    QSqlQuery prune(database);
    prune.prepare(statement);
    prune.addBindValue(oldest);
    if (!prune.exec())
      Failed(QStringLiteral("pruning old runs"), prune.lastError().text());
  }
  if (!transaction.Commit()) {
    Failed(QStringLiteral("recording the report"), database.lastError().text());
    return -1;
  }
  return key;
}

void TFollowUpHistory::SetExitStatus(qint64 key, int status)
{
  QSqlQuery query(FStore.Database());
  query.prepare(QStringLiteral("UPDATE reports SET exit_status = ? WHERE id = ?"));
  query.addBindValue(status);
  query.addBindValue(key);
  if (!query.exec())
    Failed(QStringLiteral("recording the exit status"), query.lastError().text());
}

QList<TRecordedRun> TFollowUpHistory::LastRuns(int count)
{
  QList<TRecordedRun> runs;
  QSqlQuery query(FStore.Database());
  query.prepare(QStringLiteral("SELECT at, mode, complete, unassigned, without_update, ten_exchanges, new, "
                               "left_report, mails_sent, mails_not_sent, exit_status FROM reports "
                               "ORDER BY id DESC LIMIT ?"));
  query.addBindValue(count);
  if (!query.exec()) {
    Failed(QStringLiteral("reading the history"), query.lastError().text());
    return runs;
  }
  while (query.next())
    runs.append({FromStamp(query.value(0).toString()), query.value(1).toString(), query.value(2).toBool(),
                 {query.value(3).toInt(), query.value(4).toInt(), query.value(5).toInt()}, query.value(6).toInt(),
                 query.value(7).toInt(), query.value(8).toInt(), query.value(9).toInt(),
                 query.value(10).isNull() ? -1 : query.value(10).toInt()});
  return runs;
}

void TFollowUpHistory::Snooze(TSnooze snooze, const tyRestTicket *ticket)
{
  if (ticket) {
    snooze.Known = true;
    snooze.LastUpdate = ticket->lastUpdate;
    snooze.Status = ticket->status._reference;
    snooze.Assignee = ticket->assignedUser.id;
  } else {
    const TFollowUpMemory memory = Memory();
    for (const TListedEntry &entry : memory.Previous)
      if (entry.Ticket == snooze.Ticket) {
        snooze.Known = true;
        snooze.LastUpdate = entry.LastUpdate;
        snooze.Status = entry.Status;
        snooze.Assignee = entry.Assignee;
        break;
      }
  }
  QSqlQuery query(FStore.Database());
  query.prepare(QStringLiteral("INSERT OR REPLACE INTO snoozes(ticket, until, until_change, known, last_update, "
                               "status, assignee, by, at) VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?)"));
  for (const QVariant &value :
       {Id(snooze.Ticket),
        snooze.UntilChange ? QVariant(QMetaType::fromType<QString>()) : QVariant(snooze.Until.toString(Qt::ISODate)),
        QVariant(snooze.UntilChange ? 1 : 0), QVariant(snooze.Known ? 1 : 0), QVariant(NotNull(snooze.LastUpdate)),
        QVariant(NotNull(snooze.Status)), Id(snooze.Assignee), QVariant(NotNull(snooze.By)),
        QVariant(Stamp(snooze.At))})
    query.addBindValue(value);
  if (!query.exec())
    Failed(QStringLiteral("snoozing ticket %1").arg(snooze.Ticket), query.lastError().text());
}

int TFollowUpHistory::Wake(const QList<TRestId> &tickets)
{
  int woken = 0;
  for (const TRestId ticket : tickets) {
    QSqlQuery query(FStore.Database());
    query.prepare(QStringLiteral("DELETE FROM snoozes WHERE ticket = ?"));
    query.addBindValue(Id(ticket));
    if (!query.exec())
      Failed(QStringLiteral("waking ticket %1").arg(ticket), query.lastError().text());
    else
      woken += query.numRowsAffected();
  }
  return woken;
}

QList<TSnooze> TFollowUpHistory::Snoozes()
{
  QList<TSnooze> snoozes;
  QSqlQuery query(FStore.Database());
  if (!query.exec(QStringLiteral("SELECT ticket, until, until_change, known, last_update, status, assignee, by, at "
                                 "FROM snoozes ORDER BY ticket"))) {
    Failed(QStringLiteral("reading the snoozes"), query.lastError().text());
    return snoozes;
  }
  while (query.next())
    snoozes.append({query.value(0).toLongLong(), QDate::fromString(query.value(1).toString(), Qt::ISODate),
                    query.value(2).toBool(), query.value(3).toBool(), query.value(4).toString(),
                    query.value(5).toString(), query.value(6).toLongLong(), query.value(7).toString(),
                    FromStamp(query.value(8).toString())});
  return snoozes;
}

QStringList HistoryLines(const QList<TRecordedRun> &runs)
{
  QStringList lines;
  for (const TRecordedRun &run : runs)
    lines.append(QStringLiteral("%1  %2  %3  %4 unassigned, %5 without update, %6 with ten exchanges  %7 new, "
                                "%8 left  mails: %9 sent, %10 not sent  exit status: %11")
                     .arg(run.At.toString(QStringLiteral("dd.MM.yyyy HH:mm")), run.Mode,
                          run.Complete ? QStringLiteral("complete") : QStringLiteral("incomplete"))
                     .arg(run.Counts[0])
                     .arg(run.Counts[1])
                     .arg(run.Counts[2])
                     .arg(run.New)
                     .arg(run.Left)
                     .arg(run.MailsSent)
                     .arg(run.MailsNotSent)
                     .arg(run.ExitStatus < 0 ? QStringLiteral("-") : QString::number(run.ExitStatus)));
  return lines;
}

QStringList SnoozeLines(const QList<TSnooze> &snoozes)
{
  QStringList lines;
  for (const TSnooze &snooze : snoozes)
    lines.append(QStringLiteral("%1  %2  by %3 on %4")
                     .arg(QString::number(snooze.Ticket), snooze.UntilText(), snooze.By,
                          snooze.At.toString(QStringLiteral("dd.MM.yyyy HH:mm"))));
  return lines;
}
