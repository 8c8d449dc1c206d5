#include "RestFixture.h"
#include "support/Await.h"
#include "core/ExtraAuthorities.h"
#include "rest/RestErrors.h"

#include <QScopeGuard>
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
  EXPECT_FALSE(Await(FRest->GetToken(FSettings)).Failed());
  EXPECT_TRUE(FRest->TokenOk());
  ASSERT_EQ(FService.Requests().size(), 1);
  const TDemoRequest &request = FService.Requests().first();
  EXPECT_EQ(std::make_tuple(request.Method, request.Target, request.Header("Content-Type"),
                            request.Header("Authorization")),
            std::make_tuple(QByteArray("POST"), QString("/oauth/token"),
                            QByteArray("application/x-www-form-urlencoded"), QByteArray()));
  EXPECT_EQ(request.Body, "grant_type=password&client_id=client-1&client_secret=s3cret&"
                          "username=lead%40example.org&password=Pass%20word%26%3D%C3%A9&scope=public-api");
  EXPECT_TRUE(FSettings.API.TokenRequest >= before && FSettings.API.TokenRequest <= NowDateTime());
  const QString trace = TraceText();
  EXPECT_TRUE(trace.contains(QString("Token reçu : ") + FSettings.API.Token.left(6) + QChar(0x2026)));
  EXPECT_FALSE(FSettings.API.Token.isEmpty() || trace.contains(FSettings.API.Token)) << "never traced in clear";
}

TEST_F(Token, StoredTokenIsReusedUntilValidityLessNineHoursThenRenewed)
{
  const struct
  {
    QString stored;
    int validity;
    double hoursAgo; // of the last token request
    bool asked;
  } rows[] = {
      {"previous-token-0123", 10, 0.5, false}, // reused for one hour after the last request
      {"previous-token-0123", 10, 1.5, true},
      {"previous-token-0123", 9, 0, true},
      {"previous-token-0123", 5, 0, true}, // an expiry before the request itself
      {"", 1000, 0, true},
  };
  for (const auto &row : rows) {
    FService.ClearRequests();
    FSettings.API.Token = row.stored;
    FSettings.API.TokenValidity = row.validity;
    const TDateTime requested = NowDateTime() - row.hoursAgo * COneHour;
    FSettings.API.TokenRequest = requested;
    ASSERT_FALSE(Await(FRest->GetToken(FSettings)).Failed());
    const auto context = QString("validity %1, %2 h ago").arg(row.validity).arg(row.hoursAgo).toStdString();
    EXPECT_EQ(FService.Requests().size(), row.asked ? 1 : 0) << context;
    EXPECT_EQ(FSettings.API.Token == row.stored, !row.asked) << context;
    EXPECT_TRUE(row.asked || FSettings.API.TokenRequest == requested) << "a reused token leaves the request time";
  }
  EXPECT_TRUE(TraceText().contains(QString("Utilisation du précédent Token: previo") + QChar(0x2026)));
  EXPECT_FALSE(TraceText().contains("previous-token-0123"));
}

TEST_F(Token, ValidityWhoseHoursOverflowIsAnError)
{
  FSettings.API.TokenValidity = std::numeric_limits<std::int32_t>::min() + 3; // overflows when 9 is taken away
  EXPECT_THROW((void)Await(FRest->GetToken(FSettings)), ERangeError);
  FSettings.API.TokenValidity = 40000000; // overflows when counted in minutes
  EXPECT_THROW((void)Await(FRest->GetToken(FSettings)), ERangeError);
  EXPECT_TRUE(FService.Requests().isEmpty());
}

TEST_F(Token, ARefusalOrAnAnswerWithoutTokenFailsAndKeepsTheTokenInForce)
{
  SignIn();
  const QString stored = FSettings.API.Token;
  // An empty body stands for a refusal of the credentials.
  for (const QByteArray &body : {QByteArray(), QByteArray(R"({"token_type":"bearer"})"), QByteArray("[]"),
                                 QByteArray("garbage")}) {
    RestartTrace();
    TDemoFaults faults;
    faults.RefuseToken = body.isEmpty();
    if (!body.isEmpty())
      faults.Bodies.append({"/oauth/token", -1, body, 200});
    FService.SetFaults(faults);
    FSettings.API.TokenRequest = 0;
    const TRestResult<> result = Await(FRest->GetToken(FSettings));
    ASSERT_TRUE(result.Failed()) << body.constData();
    const QString reason = body.isEmpty() ? FService.Instance() + " answered HTTP 401 Unauthorized: the service refused"
                                          : "the answer of " + FService.Instance() + " was not understood";
    EXPECT_TRUE(result.Failure->Reason.startsWith(reason)) << result.Failure->Reason.toStdString();
    EXPECT_EQ(ErrorLines(), QStringList{body.isEmpty() ? "Erreur OAuth2: 401 - Unauthorized"
                                                       : "Erreur : Token non trouvé dans la réponse"});
    EXPECT_EQ(FSettings.API.Token, stored);
    EXPECT_GT(FSettings.API.TokenRequest, NowDateTime() - COneHour) << "set as soon as the answer came";
    EXPECT_TRUE(FRest->TokenOk()) << "a failed renewal keeps the token of the earlier success";
  }
}

// Whatever keeps the request from being answered is a failure of the call that
// names the server, or the certificate file, and what to do. The "Certificate
// authorities" setting trusts a service's own authority as the variable does;
// the variable, when set, wins.
TEST_F(Token, TransportFailuresAreCarriedInPlainWordsAndLeaveTheRequestTime)
{
  QTcpServer closed;
  ASSERT_TRUE(closed.listen(QHostAddress::LocalHost));
  const quint16 freePort = closed.serverPort();
  closed.close();
  const QByteArray trusted = qgetenv("QUORVEX_EXTRA_CA_CERTS");
  const auto restore = qScopeGuard([&trusted] {
    SetConfiguredAuthorities({});
    qputenv("QUORVEX_EXTRA_CA_CERTS", trusted);
  });
  const QString demo = FService.Instance();
  const struct
  {
    QString instance;
    int delayMs; // of the service's answers
    QByteArray variable; // QUORVEX_EXTRA_CA_CERTS, unset when empty
    QString setting;     // the "Certificate authorities" setting
    QString reason;      // empty: a token came
  } rows[] = {
      {QString("127.0.0.1:%1").arg(freePort), 0, trusted, {},
       QString("the connection was refused by 127.0.0.1:%1; check").arg(freePort)},
      {"no-such-host.invalid", 0, trusted, {}, "the host \"no-such-host.invalid\" was not found; check"},
      {demo, 2000, trusted, {}, QString("no answer from %1 within 0.3 s (time-out)").arg(demo)},
      {demo, 0, {}, {}, QString("the certificate of %1 is not trusted").arg(demo)},
      {demo, 0, "/nonexistent/ca.pem", {},
       "The certificate authorities named by QUORVEX_EXTRA_CA_CERTS cannot be read from /nonexistent/ca.pem"},
      {demo, 0, {}, trusted, {}},
      {demo, 0, {}, "/nonexistent/ca.pem",
       "The certificate authorities named by the \"Certificate authorities\" setting of \"Quorvex ITSM API\" cannot be "
       "read from /nonexistent/ca.pem"},
      {demo, 0, trusted, "/nonexistent/ca.pem", {}},
  };
  for (const auto &row : rows) {
    row.variable.isEmpty() ? qunsetenv("QUORVEX_EXTRA_CA_CERTS") : qputenv("QUORVEX_EXTRA_CA_CERTS", row.variable);
    SetConfiguredAuthorities(row.setting);
    FService.SetFaults({.DelayMs = row.delayMs, .Bodies = {}});
    QNetworkAccessManager manager;
    TdmRest rest(manager);
    rest.SetTimeout(row.delayMs ? std::chrono::milliseconds(300) : TRestTransport::CDefaultTimeout);
    tyQuorvexITSM settings = FSettings;
    settings.Instance = row.instance;
    const TRestResult<> result = Await(rest.GetToken(settings));
    EXPECT_EQ(result.Failed() ? result.Failure->Reason.left(row.reason.size()) : QString(), row.reason);
    EXPECT_EQ(settings.API.TokenRequest == FSettings.API.TokenRequest, result.Failed()) << row.reason.toStdString();
  }
}
