#pragma once

#include <QDateTime>
#include <QJsonObject>

// The demo service's data set, one JSON object:
//   "credentials":   {"clientId", "clientSecret", "username", "password"} accepted by /oauth/token
//   "organizations": the answer of /api/organization/list
//   "teams":         team objects; their "organizations" appear only in /api/teams/<id>
//   "operators":     operator objects, served by /api/operators/list
//   "objects":       ticket statuses and priorities of /api/repository/objects
//   "tickets":       open tickets; a ticket's "exchanges" (texts) are searched by
//                    the ticket list's "search" and never served
//
// A realistic sample: three organizations (two with the ticketing module), five
// teams, forty operators (some inactive), a few hundred open tickets of the four
// types over every status and priority, some unassigned, some without an update
// for weeks, some carrying the supervisor's ten-exchanges notice in English or
// French. The content is the same at every call; dates are counted back from `now`
// so that the ages of the tickets stay realistic whenever it is made.
QJsonObject MakeSampleData(const QDateTime &now);

// The sample after `days` days of the desk's work, each day counted back from
// `now`: three unassigned tickets taken, three forgotten ones updated, four
// closed (one of them carrying the ten-exchanges notice) and five new ones
// waiting for someone. Run the follow-up tool on day 0, then on day 1, and its
// report tells what is new and what left.
QJsonObject WorkOnTickets(QJsonObject data, int days, const QDateTime &now);
