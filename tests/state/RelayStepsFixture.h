#pragma once

#include "SmtpTestServer.h"
#include "StepsFixture.h"

// The steps over the demo service and a real SMTP relay on 127.0.0.1: every
// organization and team selected, the report delivered to the people concerned.
class RelayStepsFixture : public StepsFixture
{
protected:
  RelayStepsFixture()
  {
    SelectAll();
    FState->FSmtp.Server = "127.0.0.1";
    FState->FSmtp.Port = FRelay.Port();
    FState->FSmtp.UseSSL = false;
    FState->FDelivery.Mode = TDeliveryMode::Concerned;
  }

  TSmtpTestServer FRelay{TSmtpTestServer::TOptions{}};
};
