#pragma once

#include <QByteArray>
#include <QNetworkAccessManager>

// A network manager that never touches the network: every request is answered
// with status 200 and the same body, so the service client's parsers can be fed
// any bytes.
class TCannedNetwork : public QNetworkAccessManager
{
public:
  QByteArray Body;

protected:
  QNetworkReply *createRequest(Operation operation, const QNetworkRequest &request,
                               QIODevice *outgoingData) override;
};
