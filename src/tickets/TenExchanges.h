#pragma once

#include "rest/uTypes.h"

// The two texts of the notice that the service's supervisor adds to a ticket
// after ten automatic exchanges, searched as they stand.
inline const QString CTenExchangesEnglish = QStringLiteral(
    "10 exchanges have been added automatically by the supervisor, no exchanges will be added to this ticket "
    "during the next executions of the control");
inline const QString CTenExchangesFrench = QStringLiteral(
    "10 échanges ont été ajoutés automatiquement par le superviseur, aucun échange ne sera ajouté lors des "
    "prochaines exécutions du contrôle pour ce ticket");

// The open tickets of one organization, in the service's order, each flagged
// when either notice search found a ticket with the same id. Tickets found only
// by a notice search are not added.
tyRestTickets MergeTenExchanges(tyRestTickets tickets, const tyRestTickets &foundEnglish,
                                const tyRestTickets &foundFrench);
