#pragma once

#include "rest/dRest.h"

#include <QNetworkAccessManager>

// A service client for tests that never reach a service.
struct TOfflineRest
{
  QNetworkAccessManager Network;
  TdmRest Rest{Network};
};
