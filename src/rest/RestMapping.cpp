#include "RestMapping.h"

#include "RestParse.h"

tyRestOperator OperatorFromJson(const QJsonObject &item)
{
  tyRestOperator op;
  ParseString(item, QStringLiteral("authenticationMode"), op.authenticationMode);
  ParseSubDesc(item, QStringLiteral("authenticationService"), op.authenticationService);
  ParseString(item, QStringLiteral("creationTimestamp"), op.creationTimestamp);
  ParseString(item, QStringLiteral("creationUser"), op.creationUser);
  ParseString(item, QStringLiteral("dateFormat"), op.dateFormat);
  ParseSubName(item, QStringLiteral("department"), op.department);
  ParseString(item, QStringLiteral("email"), op.email);
  ParseString(item, QStringLiteral("externalReference"), op.externalReference);
  ParseString(item, QStringLiteral("firstName"), op.firstName);
  ParseInteger(item, QStringLiteral("hourFormat"), op.hourFormat);
  ParseInteger(item, QStringLiteral("id"), op.id);
  ParseString(item, QStringLiteral("language"), op.language);
  ParseString(item, QStringLiteral("lastConnectionTimestamp"), op.lastConnectionTimestamp);
  ParseString(item, QStringLiteral("lastName"), op.lastName);
  ParseString(item, QStringLiteral("lastUpdateTimestamp"), op.lastUpdateTimestamp);
  ParseString(item, QStringLiteral("lastUpdateUser"), op.lastUpdateUser);
  ParseString(item, QStringLiteral("login"), op.login);
  ParseSubName(item, QStringLiteral("manager"), op.manager);
  ParseString(item, QStringLiteral("mobileNumber"), op.mobileNumber);
  ParseString(item, QStringLiteral("notificationEmail"), op.notificationEmail);
  ParseString(item, QStringLiteral("phoneNumber"), op.phoneNumber);
  ParseString(item, QStringLiteral("position"), op.position);
  ParseSubDesc(item, QStringLiteral("profile"), op.profile);
  ParseString(item, QStringLiteral("remarks"), op.remarks);
  ParseSubDesc(item, QStringLiteral("serviceDeskProfile"), op.serviceDeskProfile);
  ParseSubName(item, QStringLiteral("site"), op.site);
  ParseString(item, QStringLiteral("status"), op.status);
  op.teams = ReadSubNames(item, QStringLiteral("teams"));
  ParseString(item, QStringLiteral("timeZone"), op.timeZone);
  ParseBoolean(item, QStringLiteral("twoFactorAuthActive"), op.twoFactorAuthActive);
  return op;
}
