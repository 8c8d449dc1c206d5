// One page of the open-ticket list, any bytes: parsed and every item mapped as
// the ticket query does.

#include "FuzzSupport.h"
#include "rest/RestMapping.h"
#include "rest/RestParse.h"

#include <QJsonArray>
#include <QJsonDocument>

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
  FuzzInitialize();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
  const QJsonDocument document = QJsonDocument::fromJson(FuzzBytes(data, size));
  const QJsonObject answer = document.object();
  std::int32_t totalPages = -1;
  std::int32_t totalElements = -1;
  ReadInteger(answer, QStringLiteral("totalNumberOfPages"), totalPages);
  ReadInteger(answer, QStringLiteral("totalNumberOfElements"), totalElements);
  const QJsonArray items = answer.value(QStringLiteral("content")).toArray();
  tyRestTickets tickets(items.size());
  for (qsizetype i = 0; i < items.size(); ++i)
    TicketFromJson(items.at(i).toObject(), tickets[i]);
  for (const QJsonValue &item : items)
    OperatorFromJson(item.toObject());
  return 0;
}
