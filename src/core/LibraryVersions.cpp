#include "LibraryVersions.h"

#include <curl/curl.h>
#include <openssl/crypto.h>
#include <xlsxwriter.h>

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QtGlobal>

namespace {

// The SQLite that Qt's driver carries, as that SQLite itself says.
QString SqliteVersion()
{
  const QString connection = QStringLiteral("sqlite-version");
  QString version = QStringLiteral("not available (the Qt SQLite driver is missing)");
  {
    QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), connection);
    database.setDatabaseName(QStringLiteral(":memory:"));
    if (database.open()) {
      QSqlQuery query(database);
      if (query.exec(QStringLiteral("SELECT sqlite_version()")) && query.next())
        version = query.value(0).toString();
    }
  }
  QSqlDatabase::removeDatabase(connection);
  return version;
}

} // namespace

QList<QPair<QString, QString>> LibraryVersions()
{
  const curl_version_info_data *curl = curl_version_info(CURLVERSION_NOW);
  return {
      {QStringLiteral("Qt"), QString::fromLatin1(qVersion())},
      {QStringLiteral("OpenSSL"), QString::fromLatin1(OpenSSL_version(OPENSSL_VERSION))},
      {QStringLiteral("libcurl"), QString::fromLatin1(curl->version)},
      {QStringLiteral("libxlsxwriter"), QString::fromLatin1(lxw_version())},
      {QStringLiteral("SimpleIni"), QStringLiteral(QUORVEX_SIMPLEINI_VERSION)},
      {QStringLiteral("GMime"), QStringLiteral(QUORVEX_GMIME_VERSION)},
      {QStringLiteral("SQLite"), SqliteVersion()},
  };
}
