#include "LibraryVersions.h"

#include <curl/curl.h>
#include <openssl/crypto.h>
#include <xlsxwriter.h>

#include <QtGlobal>

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
  };
}
