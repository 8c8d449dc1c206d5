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
    FState->EditMailSettings([this](tySMTPserver &smtp, tyDelivery &delivery) {
      smtp.Server = "127.0.0.1";
      smtp.Port = FRelay.Port();
      smtp.UseSSL = false;
      delivery.Mode = TDeliveryMode::Concerned;
      return true;
    });
  }

  TSmtpTestServer FRelay{TSmtpTestServer::TOptions{}};
};
