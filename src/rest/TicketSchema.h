#pragma once

// A ticket as the service sends it in the pages of the open-ticket list: one
// table per record, one row per JSON member, giving the member's name, the kind
// of value it holds, the field it fills and whether an item without it is no
// ticket at all. The page reader (TicketPage.cpp) walks these tables; no other
// place names the members of a ticket.

#include "uTypes.h"

#include <string_view>
#include <tuple>

// The kind of value a member holds. A value of another kind, or null, leaves the
// field at its zero value.
enum class TMemberKind
{
  Id,         // a whole number of 64 bits, as the service may count beyond 2^31
  Integer,    // a whole number of 32 bits
  Boolean,    // true or false
  Text,       // a text proper to one ticket
  SharedText, // a text that thousands of tickets repeat (names, statuses): one copy shared by them all
  Object,     // an object, read by the table of the field's record
  List,       // an array of such objects; an item that is not one gives a record at its zero values
};

// Whether an item lacking the member, or holding a value of another kind, is
// still a record. An item that is not a ticket is left out of its page and
// counted as a bad item.
enum class TMemberNeed
{
  Optional,
  Required,
};

// One member of a record `R`: `Field` is a pointer to the member of `R` it fills.
template <typename TField>
struct TMember
{
  std::string_view Name;
  TMemberKind Kind;
  TField Field;
  TMemberNeed Need = TMemberNeed::Optional;
};
// Spelled out for compilers without deduction from an aggregate's members.
template <typename TField>
TMember(std::string_view, TMemberKind, TField) -> TMember<TField>;
template <typename TField>
TMember(std::string_view, TMemberKind, TField, TMemberNeed) -> TMember<TField>;

// The members of each record of a ticket page, in the order of the record.
template <typename R>
struct TTicketSchema;

template <>
struct TTicketSchema<tyRestSubName>
{
  using enum TMemberKind;
  using T = tyRestSubName;
  static constexpr std::tuple Members{
      TMember{"id", Id, &T::id},
      TMember{"name", SharedText, &T::name},
  };
};

template <>
struct TTicketSchema<tyRestSubDescription>
{
  using enum TMemberKind;
  using T = tyRestSubDescription;
  static constexpr std::tuple Members{
      TMember{"id", Id, &T::id},
      TMember{"description", SharedText, &T::description},
  };
};

template <>
struct TTicketSchema<tyRestSubReference>
{
  using enum TMemberKind;
  using T = tyRestSubReference;
  static constexpr std::tuple Members{
      TMember{"id", Id, &T::id},
      TMember{"reference", SharedText, &T::reference},
  };
};

template <>
struct TTicketSchema<tyRestStatus>
{
  using enum TMemberKind;
  using T = tyRestStatus;
  static constexpr std::tuple Members{
      TMember{"category", SharedText, &T::category},
      TMember{"id", Id, &T::id},
      TMember{"reference", SharedText, &T::_reference},
  };
};

template <>
struct TTicketSchema<tyRestValidationLevel>
{
  using enum TMemberKind;
  using T = tyRestValidationLevel;
  static constexpr std::tuple Members{
      TMember{"description", Text, &T::description},
      TMember{"id", Id, &T::id},
      TMember{"level", Integer, &T::level},
  };
};

template <>
struct TTicketSchema<tyRestIncident>
{
  using enum TMemberKind;
  using T = tyRestIncident;
  static constexpr std::tuple Members{
      TMember{"incidentImpact", SharedText, &T::incidentImpact},
      TMember{"incidentUrgency", SharedText, &T::incidentUrgency},
  };
};

template <>
struct TTicketSchema<tyRestChange>
{
  using enum TMemberKind;
  using T = tyRestChange;
  static constexpr std::tuple Members{
      TMember{"changelogDescription", Text, &T::changelogDescription},
      TMember{"changelogType", Text, &T::changelogType},
      TMember{"deploymentPlan", Text, &T::deploymentPlan},
      TMember{"impact", Text, &T::impact},
      TMember{"reason", Text, &T::reason},
      TMember{"risks", Text, &T::risks},
      TMember{"rollbackPlan", Text, &T::rollbackPlan},
  };
};

template <>
struct TTicketSchema<tyRestCustomProperty>
{
  using enum TMemberKind;
  using T = tyRestCustomProperty;
  static constexpr std::tuple Members{
      TMember{"customProperty", Object, &T::customProperty},
      TMember{"selectedOption", Object, &T::selectedOption},
  };
};

// The members of a ticket the open-ticket list fills; the other fields of
// `tyRestTicket` stay at their zero values.
template <>
struct TTicketSchema<tyRestTicket>
{
  using enum TMemberKind;
  using enum TMemberNeed;
  using T = tyRestTicket;
  static constexpr std::tuple Members{
      TMember{"access", Boolean, &T::access},
      TMember{"actualAcknowledgeDate", Text, &T::actualAcknowledgeDate},
      TMember{"actualResolutionDate", Text, &T::actualResolutionDate},
      TMember{"application", Object, &T::application},
      TMember{"archived", Boolean, &T::archived},
      TMember{"assignedTeam", Object, &T::assignedTeam},
      TMember{"assignedUser", Object, &T::assignedUser},
      TMember{"author", Object, &T::author},
      TMember{"authorEmail", SharedText, &T::authorEmail},
      TMember{"authorEmailNotify", Boolean, &T::authorEmailNotify},
      TMember{"authorName", SharedText, &T::authorName},
      TMember{"authorSite", Object, &T::authorSite},
      TMember{"change", Object, &T::change},
      TMember{"checks", List, &T::checks},
      TMember{"createdBy", Object, &T::createdBy},
      TMember{"creationDate", Text, &T::creationDate},
      TMember{"customProperties", List, &T::customProperties},
      TMember{"description", Text, &T::description},
      TMember{"flagApi", Boolean, &T::flagApi},
      TMember{"id", Id, &T::id, Required},
      TMember{"incident", Object, &T::incident},
      TMember{"lastUpdate", Text, &T::lastUpdate},
      TMember{"organization", Object, &T::organization},
      TMember{"priority", Object, &T::priority},
      TMember{"resolutionDelay", Integer, &T::resolutionDelay},
      TMember{"sla", Object, &T::sla},
      TMember{"slaAcknowledgementStatus", SharedText, &T::slaAcknowledgementStatus},
      TMember{"slaCompletionStatus", SharedText, &T::slaCompletionStatus},
      TMember{"slaResolutionDelay", Integer, &T::slaResolutionDelay},
      TMember{"startDate", Text, &T::startDate},
      TMember{"status", Object, &T::status},
      TMember{"supplier", Object, &T::supplier},
      TMember{"task", Object, &T::task},
      TMember{"tasksPublic", Boolean, &T::tasksPublic},
      TMember{"template", Object, &T::template_},
      TMember{"theoreticalAcknowledgeDate", Text, &T::theoreticalAcknowledgeDate},
      TMember{"theoreticalResolutionDate", Text, &T::theoreticalResolutionDate},
      TMember{"ticketOrigin", SharedText, &T::ticketOrigin},
      TMember{"title", Text, &T::title},
      TMember{"type", SharedText, &T::_type},
      TMember{"validationLevel", Object, &T::validationLevel},
      TMember{"validationWorkflow", Object, &T::validationWorkflow},
      TMember{"waitingDate", Text, &T::waitingDate},
      TMember{"waitingDelay", Integer, &T::waitingDelay},
      TMember{"writeAccess", Boolean, &T::writeAccess},
  };
};

// The members of a page around its tickets.
namespace TicketPageMember {
inline constexpr std::string_view Content = "content"; // the array of ticket items
inline constexpr std::string_view TotalPages = "totalNumberOfPages";
inline constexpr std::string_view TotalElements = "totalNumberOfElements";
} // namespace TicketPageMember
