#include "ExtraAuthorities.h"

#include "Errors.h"

#include <QFile>

QList<QSslCertificate> ExtraAuthorities()
{
  const QString path = qEnvironmentVariable(CExtraCaVariable);
  if (path.isEmpty())
    return {};
  const auto failure = [&path](const QString &why) {
    return EReadError(QStringLiteral("The certificate authorities named by %1 cannot be read from %2: %3; correct "
                                     "the file or unset the variable")
                          .arg(QLatin1String(CExtraCaVariable), path, why));
  };
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly))
    throw failure(file.errorString());
  const QList<QSslCertificate> certificates = QSslCertificate::fromData(file.readAll(), QSsl::Pem);
  if (certificates.isEmpty())
    throw failure(QStringLiteral("it holds no PEM certificate"));
  return certificates;
}
