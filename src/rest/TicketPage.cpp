#include "TicketPage.h"

#include "TicketSchema.h"

#include <simdjson.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <unordered_map>
#include <utility>

namespace {

// Names, statuses, types and the like, which thousands of tickets repeat: one
// copy of each, shared by every ticket that holds it (a QString shares its
// text), instead of one per ticket. Bounded, so that a service sending only
// distinct texts costs little more than without it.
class TSharedTexts
{
public:
  QString Text(std::string_view utf8)
  {
    if (utf8.size() > CMaxLength)
      return QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
    if (const auto known = FTexts.find(utf8); known != FTexts.end())
      return known->second;
    QString text = QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
    if (FTexts.size() < CMaxTexts)
      FTexts.emplace(std::string(utf8), text);
    return text;
  }

private:
  static constexpr std::size_t CMaxLength = 80;
  static constexpr std::size_t CMaxTexts = 20000;
  struct THash
  {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
  };
  std::unordered_map<std::string, QString, THash, std::equal_to<>> FTexts;
};

// The shared texts of the parser reading a page on this thread.
thread_local TSharedTexts *GSharedTexts = nullptr;

using simdjson::dom::array;
using simdjson::dom::element;
using simdjson::dom::object;

// A whole number that fits 32 bits (a count, a delay), or nothing.
std::optional<std::int32_t> Integer(element value)
{
  double number = 0;
  if (!value.is_number() || value.get_double().get(number) != simdjson::SUCCESS)
    return std::nullopt;
  if (number != std::trunc(number) || number < std::numeric_limits<std::int32_t>::min() ||
      number > std::numeric_limits<std::int32_t>::max())
    return std::nullopt;
  return static_cast<std::int32_t>(number);
}

// A whole number that fits 64 bits (an id), or nothing.
std::optional<std::int64_t> Id(element value)
{
  std::int64_t id = 0;
  if (value.is_int64() && value.get_int64().get(id) == simdjson::SUCCESS)
    return id;
  double number = 0;
  if (!value.is_number() || value.is_uint64() || value.get_double().get(number) != simdjson::SUCCESS ||
      number != std::trunc(number) || std::abs(number) >= 9.0e18)
    return std::nullopt;
  return static_cast<std::int64_t>(number);
}

// Reading a record by its table (TicketSchema.h). Every reader assigns its whole
// field, the zero value when the member holds another kind of value, and says
// whether the value was of the member's kind. A record starts at its zero
// values, so this is the same as leaving the field alone, and a repeated member
// overrides an earlier one, as for any JSON object reader.

template <typename R>
bool ReadMembers(element value, R &record);

template <TMemberKind Kind>
bool Read(element value, std::int64_t &field)
{
  static_assert(Kind == TMemberKind::Id, "a 64-bit field holds an id");
  const auto id = Id(value);
  field = id.value_or(0);
  return id.has_value();
}

template <TMemberKind Kind>
bool Read(element value, std::int32_t &field)
{
  static_assert(Kind == TMemberKind::Integer, "a 32-bit field holds an integer");
  const auto number = Integer(value);
  field = number.value_or(0);
  return number.has_value();
}

template <TMemberKind Kind>
bool Read(element value, bool &field)
{
  static_assert(Kind == TMemberKind::Boolean, "a bool field holds a boolean");
  if (value.get_bool().get(field) == simdjson::SUCCESS)
    return true;
  field = false;
  return false;
}

template <TMemberKind Kind>
bool Read(element value, QString &field)
{
  static_assert(Kind == TMemberKind::Text || Kind == TMemberKind::SharedText, "a QString field holds a text");
  std::string_view text;
  if (value.get_string().get(text) != simdjson::SUCCESS) {
    field.clear();
    return false;
  }
  if constexpr (Kind == TMemberKind::SharedText)
    field = GSharedTexts->Text(text);
  else
    field = QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
  return true;
}

template <TMemberKind Kind, typename TRecord>
bool Read(element value, TRecord &record)
{
  static_assert(Kind == TMemberKind::Object, "a record field holds an object");
  record = TRecord{};
  return ReadMembers(value, record);
}

// A part held apart is made only for an object; anything else empties it.
template <TMemberKind Kind, typename TRecord>
bool Read(element value, TRestPart<TRecord> &part)
{
  static_assert(Kind == TMemberKind::Object, "a part holds an object");
  if (!value.is_object()) {
    part = {};
    return false;
  }
  return Read<TMemberKind::Object>(value, part.Edit());
}

template <TMemberKind Kind, typename TRecord>
bool Read(element value, QList<TRecord> &list)
{
  static_assert(Kind == TMemberKind::List, "a list field holds an array");
  list.clear();
  array items;
  if (value.get_array().get(items) != simdjson::SUCCESS)
    return false;
  list.resize(static_cast<qsizetype>(items.size()));
  qsizetype i = 0;
  for (const element item : items)
    ReadMembers(item, list[i++]);
  return true;
}

// The members of a record's table, in order.
template <typename R>
constexpr std::size_t CMemberCount = std::tuple_size_v<std::remove_cvref_t<decltype(TTicketSchema<R>::Members)>>;

// The reader of row `I` of a record's table, made for that row's kind and field.
template <typename R, std::size_t I>
bool ReadMember(element value, R &record)
{
  constexpr auto member = std::get<I>(TTicketSchema<R>::Members);
  return Read<member.Kind>(value, record.*member.Field);
}

template <typename R>
struct TMemberReader
{
  std::string_view Name;
  bool (*Read)(element value, R &record);
  bool Required;
};

template <typename R>
constexpr auto CMemberReaders = []<std::size_t... I>(std::index_sequence<I...>) {
  constexpr auto &members = TTicketSchema<R>::Members;
  return std::array{TMemberReader<R>{std::get<I>(members).Name, &ReadMember<R, I>,
                                     std::get<I>(members).Need == TMemberNeed::Required}...};
}(std::make_index_sequence<CMemberCount<R>>{});

// The required members of a record, one bit per row of its table.
template <typename R>
constexpr std::uint64_t CRequiredMembers = [] {
  static_assert(CMemberCount<R> <= 64, "one bit per member");
  std::uint64_t bits = 0;
  for (std::size_t i = 0; i < CMemberReaders<R>.size(); ++i)
    if (CMemberReaders<R>[i].Required)
      bits |= std::uint64_t(1) << i;
  return bits;
}();

// The row of a record's table named `key`, if any: a small table is searched,
// a large one hashed.
template <typename R>
const TMemberReader<R> *FindMember(std::string_view key)
{
  constexpr auto &readers = CMemberReaders<R>;
  if constexpr (readers.size() <= 8) {
    for (const TMemberReader<R> &reader : readers)
      if (reader.Name == key)
        return &reader;
    return nullptr;
  } else {
    static const auto byName = [] {
      std::unordered_map<std::string_view, const TMemberReader<R> *> index;
      for (const TMemberReader<R> &reader : readers)
        index.emplace(reader.Name, &reader);
      return index;
    }();
    const auto found = byName.find(key);
    return found == byName.end() ? nullptr : found->second;
  }
}

// Fills the record from the members of `value`; returns whether `value` is an
// object whose required members all hold a value of their kind.
template <typename R>
bool ReadMembers(element value, R &record)
{
  object members;
  if (value.get_object().get(members) != simdjson::SUCCESS)
    return false;
  std::uint64_t required = 0; // the required members read, one bit per row
  for (const auto [key, member] : members)
    if (const TMemberReader<R> *reader = FindMember<R>(key)) {
      const bool read = reader->Read(member, record);
      if (reader->Required) {
        const std::uint64_t bit = std::uint64_t(1) << (reader - CMemberReaders<R>.data());
        required = read ? required | bit : required & ~bit;
      }
    }
  return required == CRequiredMembers<R>;
}

} // namespace

struct TTicketPageParser::TParsers
{
  simdjson::dom::parser Dom;
  simdjson::ondemand::parser OnDemand;
  TSharedTexts Shared;
};

TTicketPageParser::TTicketPageParser() : FParsers(std::make_unique<TParsers>()) {}

TTicketPageParser::~TTicketPageParser() = default;

TTicketPage TTicketPageParser::Parse(const QByteArray &body)
{
  TTicketPage page;
  if (body.isEmpty())
    return page;
  page.Shape = TTicketPage::TShape::NotObject;
  element root;
  if (FParsers->Dom.parse(body.constData(), static_cast<std::size_t>(body.size())).get(root) != simdjson::SUCCESS)
    return page;
  object members;
  if (root.get_object().get(members) != simdjson::SUCCESS)
    return page;
  std::optional<element> content;
  for (const auto [key, member] : members) {
    if (key == TicketPageMember::TotalPages)
      page.TotalPages = Integer(member);
    else if (key == TicketPageMember::TotalElements)
      page.TotalElements = Integer(member);
    else if (key == TicketPageMember::Content)
      content = member;
  }
  array items;
  if (!content || content->get_array().get(items) != simdjson::SUCCESS) {
    page.Shape = TTicketPage::TShape::NoContent;
    return page;
  }
  page.Shape = TTicketPage::TShape::Items;
  GSharedTexts = &FParsers->Shared;
  page.Tickets.resize(static_cast<qsizetype>(items.size()));
  // An item that is not a ticket is left out: it would show as a ticket 0 of 1899.
  qsizetype kept = 0;
  for (const element item : items) {
    if (ReadMembers(item, page.Tickets[kept]))
      ++kept;
    else {
      page.Tickets[kept] = tyRestTicket();
      ++page.BadItems;
    }
  }
  page.Tickets.resize(kept);
  return page;
}

std::optional<std::int32_t> TTicketPageParser::AnnouncedPages(const QByteArray &body)
{
  const simdjson::padded_string text(body.constData(), static_cast<std::size_t>(body.size()));
  simdjson::ondemand::document document;
  simdjson::ondemand::object answer;
  if (FParsers->OnDemand.iterate(text).get(document) != simdjson::SUCCESS ||
      document.get_object().get(answer) != simdjson::SUCCESS)
    return std::nullopt;
  // A whole number that fits a 32-bit count, or nothing.
  const auto count = [](auto value) -> std::optional<std::int32_t> {
    double number = 0;
    if (value.get_double().get(number) != simdjson::SUCCESS || number != std::trunc(number) || number < 0 ||
        number > std::numeric_limits<std::int32_t>::max())
      return std::nullopt;
    return static_cast<std::int32_t>(number);
  };
  std::optional<std::int32_t> pages;
  std::optional<std::int32_t> elements;
  bool items = false;
  for (auto member : answer) {
    std::string_view key;
    if (member.unescaped_key().get(key) != simdjson::SUCCESS)
      return std::nullopt;
    if (key == TicketPageMember::TotalPages) {
      pages = count(member.value());
    } else if (key == TicketPageMember::TotalElements) {
      elements = count(member.value());
    } else if (key == TicketPageMember::Content) {
      simdjson::ondemand::array content;
      bool empty = true;
      items = member.value().get_array().get(content) == simdjson::SUCCESS &&
              content.is_empty().get(empty) == simdjson::SUCCESS && !empty;
    }
  }
  if (pages && elements)
    pages = std::min(*pages, MaxPagesFor(*elements));
  return items ? pages : std::nullopt;
}
