#pragma once

#include "core/Failure.h"

#include <QByteArray>
#include <QString>

// A call to the service that failed gives a TFailure with its Reason, naming the
// server, and its Details; the step that made the call names What failed.

// "host" or "host:port" of an address, as a person names the server.
QString ServerOf(const QString &url);
// The reason of an answer whose HTTP status is not a success.
QString StatusReason(const QString &server, int status, const QString &statusText);
// The reason of an answer that came but could not be read as expected.
QString NotUnderstoodReason(const QString &server);

// The first characters of an answer on one line, enough to see what came.
QString AnswerStart(const QByteArray &body);
