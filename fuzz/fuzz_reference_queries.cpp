// The reference queries (objects, organizations, teams with their organizations,
// operators) reading any answer: the first byte picks the query, the rest is the
// body every request gets.

#include "CannedNetwork.h"
#include "support/Await.h"
#include "FuzzSupport.h"
#include "rest/dRest.h"

#include <cstdlib>
#include <memory>

namespace {

TCannedNetwork *Network;
TdmRest *Rest;

// A failure that does not say why would leave the person without a clue.
template <class T> void Check(const TRestResult<T> &result)
{
  if (result.Failure && result.Failure->Reason.isEmpty())
    std::abort();
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
  FuzzInitialize();
  Network = new TCannedNetwork;
  Rest = new TdmRest(*Network);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
  if (size == 0)
    return 0;
  Network->Body = FuzzBytes(data + 1, size - 1);
  tyQuorvexITSM settings;
  settings.Instance = QStringLiteral("fuzz.invalid");
  switch (data[0] % 5) {
  case 0: Check(Await(Rest->GET_Objects(settings, QStringLiteral("TICKETING"), QStringLiteral("TICKET_STATUS")))); break;
  case 1: Check(Await(Rest->GET_OrganizationsList(settings))); break;
  case 2: Check(Await(Rest->GET_Teams(settings, false))); break;
  case 3: Check(Await(Rest->GET_Teams(settings, true))); break;
  default: Check(Await(Rest->GET_OperatorsList(settings))); break;
  }
  return 0;
}
