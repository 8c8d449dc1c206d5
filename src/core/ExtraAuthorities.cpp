#include "ExtraAuthorities.h"

#include "Errors.h"

#include <QFile>

namespace {
QString GConfigured; // set from the settings, on the thread that reads them
} // namespace

void SetConfiguredAuthorities(const QString &pemFile)
{
  GConfigured = pemFile.trimmed();
}

QString ConfiguredAuthorities()
{
  return GConfigured;
}

TAuthoritiesSource ExtraAuthoritiesSource()
{
  const QString variable = qEnvironmentVariable(CExtraCaVariable);
  if (!variable.isEmpty())
    return {QLatin1String(CExtraCaVariable), variable};
  if (!GConfigured.isEmpty())
    return {QStringLiteral("the \"Certificate authorities\" setting of \"Quorvex ITSM API\""), GConfigured};
  return {};
}

QList<QSslCertificate> ExtraAuthorities()
{
  const TAuthoritiesSource source = ExtraAuthoritiesSource();
  if (source.File.isEmpty())
    return {};
  const auto failure = [&source](const QString &why) {
    return EReadError(QStringLiteral("The certificate authorities named by %1 cannot be read from %2: %3; correct "
                                     "the file or name another")
                          .arg(source.Origin, source.File, why));
  };
  QFile file(source.File);
  if (!file.open(QIODevice::ReadOnly))
    throw failure(file.errorString());
  const QList<QSslCertificate> certificates = QSslCertificate::fromData(file.readAll(), QSsl::Pem);
  if (certificates.isEmpty())
    throw failure(QStringLiteral("it holds no PEM certificate"));
  return certificates;
}
