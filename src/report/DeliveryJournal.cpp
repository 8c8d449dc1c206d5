#include "DeliveryJournal.h"

#include "FollowUpStore.h"
#include "core/Trace.h"

#include <QSqlError>
#include <QSqlQuery>
#include <QTimeZone>

namespace {

QString Stamp(const QDateTime &at) { return at.toUTC().toString(Qt::ISODateWithMs); }

// SQLite takes a null QString as NULL, which the text columns refuse.
QString NotNull(const QString &text) { return text.isNull() ? QStringLiteral("") : text; }

} // namespace

TDeliveryJournal::TDeliveryJournal(TFollowUpStore &store) : FStore(store) {}

void TDeliveryJournal::Failed(const QString &what, const QString &error)
{
  const QString warning = QStringLiteral("The journal in %1 could not record %2: %3").arg(FStore.Path(), what, error);
  TraceError(lcApp(), warning);
  if (!FWarnings.contains(warning))
    FWarnings.append(warning);
}

void TDeliveryJournal::BeginRun(const QString &mode, const QDateTime &at)
{
  QSqlQuery query(FStore.Database());
  query.prepare(QStringLiteral("INSERT INTO runs(started, mode) VALUES(?, ?)"));
  query.addBindValue(Stamp(at));
  query.addBindValue(mode);
  if (query.exec())
    FRun = query.lastInsertId().toLongLong();
  else
    Failed(QStringLiteral("the run"), query.lastError().text());
}

qint64 TDeliveryJournal::Plan(int seq, const QString &content, const QStringList &recipients, const QString &rows)
{
  if (FRun < 0)
    return -1;
  QSqlQuery query(FStore.Database());
  query.prepare(QStringLiteral(
      "INSERT INTO mails(run, seq, content, recipients, rows, state) VALUES(?, ?, ?, ?, ?, 'planned')"));
  query.addBindValue(FRun);
  query.addBindValue(seq);
  query.addBindValue(content);
  query.addBindValue(recipients.join(u','));
  query.addBindValue(NotNull(rows));
  if (query.exec())
    return query.lastInsertId().toLongLong();
  Failed(QStringLiteral("a planned mail"), query.lastError().text());
  return -1;
}

void TDeliveryJournal::Delivered(qint64 mail, const QStringList &addresses, const QDateTime &at)
{
  if (mail < 0)
    return;
  QSqlDatabase database = FStore.Database();
  database.transaction();
  QSqlQuery query(database);
  query.prepare(QStringLiteral("INSERT INTO deliveries(mail, address, at) VALUES(?, ?, ?)"));
  for (const QString &address : addresses) {
    query.addBindValue(mail);
    query.addBindValue(address.toLower());
    query.addBindValue(Stamp(at));
    if (!query.exec()) {
      Failed(QStringLiteral("a delivery"), query.lastError().text());
      database.rollback();
      return;
    }
  }
  if (!database.commit())
    Failed(QStringLiteral("a delivery"), database.lastError().text());
}

void TDeliveryJournal::Finish(qint64 mail, const QString &state, const QString &reply, const QDateTime &at)
{
  if (mail < 0)
    return;
  QSqlQuery query(FStore.Database());
  query.prepare(QStringLiteral("UPDATE mails SET state = ?, reply = ?, ended = ? WHERE id = ?"));
  query.addBindValue(state);
  query.addBindValue(NotNull(reply));
  query.addBindValue(Stamp(at));
  query.addBindValue(mail);
  if (!query.exec())
    Failed(QStringLiteral("the end of a mail"), query.lastError().text());
}

QHash<QString, QDateTime> TDeliveryJournal::DeliveredOn(const QString &content, QDate day)
{
  QHash<QString, QDateTime> delivered;
  QSqlQuery query(FStore.Database());
  query.prepare(QStringLiteral("SELECT d.address, MIN(d.at) FROM deliveries d JOIN mails m ON m.id = d.mail "
                               "WHERE m.content = ? AND d.at >= ? AND d.at < ? GROUP BY d.address"));
  query.addBindValue(content);
  query.addBindValue(Stamp(day.startOfDay()));
  query.addBindValue(Stamp(day.addDays(1).startOfDay()));
  if (!query.exec()) {
    Failed(QStringLiteral("what was sent earlier (it cannot be read, so nothing is skipped)"), query.lastError().text());
    return delivered;
  }
  while (query.next())
    delivered.insert(query.value(0).toString(), QDateTime::fromString(query.value(1).toString(), Qt::ISODateWithMs).toLocalTime());
  return delivered;
}
