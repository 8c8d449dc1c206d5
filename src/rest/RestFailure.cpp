#include "RestFailure.h"

#include <QUrl>

namespace {

const QString CApiDialog = QStringLiteral("\"Quorvex ITSM API\"");

// What the status means to the person, and what to do about it.
QString StatusMeaning(int status)
{
  switch (status) {
  case 400:
  case 401:
    return QStringLiteral("the service refused the access token or the credentials; check the client ID, client "
                          "secret, user name and password in ") +
           CApiDialog;
  case 403:
    return QStringLiteral("the account is not allowed to read this; ask the service's administrator for the right");
  case 404:
    return QStringLiteral("the service does not know this address; check the instance name and hosting mode in ") +
           CApiDialog;
  case 408:
  case 429:
    return QStringLiteral("the service is too busy to answer; try again later");
  default:
    if (status >= 500)
      return QStringLiteral("the service has a problem of its own; try again later, and tell its administrator if "
                            "it lasts");
    return QStringLiteral("the service did not accept the request; tell its administrator if it lasts");
  }
}

} // namespace

QString ServerOf(const QString &url)
{
  const QUrl address(url);
  return address.port() > 0 ? QStringLiteral("%1:%2").arg(address.host()).arg(address.port()) : address.host();
}

QString StatusReason(const QString &server, int status, const QString &statusText)
{
  return QStringLiteral("%1 answered HTTP %2 %3: %4").arg(server).arg(status).arg(statusText, StatusMeaning(status));
}

QString NotUnderstoodReason(const QString &server)
{
  return QStringLiteral("the answer of %1 was not understood (not the data expected); try again later, and tell "
                        "the service's administrator if it lasts")
      .arg(server);
}

QString AnswerStart(const QByteArray &body)
{
  constexpr qsizetype CShown = 160;
  QString start = QString::fromUtf8(body.left(CShown)).simplified();
  return body.size() > CShown ? start + QChar(0x2026) : start;
}
