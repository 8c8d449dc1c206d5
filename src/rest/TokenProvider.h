#pragma once

#include "core/Task.h"

#include <QList>
#include <QString>
#include <functional>

// The access token that the service's requests carry, and its renewal once the
// service refused it (HTTP 401). The requests that met the refusal of the same
// token share one renewal, however many were in flight: the first asks for a
// new token, the others wait for its outcome.
class TTokenProvider
{
public:
  // Obtains a new token, which it hands to Set; gives whether one is in force.
  using TRenew = std::function<TTask<bool>()>;

  const QString &Token() const { return FToken; }
  void Set(const QString &token) { FToken = token; }
  void Drop() { FToken.clear(); }
  void SetRenewal(TRenew renew) { FRenew = std::move(renew); }

  // A request sent with `sentWith` was refused: gives whether a newer token is
  // in force to send it again with, renewing the refused one unless another
  // request already did or is doing so.
  TTask<bool> Refused(QString sentWith);

private:
  QString FToken;
  TRenew FRenew;
  bool FRenewing = false;
  QList<std::function<void(bool renewed)>> FWaiting;
};
