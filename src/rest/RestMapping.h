#pragma once

#include "uTypes.h"

#include <QJsonObject>

// Fills a ticket from one item of the open-ticket list. The ticket is expected at
// its zero values: members that are absent or of another type leave them so.
// `tenExchangesAdded` is never touched.
void TicketFromJson(const QJsonObject &item, tyRestTicket &ticket);

// One operator of the operator list, every field read by the parse helper of its
// type from the member of the same name (so an absent integer reads as -1).
tyRestOperator OperatorFromJson(const QJsonObject &item);
