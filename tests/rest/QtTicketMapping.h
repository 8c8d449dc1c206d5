#pragma once

#include "rest/TicketPage.h"

#include <QByteArray>
#include <QString>

// A ticket page read with Qt's JSON classes, member for member as the query
// read it before simdjson: the reference the page parser is held to.
TTicketPage QtTicketPage(const QByteArray &body);

// Every field of the page that a query can fill, as text, for comparing two
// readings of the same page.
QString DumpTicketPage(const TTicketPage &page);
