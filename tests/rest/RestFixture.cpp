#include "RestFixture.h"
#include "support/Await.h"

#include "core/Trace.h"

RestFixture::RestFixture()
{
  Trace::Install(false);
  RestartTrace();
  WriteTextFile(FConfig.File("ca.pem"), FService.CertificatePem());
  FService.Listen();
  FRest = std::make_unique<TdmRest>(FManager);
  FSettings.Instance = FService.Instance();
  FSettings.API.ClientID = CTestClientId;
  FSettings.API.ClientSecret = CTestSecret;
  FSettings.API.Username = CTestUser;
  FSettings.API.Password = QString::fromUtf8(CTestPassword);
  FSettings.API.TokenValidity = 12;
}

RestFixture::~RestFixture()
{
  Trace::Clear();
}

void RestFixture::SignIn()
{
  ASSERT_FALSE(Await(FRest->GetToken(FSettings)).Failed());
  FService.ClearRequests();
}

void RestFixture::RestartTrace()
{
  Trace::Clear();
  Trace::AttachFile(FConfig.File("trace.log"));
}

QString RestFixture::TraceText() const
{
  return ReadTextFile(Trace::FilePath());
}

QStringList RestFixture::ErrorLines() const
{
  QStringList errors;
  for (const QString &line : TraceText().split(u'\n'))
    if (line.contains(QLatin1String(" ERROR ")))
      errors.append(line.mid(line.indexOf(QLatin1String(" ERROR ")) + 7));
  return errors;
}

void RestFixture::ReplaceBody(const QString &path, const QByteArray &body, int page, int status)
{
  FService.SetFaults({.Bodies = {{path, page, body, status}}});
}
