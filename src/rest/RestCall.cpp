#include "RestCall.h"

#include "RestErrors.h"
#include "core/Trace.h"

QByteArray TRestCall::Took(const QString &url, TRestTransport::TReply reply)
{
  if (!reply.Answer)
    throw ERestTransportError(reply.Failure.Reason, reply.Failure.Details);
  FLastUrl = url;
  FLastStatus = reply.Answer->Status;
  FLastStatusText = reply.Answer->StatusText;
  FLastBodyStart = AnswerStart(reply.Answer->Body);
  return std::move(reply.Answer->Body);
}

void TRestCall::Remember(const QString &reason, const QString &details)
{
  if (!FFailure)
    FFailure = TFailure{.Reason = reason, .Details = details};
}

void TRestCall::Fail(const QString &message)
{
  TraceFailure(lcRest(), message);
  // The details stay in the language of the exchange: the address, and the
  // beginning of an answer that was not understood.
  const QString server = ServerOf(FLastUrl);
  if (FLastStatus / 100 != 2)
    Remember(StatusReason(server, FLastStatus, FLastStatusText), FLastUrl);
  else
    Remember(NotUnderstoodReason(server),
             QStringLiteral("%1 answered: %2").arg(FLastUrl, FLastBodyStart.isEmpty() ? QStringLiteral("(nothing)")
                                                                                      : FLastBodyStart));
}

void TRestCall::FailOn(const EQuorvexError &error)
{
  TraceFailure(lcRest(), QStringLiteral("Erreur API : ") + error.Message());
  if (dynamic_cast<const ERestTransportError *>(&error))
    Remember(error.Message(), error.Details());
  else
    Remember(NotUnderstoodReason(ServerOf(FLastUrl)), error.Message());
}
