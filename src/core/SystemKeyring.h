#pragma once

#include "Keyring.h"

// The desktop session's keyring through QtKeychain (Secret Service or KWallet),
// entries under the service "quorvex-followup". Never falls back to a file.
class TSystemKeyring final : public TKeyring
{
public:
  void Read(const QString &key, TDone done) override;
  void Write(const QString &key, const QString &secret, TDone done) override;
};

// Whether this process has a session bus, through which a keyring answers.
bool SessionBusAvailable();
