#pragma once

#include "core/ConfigTypes.h"

#include <QString>

// "server:port" of the SMTP settings, as messages name the server.
QString SmtpServerName(const tySMTPserver &smtp);

// The sender of the mails: the From setting; else the SMTP user name when it is
// an address; else "quorvex-followup@" and this machine's host name.
QString SenderAddress(const tySMTPserver &smtp);
