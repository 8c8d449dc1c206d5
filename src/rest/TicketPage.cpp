#include "TicketPage.h"

#include <simdjson.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <string_view>
#include <unordered_map>

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

// Every reader assigns its whole field: the zero value when the member has
// another type. A ticket starts at its zero values, so this is the same as
// leaving the field alone, and a repeated member overrides an earlier one.

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

// An id: 64 bits, as the service may count beyond 2^31.
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

void Read(element value, std::int32_t &field)
{
  field = Integer(value).value_or(0);
}

void Read(element value, std::int64_t &field)
{
  field = Id(value).value_or(0);
}

void Read(element value, bool &field)
{
  field = false;
  if (value.get_bool().get(field) != simdjson::SUCCESS)
    field = false;
}

void Read(element value, QString &field)
{
  std::string_view text;
  if (value.get_string().get(text) != simdjson::SUCCESS) {
    field.clear();
    return;
  }
  field = QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

// A text that many tickets repeat.
struct TShared
{
  QString &Field;
};

void Read(element value, TShared field)
{
  std::string_view text;
  if (value.get_string().get(text) != simdjson::SUCCESS)
    field.Field.clear();
  else
    field.Field = GSharedTexts->Text(text);
}

// Calls `read(key, value)` for each member when `value` is an object; returns
// whether it is one.
template <typename TRead>
bool ForEachMember(element value, TRead read)
{
  object members;
  if (value.get_object().get(members) != simdjson::SUCCESS)
    return false;
  for (const auto [key, member] : members)
    read(key, member);
  return true;
}

// A small reference object of the service: "id" and one text member.
template <typename TSub>
void ReadSub(element value, TSub &sub, QString TSub::*text, std::string_view textKey)
{
  sub = TSub{};
  ForEachMember(value, [&](std::string_view key, element member) {
    if (key == "id")
      Read(member, sub.id);
    else if (key == textKey)
      Read(member, TShared{sub.*text});
  });
}

void Read(element value, tyRestSubName &sub)
{
  ReadSub(value, sub, &tyRestSubName::name, "name");
}

void Read(element value, tyRestSubDescription &sub)
{
  ReadSub(value, sub, &tyRestSubDescription::description, "description");
}

void Read(element value, tyRestSubReference &sub)
{
  ReadSub(value, sub, &tyRestSubReference::reference, "reference");
}

void Read(element value, tyRestCustomProperty &property)
{
  property = {};
  ForEachMember(value, [&](std::string_view key, element member) {
    if (key == "customProperty")
      Read(member, property.customProperty);
    else if (key == "selectedOption")
      Read(member, property.selectedOption);
  });
}

template <typename TItem>
void Read(element value, QList<TItem> &list)
{
  list.clear();
  array items;
  if (value.get_array().get(items) != simdjson::SUCCESS)
    return;
  list.resize(static_cast<qsizetype>(items.size()));
  qsizetype i = 0;
  for (const element item : items)
    Read(item, list[i++]);
}

void Read(element value, tyRestStatus &status)
{
  status = {};
  ForEachMember(value, [&](std::string_view key, element member) {
    if (key == "id")
      Read(member, status.id);
    else if (key == "reference")
      Read(member, TShared{status._reference});
    else if (key == "category")
      Read(member, TShared{status.category});
  });
}

void Read(element value, tyRestValidationLevel &level)
{
  level = {};
  ForEachMember(value, [&](std::string_view key, element member) {
    if (key == "description")
      Read(member, level.description);
    else if (key == "id")
      Read(member, level.id);
    else if (key == "level")
      Read(member, level.level);
  });
}

void Read(element value, tyRestIncident &incident)
{
  incident = {};
  ForEachMember(value, [&](std::string_view key, element member) {
    if (key == "incidentImpact")
      Read(member, TShared{incident.incidentImpact});
    else if (key == "incidentUrgency")
      Read(member, TShared{incident.incidentUrgency});
  });
}

void Read(element value, tyRestChange &change)
{
  static const std::unordered_map<std::string_view, QString tyRestChange::*> fields{
      {"changelogDescription", &tyRestChange::changelogDescription},
      {"changelogType", &tyRestChange::changelogType},
      {"deploymentPlan", &tyRestChange::deploymentPlan},
      {"impact", &tyRestChange::impact},
      {"reason", &tyRestChange::reason},
      {"risks", &tyRestChange::risks},
      {"rollbackPlan", &tyRestChange::rollbackPlan}};
  change = {};
  ForEachMember(value, [&](std::string_view key, element member) {
    if (const auto field = fields.find(key); field != fields.end())
      Read(member, change.*(field->second));
  });
}

// A part held apart is made only for an object; anything else empties it.
template <typename TPart>
void Read(element value, TRestPart<TPart> &part)
{
  if (value.is_object())
    Read(value, part.Edit());
  else
    part = {};
}

// The field each member of a ticket item fills, by member name.
using TTicketReader = void (*)(element member, tyRestTicket &ticket);

template <auto Field>
void ReadField(element member, tyRestTicket &ticket)
{
  Read(member, ticket.*Field);
}

template <QString tyRestTicket::*Field>
void ReadSharedField(element member, tyRestTicket &ticket)
{
  Read(member, TShared{ticket.*Field});
}

const std::unordered_map<std::string_view, TTicketReader> &TicketReaders()
{
  using T = tyRestTicket;
  static const std::unordered_map<std::string_view, TTicketReader> readers{
      {"id", ReadField<&T::id>},
      {"type", ReadSharedField<&T::_type>},
      {"organization", ReadField<&T::organization>},
      {"assignedTeam", ReadField<&T::assignedTeam>},
      {"assignedUser", ReadField<&T::assignedUser>},
      {"title", ReadField<&T::title>},
      {"description", ReadField<&T::description>},
      {"creationDate", ReadField<&T::creationDate>},
      {"lastUpdate", ReadField<&T::lastUpdate>},
      {"author", ReadField<&T::author>},
      {"authorName", ReadSharedField<&T::authorName>},
      {"authorEmail", ReadSharedField<&T::authorEmail>},
      {"createdBy", ReadField<&T::createdBy>},
      {"authorSite", ReadField<&T::authorSite>},
      {"authorEmailNotify", ReadField<&T::authorEmailNotify>},
      {"ticketOrigin", ReadSharedField<&T::ticketOrigin>},
      {"resolutionDelay", ReadField<&T::resolutionDelay>},
      {"slaResolutionDelay", ReadField<&T::slaResolutionDelay>},
      {"slaCompletionStatus", ReadSharedField<&T::slaCompletionStatus>},
      {"actualAcknowledgeDate", ReadField<&T::actualAcknowledgeDate>},
      {"slaAcknowledgementStatus", ReadSharedField<&T::slaAcknowledgementStatus>},
      {"priority", ReadField<&T::priority>},
      {"status", ReadField<&T::status>},
      {"application", ReadField<&T::application>},
      {"customProperties", ReadField<&T::customProperties>},
      {"tasksPublic", ReadField<&T::tasksPublic>},
      {"access", ReadField<&T::access>},
      {"writeAccess", ReadField<&T::writeAccess>},
      {"waitingDate", ReadField<&T::waitingDate>},
      {"waitingDelay", ReadField<&T::waitingDelay>},
      {"flagApi", ReadField<&T::flagApi>},
      {"archived", ReadField<&T::archived>},
      {"actualResolutionDate", ReadField<&T::actualResolutionDate>},
      {"change", ReadField<&T::change>},
      {"checks", ReadField<&T::checks>},
      {"incident", ReadField<&T::incident>},
      {"sla", ReadField<&T::sla>},
      {"startDate", ReadField<&T::startDate>},
      {"supplier", ReadField<&T::supplier>},
      {"task", ReadField<&T::task>},
      {"template", ReadField<&T::template_>},
      {"theoreticalAcknowledgeDate", ReadField<&T::theoreticalAcknowledgeDate>},
      {"theoreticalResolutionDate", ReadField<&T::theoreticalResolutionDate>},
      {"validationLevel", ReadField<&T::validationLevel>},
      {"validationWorkflow", ReadField<&T::validationWorkflow>},
  };
  return readers;
}

// Fills the ticket from one item; returns whether the item is an object with an
// integer "id".
bool ReadTicket(element item, tyRestTicket &ticket)
{
  const auto &readers = TicketReaders();
  bool hasId = false;
  const bool isObject = ForEachMember(item, [&](std::string_view key, element member) {
    if (const auto reader = readers.find(key); reader != readers.end())
      reader->second(member, ticket);
    if (key == "id")
      hasId = Id(member).has_value();
  });
  return isObject && hasId;
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
  std::optional<element> content;
  const bool isObject = ForEachMember(root, [&](std::string_view key, element member) {
    if (key == "totalNumberOfPages")
      page.TotalPages = Integer(member);
    else if (key == "totalNumberOfElements")
      page.TotalElements = Integer(member);
    else if (key == "content")
      content = member;
  });
  if (!isObject)
    return page;
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
    if (ReadTicket(item, page.Tickets[kept]))
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
    if (key == "totalNumberOfPages") {
      pages = count(member.value());
    } else if (key == "totalNumberOfElements") {
      elements = count(member.value());
    } else if (key == "content") {
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
