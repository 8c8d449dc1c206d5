#pragma once

#include <QJsonObject>

// A small data set for the demo service whose content the tests know:
// organization 1 with three tickets (one carrying the French ten-exchanges
// notice), organization 2 without tickets, organization 7 with 1203 tickets
// (three pages of 500), three teams, three operators, one ticket status.
QJsonObject RestTestData();

extern const char *const CTestClientId;
extern const char *const CTestSecret;
extern const char *const CTestUser;
extern const char *const CTestPassword;
extern const char *const CNoticeFrench;
