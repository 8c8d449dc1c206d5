#include "SmtpIdentity.h"

#include <QHostInfo>

QString SmtpServerName(const tySMTPserver &smtp)
{
  return QStringLiteral("%1:%2").arg(smtp.Server.trimmed()).arg(smtp.Port);
}

QString SenderAddress(const tySMTPserver &smtp)
{
  const QString from = smtp.From.trimmed();
  if (!from.isEmpty())
    return from;
  const QString user = smtp.UserName.trimmed();
  if (user.contains(u'@'))
    return user;
  return QStringLiteral("quorvex-followup@") + QHostInfo::localHostName();
}
