#pragma once

// Records exchanged with the Quorvex ITSM service. Values: a copy never changes
// with the original (texts and rarely filled parts are shared until changed).
// Fields follow the service's objects in order; a field whose name starts with
// an underscore is filled from the JSON member without it ("_type" from "type").
// Fields that no query fills are kept so that each record describes the whole
// service object. Dates from the service stay text.

#include "core/ConfigTypes.h"
#include "core/TColor.h"

#include <QList>
#include <QSharedData>
#include <QSharedDataPointer>
#include <QTypeInfo>
#include <QString>
#include <cstdint>

// Ids of the service's objects: 64-bit, as the service may count beyond 2^31.
using TRestId = std::int64_t;

// A part of a record that the lists of the service mostly leave empty (a
// ticket's change or problem details): held apart, so that an empty part costs
// one pointer instead of its whole size, and shared between copies until one of
// them is changed. Read through `->` or `*`; an empty part reads as the zero value.
template <typename T>
class TRestPart
{
public:
  const T &operator*() const { return FData ? FData->Value : Empty(); }
  const T *operator->() const { return &**this; }
  // The part of this record alone, for filling it.
  T &Edit()
  {
    if (!FData)
      FData = new TData;
    return FData->Value; // a part shared with a copy is copied first
  }

private:
  struct TData : QSharedData
  {
    T Value;
  };
  static const T &Empty()
  {
    static const T empty;
    return empty;
  }
  QSharedDataPointer<TData> FData;
};

struct tyRestSubName
{
  TRestId id = 0;
  QString name;
};

struct tyRestSubDescription
{
  TRestId id = 0;
  QString description;
};

struct tyRestSubReference
{
  TRestId id = 0;
  QString reference;
};

struct tyRestStatus
{
  QString category;
  TRestId id = 0;
  QString _reference;
};

struct tyRestValidationLevel
{
  QString description;
  TRestId id = 0;
  std::int32_t level = 0;
};

struct tyRestIncident
{
  QString incidentImpact;
  QString incidentUrgency;
};

struct tyRestChange
{
  QString changelogDescription;
  QString changelogType;
  QString deploymentPlan;
  QString impact;
  QString reason;
  QString risks;
  QString rollbackPlan;
};

struct tyRestCustomProperty
{
  tyRestSubReference customProperty;
  tyRestSubDescription selectedOption;
};

struct tyRestProblem
{
  QString definitiveSolution;
  tyRestSubName documentSolution;
  QString impact;
  bool knownError = false;
  QString rootCause;
  QString symptom;
  QString workaroundSolution;
};

struct tyRestRelease
{
  QString implementationPlan;
  QString testPlan;
};

struct tyRestTask
{
  QString date;
  QString deadlineDate;
  QString description;
  std::int32_t estimatedLoad = 0;
  TRestId id = 0;
  std::int32_t load = 0;
  QString notes;
  tyRestSubName organization;
  QString status;
  tyRestSubName team;
  TRestId ticketId = 0;
  QString ticketTitle;
  QString ticketType;
  QString _type;
  tyRestSubName user;
};

struct tyRestAttachment
{
  bool auto_ = false; // "auto" in the service's object
  QString contentType;
  QString dataUrl;
  QString description;
  QString extension;
  TRestId id = 0;
  QString lastUpdateTimestamp;
  QString lastUpdateUser;
  QString privacy;
  std::int32_t size = 0;
};

using tyRestchecks = QList<tyRestSubDescription>;
using tyRestCustomProperties = QList<tyRestCustomProperty>;
using tyRestTasks = QList<tyRestTask>;
using tyRestAssociatedTeams = QList<tyRestSubName>;
using tyRestAttachments = QList<tyRestAttachment>;

// One ticket of the open-ticket list.
struct tyRestTicket
{
  bool tenExchangesAdded = false; // set by the program: the supervisor added ten exchanges
  bool access = false;
  QString actualAcknowledgeDate;
  QString actualResolutionDate;
  tyRestSubName application;
  bool archived = false;
  tyRestSubName assignedTeam;
  tyRestSubName assignedUser; // id 0 and empty name when unassigned
  tyRestAttachments attachments;
  tyRestSubName author;
  QString authorEmail;
  bool authorEmailNotify = false;
  QString authorName;
  tyRestSubName authorSite;
  TRestPart<tyRestChange> change;
  tyRestchecks checks;
  tyRestSubName contract;
  std::int32_t cost = 0;
  QString costUnit;
  tyRestSubName createdBy;
  QString creationDate;
  tyRestCustomProperties customProperties;
  QString description;
  QString endDate;
  std::int32_t estimatedEffort = 0;
  bool flagApi = false;
  TRestId id = 0; // the ticket number shown to users
  TRestPart<tyRestIncident> incident;
  QString lastUpdate;
  tyRestSubDescription ola;
  QString olaDate;
  std::int32_t olaDelay = 0;
  std::int32_t olaFullDelay = 0;
  tyRestSubName organization;
  tyRestSubReference priority;
  TRestPart<tyRestProblem> problem;
  tyRestSubDescription project;
  tyRestSubDescription projectStage;
  std::int32_t rating = 0;
  TRestPart<tyRestRelease> release;
  std::int32_t resolutionDelay = 0;
  tyRestSubDescription sla;
  QString slaAcknowledgementStatus;
  QString slaCompletionStatus;
  std::int32_t slaResolutionDelay = 0;
  QString startDate;
  tyRestStatus status;
  tyRestSubName supplier;
  tyRestSubDescription task;
  tyRestTasks tasks;
  bool tasksPublic = false;
  tyRestSubDescription template_; // "template" in the service's object
  QString theoreticalAcknowledgeDate;
  QString theoreticalResolutionDate;
  QString ticketOrigin;
  QString title;
  QString _type;
  TRestPart<tyRestValidationLevel> validationLevel;
  tyRestSubDescription validationWorkflow;
  QString waitingDate;
  std::int32_t waitingDelay = 0;
  bool writeAccess = false;
};
// Made only of Qt values and numbers, a ticket can be moved in memory as bytes:
// lists of thousands of tickets then grow by reallocation, without copying each.
Q_DECLARE_TYPEINFO(tyRestTicket, Q_RELOCATABLE_TYPE);

// One repository object: a ticket status or a ticket priority.
struct tyRestObject
{
  TRestId id = 0;
  QString module;
  tyRestSubName organization;
  QString _reference; // the code by which tickets refer to it
  QString subType;
  QString _type;
  QString Text;           // display text set by the program
  TColor BgColor = 0;     // background colour chosen by the user
};

struct tyRestOrganization
{
  TRestId id = 0;
  QString name;
  bool monitoringAndInfrastructureModuleEnabled = false;
  bool passwordModuleEnabled = false;
  bool ticketingModuleEnabled = false;
};

struct tyRestTeam
{
  TRestId id = 0;
  QList<tyRestSubName> members;
  QString name;
  QList<tyRestSubName> organizations; // from the team's detail object, on request
  QString remarks;
};

// One operator (user account of the service).
struct tyRestOperator
{
  QString authenticationMode;
  tyRestSubDescription authenticationService;
  QString creationTimestamp;
  QString creationUser;
  QString dateFormat;
  tyRestSubName department;
  QString email;
  QString externalReference;
  QString firstName;
  std::int32_t hourFormat = 0;
  TRestId id = 0;
  QString language;
  QString lastConnectionTimestamp;
  QString lastName;
  QString lastUpdateTimestamp;
  QString lastUpdateUser;
  QString login;
  tyRestSubName manager;
  QString mobileNumber;
  QString notificationEmail;
  QString phoneNumber;
  QString position;
  tyRestSubDescription profile;
  QString remarks;
  tyRestSubDescription serviceDeskProfile;
  tyRestSubName site;
  QString status;
  tyRestAssociatedTeams teams;
  QString timeZone;
  bool twoFactorAuthActive = false;
};
Q_DECLARE_TYPEINFO(tyRestOperator, Q_RELOCATABLE_TYPE);

// A selected (organization, team) pair.
struct tyRestOrganizationTeam
{
  TRestId IdOrganization = 0;
  TRestId IdTeam = 0;
};

// An operator's membership of a team.
struct tyRestTeamOperator
{
  TRestId IdTeam = 0;
  TRestId IdOperator = 0;
};

using tyRestTickets = QList<tyRestTicket>;
using tyRestObjects = QList<tyRestObject>;
using tyRestOrganizations = QList<tyRestOrganization>;
using tyRestTeams = QList<tyRestTeam>;
using tyRestOperators = QList<tyRestOperator>;
using tyRestOrganizationsTeams = QList<tyRestOrganizationTeam>;
using tyRestTeamsOperators = QList<tyRestTeamOperator>;
