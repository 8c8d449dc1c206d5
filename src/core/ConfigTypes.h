#pragma once

#include <QByteArray>
#include <QList>

#include "TDateTime.h"

#include <QString>
#include <QStringList>
#include <cstdint>

// Settings records kept in the settings file.

// OAuth2 credentials and the state of the access token.
struct tyAPIAccess
{
  QString ClientID;
  QString ClientSecret;      // stored enciphered
  QString Username;
  QString Password;          // stored enciphered
  TDateTime TokenRequest = 0; // local time at which the last token request was sent
  std::int32_t TokenValidity = 0;
  QString Token;             // last access token received; empty when none
};

// Connection to the service.
struct tyQuorvexITSM
{
  bool SaaS = false;  // hosted under the service's domain, else Instance is the host
  QString Instance;
  QString LoginPage;  // edited and kept in memory, not stored
  QString EditCheck;  // edited and kept in memory, not stored
  QString InfraHost;  // edited and kept in memory, not stored
  tyAPIAccess API;
  std::int32_t ParallelRequests = 1; // ticket requests in flight at once, 1 to 8
  QString CaFile; // PEM file of extra certificate authorities (HTTPS and SMTP); empty: none
};

// How the main window was left: its place and size (QWidget::saveGeometry), the
// grid's column widths and its sort (column -1: the retrieval's order).
struct tyWindowLayout
{
  QByteArray Geometry;
  QList<int> ColumnWidths;
  int SortColumn = -1;
  bool SortDescending = false;
  bool operator==(const tyWindowLayout &) const = default;
};

// Outgoing mail.
struct tySMTPserver
{
  QString Server;
  std::int32_t Port = 0;
  bool UseSSL = false;
  QString UserName;
  QString Password;   // stored enciphered
  QString DefaultTo;
  QString DefaultCC;
  QString From;       // sender address of the report
  std::int32_t MaxRecipients = 100; // the most recipients one upload names
};

// Who receives the report (Setting::Delivery).
enum class TDeliveryMode {
  Report,    // one mail to the default receivers, with the computed recipients listed for information
  Concerned, // one mail to the computed recipients, the defaults in copy
  Personal,  // one digest per computed primary recipient, then the full report to the defaults
};

// What the report remembers between sent reports (Setting::FollowUp).
struct tyFollowUp
{
  bool History = true;            // false: the report compares with nothing, as first made
  std::int32_t EscalateAfter = 0; // a ticket on this many sent reports in a row is escalated; below 2: never
  QString EscalateTo;             // addresses copied on mails with an escalated row; empty: the default "To"
};

struct tyDelivery
{
  TDeliveryMode Mode = TDeliveryMode::Report;
  bool SkipWhenClear = false;  // no mail when the retrieval was complete and no section has a row
  bool AttachWorkbook = false; // each mail carries its rows as a workbook
  tyFollowUp FollowUp;
};

// Messages for the person about settings read with a fault (a damaged secret, a
// value out of range), each naming the file and the key.
using TSettingsWarnings = QStringList;
