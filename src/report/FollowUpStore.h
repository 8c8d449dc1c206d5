#pragma once

#include <QSqlDatabase>
#include <QString>
#include <QStringList>
#include <memory>

// The program's own SQLite file beside the settings (<executable name>.db): the
// journal of the mails sent, the tickets each sent report listed, and the
// snoozes. One connection, owned by the thread that opened
// it; readable by the owner alone (0600); write-ahead logging; its schema
// carries a version number that later versions migrate from.
//
// A store that cannot be opened or read (damaged, not a database, a newer
// schema) is moved aside as <name>.damaged-<stamp> and made anew; when even that
// fails the program goes on without one. Neither ever stops a report: the
// warnings say what happened.
class TFollowUpStore
{
public:
  // The store at `path`, or none; `warnings` gets one line per problem met.
  static std::unique_ptr<TFollowUpStore> Open(const QString &path, QStringList &warnings);
  ~TFollowUpStore();
  TFollowUpStore(const TFollowUpStore &) = delete;
  TFollowUpStore &operator=(const TFollowUpStore &) = delete;

  QSqlDatabase Database() const { return QSqlDatabase::database(FConnection); }
  QString Path() const { return FPath; }

  static constexpr int CSchemaVersion = 2;

private:
  TFollowUpStore(QString path, QString connection) : FPath(std::move(path)), FConnection(std::move(connection)) {}
  QString FPath;
  QString FConnection;
};
