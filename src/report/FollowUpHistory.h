#pragma once

#include "FollowUp.h"
#include "MailReport.h"

#include <QDateTime>
#include <QList>
#include <QStringList>

class TFollowUpStore;

// One sent report as --history shows it.
struct TRecordedRun
{
  QDateTime At;
  QString Mode;
  bool Complete = true;
  std::array<std::int32_t, CReportSectionCount> Counts{};
  std::int32_t New = 0;
  std::int32_t Left = 0;
  std::int32_t MailsSent = 0;
  std::int32_t MailsNotSent = 0;
  int ExitStatus = -1; // -1: not an unattended run, or not ended yet
};

// The follow-up's memory in the store: the tickets each sent report listed,
// and the snoozes. Nothing here stops a report: a read or write the store
// refuses is traced and added to Warnings(), and the report goes on as if the
// store had nothing (a first report).
class TFollowUpHistory
{
public:
  // Sent reports older than this are pruned when a report is recorded.
  static constexpr int CKeptDays = 400;

  explicit TFollowUpHistory(TFollowUpStore &store) : FStore(store) {}

  // What the last sent report listed, and the snoozes.
  TFollowUpMemory Memory();
  // Records a report that was sent (`run` tells how), from its full rows and
  // listings, and keeps from `memory` the tickets of the organizations it could
  // not compare, as they were; the snoozes that ended by date or by a change of their ticket in
  // `tickets` are removed, those made without the ticket at hand take its
  // state, and runs older than CKeptDays are pruned. Returns the run's key
  // (-1 when it could not be written).
  qint64 Record(const TReportOutput &report, const TRecordedRun &run, const tyRestTickets &tickets,
                const TFollowUpMemory &memory);
  // The exit status of the unattended run that recorded `key`.
  void SetExitStatus(qint64 key, int status);
  // The last `count` sent reports, newest first.
  QList<TRecordedRun> LastRuns(int count);

  // Takes a ticket off the report (replacing an earlier snooze of it). Its state
  // is taken from `ticket` when given, else from the last sent report, else
  // from the next report that sees it.
  void Snooze(TSnooze snooze, const tyRestTicket *ticket = nullptr);
  // Ends the snoozes of `tickets`; returns how many there were.
  int Wake(const QList<TRestId> &tickets);
  QList<TSnooze> Snoozes();

  QStringList Warnings() const { return FWarnings; }

private:
  void Failed(const QString &what, const QString &error);

  TFollowUpStore &FStore;
  QStringList FWarnings;
};

// One line per run for --history: time, mode, complete or not, the counts,
// new, left, mails sent and not sent, exit status.
QStringList HistoryLines(const QList<TRecordedRun> &runs);
// One line per snooze for --snoozed: ticket, until when, who and when.
QStringList SnoozeLines(const QList<TSnooze> &snoozes);
