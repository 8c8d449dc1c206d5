#include "RestFixture.h"
#include "core/Trace.h"
#include "rest/RestErrors.h"

#include <QTcpServer>
#include <limits>

namespace {
constexpr double COneHour = 1.0 / 24.0;
}

TEST(TokenAddress, OnPremiseIsTheHostAndHostedAddsTheServiceDomain)
{
  tyQuorvexITSM settings;
  settings.Instance = "host.example";
  EXPECT_EQ(TdmRest::GetQuorvexItsmUrl(settings), "https://host.example");
  settings.Instance = "127.0.0.1:8443";
  EXPECT_EQ(TdmRest::GetQuorvexItsmUrl(settings), "https://127.0.0.1:8443");
  settings.SaaS = true;
  settings.Instance = "acme";
  EXPECT_EQ(TdmRest::GetQuorvexItsmUrl(settings), QString("https://acme.") + QUORVEX_SAAS_DOMAIN);
}

using Token = RestFixture;

TEST_F(Token, NewTokenIsAskedWithTheFormBodyAndOnlyTheContentTypeOfOurs)
{
  const TDateTime before = NowDateTime();
  ASSERT_TRUE(FRest->GetToken(FSettings));
  EXPECT_TRUE(FRest->TokenOk());
  EXPECT_FALSE(FRest->LastCallFailed());

  ASSERT_EQ(FService.Requests().size(), 1);
  const TDemoRequest &request = FService.Requests().first();
  EXPECT_EQ(request.Method, "POST");
  EXPECT_EQ(request.Target, "/oauth/token");
  EXPECT_EQ(request.Body, "grant_type=password&client_id=client-1&client_secret=s3cret&"
                          "username=lead%40example.org&password=Pass%20word%26%3D%C3%A9&scope=public-api");
  EXPECT_EQ(request.Header("Content-Type"), "application/x-www-form-urlencoded");
  EXPECT_TRUE(request.Header("Authorization").isEmpty());

  EXPECT_FALSE(FSettings.API.Token.isEmpty());
  EXPECT_GE(FSettings.API.TokenRequest, before);
  EXPECT_LE(FSettings.API.TokenRequest, NowDateTime());
  const QString trace = TraceText();
  EXPECT_TRUE(trace.contains(QString("URL = \"https://%1/oauth/token\"").arg(FService.Instance())));
  EXPECT_TRUE(trace.contains(QString("Token reçu : ") + FSettings.API.Token.left(6) + QChar(0x2026)));
  EXPECT_FALSE(trace.contains(FSettings.API.Token)) << "the token must never be traced in clear";
}

TEST_F(Token, TheNewTokenIsSentAsBearerByTheQueries)
{
  SignIn();
  FRest->GET_OrganizationsList(FSettings);
  ASSERT_EQ(FService.Requests().size(), 1);
  EXPECT_EQ(FService.Requests().first().Header("Authorization"), "Bearer " + FSettings.API.Token.toUtf8());
}

TEST_F(Token, StoredTokenIsReusedUntilValidityLessNineHoursThenRenewed)
{
  FSettings.API.Token = "previous-token-0123";
  FSettings.API.TokenValidity = 10; // reused for one hour after the last request
  const TDateTime halfHourAgo = NowDateTime() - COneHour / 2;
  FSettings.API.TokenRequest = halfHourAgo;

  ASSERT_TRUE(FRest->GetToken(FSettings));
  EXPECT_TRUE(FService.Requests().isEmpty());
  EXPECT_EQ(FSettings.API.TokenRequest, halfHourAgo) << "a reused token leaves the request time alone";
  EXPECT_TRUE(TraceText().contains(QString("Utilisation du précédent Token: previo") + QChar(0x2026)));
  EXPECT_FALSE(TraceText().contains("previous-token-0123"));

  FSettings.API.TokenRequest = NowDateTime() - 1.5 * COneHour;
  ASSERT_TRUE(FRest->GetToken(FSettings));
  EXPECT_EQ(FService.Requests().size(), 1);
  EXPECT_NE(FSettings.API.Token, "previous-token-0123");
}

TEST_F(Token, ValidityOfNineHoursOrLessOrAnEmptyTokenAlwaysAsks)
{
  FSettings.API.Token = "previous-token";
  FSettings.API.TokenRequest = NowDateTime();
  FSettings.API.TokenValidity = 9;
  ASSERT_TRUE(FRest->GetToken(FSettings));
  EXPECT_EQ(FService.Requests().size(), 1);

  FSettings.API.Token = "previous-token";
  FSettings.API.TokenRequest = NowDateTime();
  FSettings.API.TokenValidity = 5; // an expiry before the request itself
  ASSERT_TRUE(FRest->GetToken(FSettings));
  EXPECT_EQ(FService.Requests().size(), 2);

  FSettings.API.Token.clear();
  FSettings.API.TokenRequest = NowDateTime();
  FSettings.API.TokenValidity = 1000;
  ASSERT_TRUE(FRest->GetToken(FSettings));
  EXPECT_EQ(FService.Requests().size(), 3);
}

TEST_F(Token, ValidityWhoseHoursOverflowIsAnError)
{
  FSettings.API.TokenValidity = std::numeric_limits<std::int32_t>::min() + 3; // overflows when 9 is taken away
  EXPECT_THROW(FRest->GetToken(FSettings), ERangeError);
  FSettings.API.TokenValidity = 40000000; // overflows when counted in minutes
  EXPECT_THROW(FRest->GetToken(FSettings), ERangeError);
  EXPECT_TRUE(FService.Requests().isEmpty());
}

TEST_F(Token, RefusedRequestKeepsTheStoredTokenAndTracesTheStatus)
{
  SignIn();
  const QString stored = FSettings.API.Token;
  FSettings.API.TokenRequest = 0;
  TDemoFaults faults;
  faults.RefuseToken = true;
  FService.SetFaults(faults);

  EXPECT_FALSE(FRest->GetToken(FSettings));
  EXPECT_TRUE(FRest->LastCallFailed());
  EXPECT_EQ(FSettings.API.Token, stored);
  EXPECT_GT(FSettings.API.TokenRequest, NowDateTime() - COneHour) << "set as soon as the answer came";
  EXPECT_EQ(ErrorLines(), QStringList{"Erreur OAuth2: 401 - Unauthorized"});
  EXPECT_TRUE(FRest->TokenOk()) << "a failed renewal keeps the token of the earlier success";
}

TEST_F(Token, AnswerWithoutAccessTokenIsAFailure)
{
  for (const QByteArray &body : {QByteArray(R"({"token_type":"bearer"})"), QByteArray("[]"), QByteArray("garbage")}) {
    Trace::Clear();
    Trace::AttachFile(FConfig.File("trace.log"));
    ReplaceBody("/oauth/token", body);
    EXPECT_FALSE(FRest->GetToken(FSettings)) << body.constData();
    EXPECT_TRUE(FRest->LastCallFailed());
    EXPECT_EQ(ErrorLines(), QStringList{"Erreur : Token non trouvé dans la réponse"}) << body.constData();
  }
  EXPECT_FALSE(FRest->TokenOk());
  EXPECT_TRUE(FSettings.API.Token.isEmpty());
}

TEST_F(Token, TransportFailuresRaiseWithDistinctTextsAndLeaveTheRequestTime)
{
  const auto failure = [this](const tyQuorvexITSM &settings) -> QString {
    tyQuorvexITSM copy = settings;
    try {
      FRest->GetToken(copy);
    } catch (const ERestTransportError &error) {
      EXPECT_TRUE(FRest->LastCallFailed());
      EXPECT_EQ(copy.API.TokenRequest, settings.API.TokenRequest);
      return error.Message();
    }
    ADD_FAILURE() << "no transport error";
    return {};
  };

  QTcpServer closed;
  ASSERT_TRUE(closed.listen(QHostAddress::LocalHost));
  const quint16 freePort = closed.serverPort();
  closed.close();
  tyQuorvexITSM refused = FSettings;
  refused.Instance = QString("127.0.0.1:%1").arg(freePort);
  EXPECT_TRUE(failure(refused).startsWith(QString("the connection was refused by 127.0.0.1:%1; check").arg(freePort)));

  tyQuorvexITSM unknown = FSettings;
  unknown.Instance = "no-such-host.invalid";
  EXPECT_TRUE(failure(unknown).startsWith("the host \"no-such-host.invalid\" was not found; check"));

  TDemoFaults slow;
  slow.DelayMs = 2000;
  FService.SetFaults(slow);
  FRest->SetTimeout(std::chrono::milliseconds(300));
  EXPECT_TRUE(failure(FSettings).startsWith(QString("no answer from %1 within 0.3 s (time-out)").arg(FService.Instance())));
}

TEST_F(Token, CertificateTrustNeedsTheExtraAuthoritiesAndAnUnreadableFileIsNamed)
{
  const struct
  {
    const char *extra; // QUORVEX_EXTRA_CA_CERTS, or null for unset
    QString expected;
  } cases[] = {
      {nullptr, QString("the certificate of %1 is not trusted").arg(FService.Instance())},
      {"/nonexistent/ca.pem",
       "The certificate authorities named by QUORVEX_EXTRA_CA_CERTS cannot be read from /nonexistent/ca.pem"},
  };
  for (const auto &c : cases) {
    c.extra ? qputenv("QUORVEX_EXTRA_CA_CERTS", c.extra) : qunsetenv("QUORVEX_EXTRA_CA_CERTS");
    QNetworkAccessManager manager;
    TdmRest distrustful(manager);
    try {
      distrustful.GetToken(FSettings);
      ADD_FAILURE() << "the demo certificate was trusted";
    } catch (const ERestTransportError &error) {
      EXPECT_TRUE(error.Message().startsWith(c.expected)) << error.Message().toStdString();
    }
  }
}
