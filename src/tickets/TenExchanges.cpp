#include "TenExchanges.h"

#include <QSet>

tyRestTickets MergeTenExchanges(tyRestTickets tickets, const tyRestTickets &foundEnglish,
                                const tyRestTickets &foundFrench)
{
  QSet<TRestId> flagged;
  for (const tyRestTicket &ticket : foundEnglish)
    flagged.insert(ticket.id);
  for (const tyRestTicket &ticket : foundFrench)
    flagged.insert(ticket.id);

  for (tyRestTicket &ticket : tickets)
    if (flagged.contains(ticket.id))
      ticket.tenExchangesAdded = true;
  return tickets;
}
