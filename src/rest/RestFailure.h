#pragma once

#include <QByteArray>
#include <QString>

// Why a call to the service failed, for a person: the reason, naming the server,
// and what to do; besides, the technical details (address, HTTP status, the
// trace's own words) for whoever digs further.
struct TRestFailure
{
  QString Reason;
  QString Details;
};

// "host" or "host:port" of an address, as a person names the server.
QString ServerOf(const QString &url);
// The reason of an answer whose HTTP status is not a success.
QString StatusReason(const QString &server, int status, const QString &statusText);
// The reason of an answer that came but could not be read as expected.
QString NotUnderstoodReason(const QString &server);

// The first characters of an answer on one line, enough to see what came.
QString AnswerStart(const QByteArray &body);
