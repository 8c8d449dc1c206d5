// One page of the open-ticket list, any bytes: parsed and every item mapped as
// the ticket query does.

#include "FuzzSupport.h"
#include "rest/TicketPage.h"

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
  FuzzInitialize();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
  static TTicketPageParser parser;
  const TTicketPage page = parser.Parse(FuzzBytes(data, size));
  // Only a page of items holds tickets or items that are not tickets.
  if (page.Shape != TTicketPage::TShape::Items && (!page.Tickets.isEmpty() || page.BadItems != 0))
    __builtin_trap();
  return 0;
}
