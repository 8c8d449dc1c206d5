#include "TokenProvider.h"

#include "core/Trace.h"

#include <QScopeGuard>

TTask<bool> TTokenProvider::Refused(QString sentWith)
{
  if (FRenewing)
    co_return co_await TCallback<bool>([this](auto done) { FWaiting.append(std::move(done)); });
  if (FToken != sentWith)
    co_return !FToken.isEmpty(); // renewed since that request left, or a renewal already failed
  qCDebug(lcRest()) << "The service refused the token (HTTP 401); it is dropped";
  FToken.clear();
  if (!FRenew)
    co_return false;
  FRenewing = true;
  bool renewed = false;
  // The requests waiting for this renewal learn its outcome however it ends.
  const auto tellWaiting = qScopeGuard([this, &renewed] {
    FRenewing = false;
    for (const auto &waiting : std::exchange(FWaiting, {}))
      waiting(renewed);
  });
  renewed = co_await FRenew();
  co_return renewed;
}
