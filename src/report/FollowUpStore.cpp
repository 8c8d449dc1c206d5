#include "FollowUpStore.h"

#include "core/AtomicFile.h"
#include "core/Errors.h"
#include "core/Trace.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QSqlError>
#include <QSqlQuery>
#include <QUuid>

namespace {

// The tables of each schema version, applied in order from the store's own.
const QList<QStringList> CMigrations{
    {
        QStringLiteral("CREATE TABLE runs(id INTEGER PRIMARY KEY, started TEXT NOT NULL, mode TEXT NOT NULL)"),
        QStringLiteral("CREATE TABLE mails(id INTEGER PRIMARY KEY, run INTEGER NOT NULL REFERENCES runs(id), "
                       "seq INTEGER NOT NULL, content TEXT NOT NULL, recipients TEXT NOT NULL, rows TEXT NOT NULL, "
                       "state TEXT NOT NULL, reply TEXT NOT NULL DEFAULT '', ended TEXT)"),
        QStringLiteral("CREATE TABLE deliveries(mail INTEGER NOT NULL REFERENCES mails(id), address TEXT NOT NULL, "
                       "at TEXT NOT NULL)"),
        QStringLiteral("CREATE INDEX mails_by_content ON mails(content)"),
        QStringLiteral("CREATE INDEX deliveries_by_mail ON deliveries(mail)"),
    },
    {
        // Each sent report, with what a later run compares with and --history shows.
        QStringLiteral("CREATE TABLE reports(id INTEGER PRIMARY KEY, at TEXT NOT NULL, mode TEXT NOT NULL, "
                       "complete INTEGER NOT NULL, unassigned INTEGER NOT NULL, without_update INTEGER NOT NULL, "
                       "ten_exchanges INTEGER NOT NULL, new INTEGER NOT NULL, left_report INTEGER NOT NULL, "
                       "mails_sent INTEGER NOT NULL, mails_not_sent INTEGER NOT NULL, exit_status INTEGER)"),
        QStringLiteral("CREATE INDEX reports_by_time ON reports(at)"),
        // The tickets a sent report listed, per section, with what they were then.
        QStringLiteral("CREATE TABLE listed(report INTEGER NOT NULL REFERENCES reports(id) ON DELETE CASCADE, "
                       "section INTEGER NOT NULL, ticket INTEGER NOT NULL, since TEXT NOT NULL, "
                       "reports INTEGER NOT NULL, last_update TEXT NOT NULL, status TEXT NOT NULL, "
                       "assignee INTEGER NOT NULL, team INTEGER NOT NULL, organization INTEGER NOT NULL, "
                       "organization_name TEXT NOT NULL, type TEXT NOT NULL, title TEXT NOT NULL, "
                       "PRIMARY KEY(report, section, ticket)) WITHOUT ROWID"),
        // Tickets taken off the report for a while: until a day, or until they change
        // (their state when snoozed; known = 0 until a report has seen it).
        QStringLiteral("CREATE TABLE snoozes(ticket INTEGER PRIMARY KEY, until TEXT, until_change INTEGER NOT NULL, "
                       "known INTEGER NOT NULL, last_update TEXT NOT NULL, status TEXT NOT NULL, "
                       "assignee INTEGER NOT NULL, by TEXT NOT NULL, at TEXT NOT NULL)"),
    },
};

// Runs `statement`; false with `error` set when SQLite refused it.
bool Exec(QSqlDatabase &database, const QString &statement, QString &error)
{
  QSqlQuery query(database);
  if (query.exec(statement))
    return true;
  error = query.lastError().text();
  return false;
}

// Brings the schema to CSchemaVersion; false with `error` when it cannot.
bool Migrate(QSqlDatabase &database, QString &error)
{
  QSqlQuery version(database);
  if (!version.exec(QStringLiteral("PRAGMA user_version")) || !version.next()) {
    error = version.lastError().text();
    return false;
  }
  const int current = version.value(0).toInt();
  version.finish();
  if (current > TFollowUpStore::CSchemaVersion) {
    error = QStringLiteral("its schema version %1 is newer than this program's %2")
                .arg(current)
                .arg(TFollowUpStore::CSchemaVersion);
    return false;
  }
  for (int step = current; step < TFollowUpStore::CSchemaVersion; ++step) {
    if (!database.transaction()) {
      error = database.lastError().text();
      return false;
    }
    for (const QString &statement : CMigrations[step])
      if (!Exec(database, statement, error)) {
        database.rollback();
        return false;
      }
    if (!Exec(database, QStringLiteral("PRAGMA user_version = %1").arg(step + 1), error) || !database.commit()) {
      database.rollback();
      return false;
    }
  }
  return true;
}

// Opens `path` under `connection` and readies it; false with `error` when it is
// not a usable store.
bool OpenStore(const QString &path, const QString &connection, QString &error)
{
  const bool created = !QFileInfo::exists(path);
  QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), connection);
  database.setDatabaseName(path);
  database.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=5000"));
  if (!database.open()) {
    error = database.lastError().text();
    return false;
  }
  if (created)
    QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner);
  if (!Exec(database, QStringLiteral("PRAGMA journal_mode = WAL"), error) ||
      !Exec(database, QStringLiteral("PRAGMA foreign_keys = ON"), error))
    return false;
  // A damaged file shows itself at the first read, not at the opening.
  {
    QSqlQuery check(database);
    if (!check.exec(QStringLiteral("PRAGMA quick_check")) || !check.next() ||
        check.value(0).toString() != QLatin1String("ok")) {
      error = check.lastError().isValid() ? check.lastError().text() : check.value(0).toString();
      return false;
    }
  }
  return Migrate(database, error);
}

void Close(const QString &connection)
{
  QSqlDatabase::database(connection, false).close();
  QSqlDatabase::removeDatabase(connection);
}

// Moves the store and its write-ahead files aside; false when it could not.
bool MoveAside(const QString &path, QString &movedTo)
{
  movedTo = path + QStringLiteral(".damaged-") + QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-HHmmss"));
  for (const QString &suffix : {QStringLiteral("-wal"), QStringLiteral("-shm")})
    if (QFile::exists(path + suffix))
      QFile::rename(path + suffix, movedTo + suffix);
  return QFile::rename(path, movedTo);
}

} // namespace

std::unique_ptr<TFollowUpStore> TFollowUpStore::Open(const QString &path, QStringList &warnings)
{
  const TraceScope trace(lcApp(), "TFollowUpStore.Open");
  try {
    MakePrivateFolder(QFileInfo(path).absolutePath());
  } catch (const EQuorvexError &error) {
    warnings.append(QStringLiteral("The store %1 cannot be made: %2; the mails are not journaled").arg(path, error.Message()));
    return nullptr;
  }
  const QString connection = QStringLiteral("store-") + QUuid::createUuid().toString(QUuid::WithoutBraces);
  QString error;
  if (OpenStore(path, connection, error))
    return std::unique_ptr<TFollowUpStore>(new TFollowUpStore(path, connection));
  Close(connection);
  QString movedTo;
  if (!MoveAside(path, movedTo)) {
    warnings.append(QStringLiteral("The store %1 cannot be read (%2) nor moved aside; the mails are not journaled: "
                                   "check the file's permissions")
                        .arg(path, error));
    return nullptr;
  }
  warnings.append(QStringLiteral("The store %1 could not be read (%2): it was moved aside as %3 and made anew")
                      .arg(path, error, movedTo));
  QString again;
  if (OpenStore(path, connection, again))
    return std::unique_ptr<TFollowUpStore>(new TFollowUpStore(path, connection));
  Close(connection);
  warnings.append(QStringLiteral("The store %1 cannot be made (%2); the mails are not journaled").arg(path, again));
  return nullptr;
}

TFollowUpStore::~TFollowUpStore() { Close(FConnection); }
