#pragma once

#include "RestTestData.h"
#include "TDemoService.h"
#include "core/ConfigTypes.h"
#include "rest/dRest.h"
#include "support/TempConfig.h"

#include <QNetworkAccessManager>
#include <gtest/gtest.h>
#include <memory>

// A demo service over HTTPS on 127.0.0.1 serving RestTestData(), a client that
// trusts its certificate through QUORVEX_EXTRA_CA_CERTS, settings that point to
// it, and the trace written to a file the test can read.
class RestFixture : public ::testing::Test
{
protected:
  RestFixture();
  ~RestFixture() override;

  // Gets a token, so that the queries are authorised, and forgets its request.
  void SignIn();
  // Starts the trace anew, so that ErrorLines() sees the next calls only.
  void RestartTrace();
  // Every trace line written so far.
  QString TraceText() const;
  // The trace lines that report an error.
  QStringList ErrorLines() const;
  // A body (and status) replacing the service's answer for a path (and a page of
  // the ticket list).
  void ReplaceBody(const QString &path, const QByteArray &body, int page = -1, int status = 200);

  TTempConfig FConfig;
  const TScopedVariable FTrust{"QUORVEX_EXTRA_CA_CERTS", FConfig.File("ca.pem").toUtf8()};
  TDemoService FService{RestTestData()};
  QNetworkAccessManager FManager;
  std::unique_ptr<TdmRest> FRest;
  tyQuorvexITSM FSettings;
};
