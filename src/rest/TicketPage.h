#pragma once

#include "uTypes.h"

#include <QByteArray>
#include <cstdint>
#include <memory>
#include <optional>

// One answer of the open-ticket list, as the paging of the query reads it.
struct TTicketPage
{
  enum class TShape
  {
    Empty,     // no body at all
    NotObject, // not JSON, or JSON that is not an object
    NoContent, // an object without a "content" array
    Items      // a "content" array, possibly empty
  };
  TShape Shape = TShape::Empty;
  // The integer members "totalNumberOfPages" and "totalNumberOfElements", when present.
  std::optional<std::int32_t> TotalPages;
  std::optional<std::int32_t> TotalElements;
  // One ticket per item of "content", in order; an item that is not an object
  // gives a ticket at its zero values.
  tyRestTickets Tickets;
  // Items that are not an object or have no integer "id": the page is not what
  // the service promises, and the query that read it cannot be trusted whole.
  qsizetype BadItems = 0;
};

// Tickets per page of the open-ticket list.
inline constexpr std::int32_t CTicketPageSize = 500;

// The most pages worth reading for `totalElements` announced tickets: what they
// fill, plus one. More pages than that mean an answer that cannot be trusted.
inline std::int32_t MaxPagesFor(std::int32_t totalElements)
{
  return static_cast<std::int32_t>((qint64(totalElements) + CTicketPageSize - 1) / CTicketPageSize + 1);
}

// Reads ticket pages with simdjson straight into the records, each member as
// the ticket table declares it (TicketSchema.h). A member that is absent, null
// or of another type leaves its field at the zero value; when a member appears
// twice the last one counts, as for any JSON object reader. `tenExchangesAdded`
// is never set. One parser serves one thread at a time and keeps its buffers
// for the next page.
class TTicketPageParser
{
public:
  TTicketPageParser();
  ~TTicketPageParser();
  TTicketPageParser(const TTicketPageParser &) = delete;
  TTicketPageParser &operator=(const TTicketPageParser &) = delete;

  TTicketPage Parse(const QByteArray &body);

  // The number of pages announced by a page whose "content" holds items, no
  // more than its announced tickets can fill (MaxPagesFor), read without mapping
  // them (for starting the next pages early); nothing for any other page, when
  // unsure.
  std::optional<std::int32_t> AnnouncedPages(const QByteArray &body);

private:
  struct TParsers;
  std::unique_ptr<TParsers> FParsers;
};
