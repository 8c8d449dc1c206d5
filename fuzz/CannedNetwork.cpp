#include "CannedNetwork.h"

#include <QNetworkReply>
#include <QTimer>
#include <cstring>

namespace {

class TCannedReply : public QNetworkReply
{
public:
  TCannedReply(const QNetworkRequest &request, QNetworkAccessManager::Operation operation, const QByteArray &body,
               QObject *parent)
      : QNetworkReply(parent), FBody(body)
  {
    setRequest(request);
    setUrl(request.url());
    setOperation(operation);
    setAttribute(QNetworkRequest::HttpStatusCodeAttribute, 200);
    setAttribute(QNetworkRequest::HttpReasonPhraseAttribute, QByteArrayLiteral("OK"));
    open(QIODevice::ReadOnly);
    // Signals once the caller has connected to them, as a real reply does.
    QTimer::singleShot(0, this, [this] {
      emit metaDataChanged();
      emit readyRead();
      setFinished(true);
      emit finished();
    });
  }

  void abort() override {}
  qint64 bytesAvailable() const override { return FBody.size() - FOffset + QNetworkReply::bytesAvailable(); }
  bool isSequential() const override { return true; }

protected:
  qint64 readData(char *data, qint64 maxSize) override
  {
    const qint64 count = qMin(maxSize, FBody.size() - FOffset);
    std::memcpy(data, FBody.constData() + FOffset, static_cast<size_t>(count));
    FOffset += count;
    return count;
  }

private:
  QByteArray FBody;
  qint64 FOffset = 0;
};

} // namespace

QNetworkReply *TCannedNetwork::createRequest(Operation operation, const QNetworkRequest &request, QIODevice *)
{
  return new TCannedReply(request, operation, Body, this);
}
