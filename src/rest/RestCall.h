#pragma once

#include "RestFailure.h"
#include "RestResult.h"
#include "RestTransport.h"

#include <optional>
#include <utility>

class EQuorvexError;

// What one call of the service client learned while it ran: its first failure,
// and the last answer, which a failure then names. Each call has its own, so
// that calls overlapping in time never mix their states.
class TRestCall
{
public:
  // The body of `reply`'s answer, remembered as the last one; raises
  // ERestTransportError with the reply's reason when no answer came.
  QByteArray Took(const QString &url, TRestTransport::TReply reply);

  // Writes the error trace and remembers the failure: an answer refused by its
  // HTTP status, or else an answer not understood.
  void Fail(const QString &message);
  // The same for an error raised while sending or reading: a transport error
  // gives its own reason, any other means that the answer was not understood.
  void FailOn(const EQuorvexError &error);
  // Remembers the failure unless the call already failed.
  void Remember(const QString &reason, const QString &details);

  int LastStatus() const { return FLastStatus; }
  // The call's value with the failure it met.
  template <class T> TRestResult<T> Finish(T value) { return {std::move(value), std::move(FFailure), {}}; }

private:
  std::optional<TFailure> FFailure;
  QString FLastUrl;
  int FLastStatus = 0;
  QString FLastStatusText;
  QString FLastBodyStart;
};
