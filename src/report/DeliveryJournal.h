#pragma once

#include <QDate>
#include <QDateTime>
#include <QHash>
#include <QString>
#include <QStringList>

class TFollowUpStore;

// The journal of the mails of each run, in the store: for every planned mail
// its recipients, the rows it carries, its state and the server's reply, and
// each address it was delivered to. A later run asks it what was already
// delivered. A write that fails is traced and noted in Warnings(); it never
// stops a delivery.
class TDeliveryJournal
{
public:
  explicit TDeliveryJournal(TFollowUpStore &store);

  // Starts the journal of a run in `mode` ("report", "concerned", "personal").
  void BeginRun(const QString &mode, const QDateTime &at);
  // A mail planned by the run (the `seq`-th); returns its key in the journal,
  // or -1 when it could not be written.
  qint64 Plan(int seq, const QString &content, const QStringList &recipients, const QString &rows);
  // The mail reached `addresses` at `at`.
  void Delivered(qint64 mail, const QStringList &addresses, const QDateTime &at);
  // The mail's final state ("sent", "partly sent", "not sent", "skipped") and
  // the server's reply or the reason.
  void Finish(qint64 mail, const QString &state, const QString &reply, const QDateTime &at);

  // The addresses (lower case) that received a mail of `content` on the local
  // day `day`, each with the time it first did.
  // When the journal cannot be read, nothing (and a warning).
  QHash<QString, QDateTime> DeliveredOn(const QString &content, QDate day);

  QStringList Warnings() const { return FWarnings; }

private:
  void Failed(const QString &what, const QString &error);

  TFollowUpStore &FStore;
  qint64 FRun = -1;
  QStringList FWarnings;
};
